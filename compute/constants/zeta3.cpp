// Zeta(3).
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"
#include "compute/constants/memory_query.hpp"
#include "compute/series_memory.hpp"
#include "series/catalogue.hpp"

namespace znp {

namespace {

constexpr std::array zeta3_names{
    AlgorithmNames{"Amdeberhan-Zeiberger 2", "Amdeberhan-Zeiberger Formula 2",
                   "Amdeberhan-Zeiberger Formula 2      (fastest)"},
    AlgorithmNames{"Amdeberhan-Zeiberger 1", "Amdeberhan-Zeiberger Formula 1",
                   "Amdeberhan-Zeiberger Formula 1      (slightly slower)"},
};

class zlr_Zeta3 final : public zlr_ListedConstant {
  public:
    zlr_Zeta3() : zlr_ListedConstant(2, zeta3_names) {}
    std::string get_short_name() const override { return "Zeta(3)"; }
    std::string get_name() const override { return "Zeta(3) - Apery's Constant"; }
    void run_B(s32_t, RunTimeParameters&) const override { refuse_B(*this); }

  private:
    upL_t memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads) const override {
        if (algorithm == 0) return series_memory_B(Zeta3_AZ2(), 12463, 10368, p, digits, threads);
        return series_memory_B(Zeta3_AZ1(), 77, 64, p, digits, threads);
    }
    static upL_t series_memory_B(const zl_BSS& series, cdi a, cdi b, upL_t p, u64_t digits, u64_t threads) {
        return series_memory(series, common_quotient(series, a, b), p, digits, threads);
    }
};

}  // namespace

std::unique_ptr<zlr_Constant> make_zeta3() {
    return std::make_unique<zlr_Zeta3>();
}

}  // namespace znp
