// Catalan's constant.
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"
#include "compute/constants/memory_query.hpp"
#include "compute/series_memory.hpp"
#include "series/catalogue.hpp"

namespace znp {

namespace {

constexpr std::array catalan_names{
    AlgorithmNames{"Lupas", "Lupas Formula", "Lupas Formula       (fastest)"},
    AlgorithmNames{"Huvent", "Huvent's Formula", "Huvent's Formula    (20% slower)"},
};

class zlr_Catalan final : public zlr_ListedConstant {
  public:
    zlr_Catalan() : zlr_ListedConstant(2, catalan_names) {}
    char get_color() const override { return 'B'; }
    std::string get_short_name() const override { return "Catalan"; }
    std::string get_name() const override { return "Catalan's Constant"; }
    void run_B(s32_t, RunTimeParameters&) const override { refuse_B(*this); }

  private:
    upL_t memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads) const override {
        if (algorithm == 0) {
            const Catalan_Lupas series;
            return series_memory(series, common_quotient(series, 19, 18), p, digits, threads);
        }
        return series_memory(Catalan_Huvent(), {469137217, 1334025, false, 512265600}, p, digits, threads);
    }
};

}  // namespace

std::unique_ptr<zlr_Constant> make_catalan() {
    return std::make_unique<zlr_Catalan>();
}

}  // namespace znp
