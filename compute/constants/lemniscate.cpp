// The Lemniscate constant.
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"
#include "compute/constants/memory_query.hpp"
#include "compute/series_memory.hpp"
#include "series/catalogue.hpp"

namespace znp {

namespace {

constexpr std::array lemniscate_names{
    AlgorithmNames{"Gauss", "Gauss formula",
                   "Gauss Formula       (fastest)\n\n"
                   "            Lemniscate = 8 * ArcSinlemn(1/2) + 4 * ArcSinLemn(7/23)\n"},
    AlgorithmNames{"Sebah", "Sebah's formula",
                   "Sebah's Formula     (20% slower)\n\n"
                   "            Lemniscate = 8 * ArcSinlemn(2/3) - 4 * ArcSinLemn(7/137)\n"},
};

class zlr_Lemniscate final : public zlr_ListedConstant {
  public:
    zlr_Lemniscate() : zlr_ListedConstant(2, lemniscate_names) {}
    std::string get_short_name() const override { return "Lemniscate"; }
    void run_B(s32_t, RunTimeParameters&) const override { refuse_B(*this); }

  private:
    upL_t memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads) const override {
        const bool gauss = algorithm == 0;
        const ArcSinlemn first(gauss ? 1 : 2, gauss ? 2 : 3);
        const ArcSinlemn second(7, gauss ? 23 : 137);
        const SeriesTerm terms[] = {{&first, common_quotient(first, 1, first.d)},
                                    {&second, common_quotient(second, 1, second.d)}};
        return series_memory(terms, p, digits, threads);
    }
};

}  // namespace

std::unique_ptr<zlr_Constant> make_lemniscate() {
    return std::make_unique<zlr_Lemniscate>();
}

}  // namespace znp
