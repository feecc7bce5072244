// ArcCoth(n).
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"
#include "compute/constants/memory_query.hpp"
#include "compute/series_memory.hpp"
#include "series/catalogue.hpp"

namespace znp {

namespace {

constexpr std::array arccoth_names{
    AlgorithmNames{"Taylor", "Taylor Series", "Taylor Series of ArcCoth(x)"},
};

class zlr_ArcCoth final : public zlr_ListedConstant {
  public:
    explicit zlr_ArcCoth(u64_t argument) : zlr_ListedConstant(1, arccoth_names), argument_(argument) {}
    std::string get_short_name() const override { return with_argument("ArcCoth", argument_); }
    void run_B(s32_t, RunTimeParameters&) const override { refuse_B(*this); }

  private:
    upL_t memory_B(s32_t, upL_t p, u64_t digits, u64_t threads) const override {
        const ArcCoth series(argument_);
        return series_memory(series, common_quotient(series, 1, argument_), p, digits, threads);
    }

    u64_t argument_;
};

}  // namespace

std::unique_ptr<zlr_Constant> make_arccoth(u64_t argument) {
    return std::make_unique<zlr_ArcCoth>(argument);
}

}  // namespace znp
