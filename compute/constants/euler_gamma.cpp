// The Euler-Mascheroni constant: its parameter is the k of n = 2^k.
#include <cmath>

#include "compute/constants/table_constant.hpp"
#include "foundation/strings.hpp"

namespace znp {

namespace {

// The least k with 2^k at least X = 10 + 16 ln(2) p, and 2 where X is at most 4.
u32_t brent_mcmillan_exponent(upL_t p) {
    const double x = 10 + 11.090354888959125 * static_cast<double>(p);
    if (x <= 4) return 2;
    u32_t k = 3;
    while (std::ldexp(1.0, static_cast<int>(k)) < x) k++;
    return k;
}

// With the k that is given.
class zlr_EulerGamma_Override : public zlr_TableConstant {
  public:
    using zlr_TableConstant::zlr_TableConstant;
    // The refined form needs half of n.
    std::string get_algorithm_name(s32_t algorithm, upL_t p) const override {
        const std::string name = zlr_TableConstant::get_algorithm_name(algorithm, p);
        if (name.empty()) return name;
        return name + " ( n = 2^" + to_string_u64(algorithm == 0 ? parameter() - 1 : parameter()) + " )";
    }
    std::string get_algorithm_menu(s32_t algorithm, upL_t p) const override {
        return get_algorithm_name(algorithm, p);
    }
};

// With the k that the precision needs.
class zlr_EulerGamma final : public zlr_EulerGamma_Override {
  public:
    zlr_EulerGamma(const ConstantRow& row, upL_t p)
        : zlr_EulerGamma_Override(row, brent_mcmillan_exponent(p)) {}
    void set_precision(upL_t p) override { set_parameter(brent_mcmillan_exponent(p)); }
};

}  // namespace

std::unique_ptr<zlr_Constant> make_euler_gamma(const ConstantRow& row, u64_t, upL_t p) {
    return std::make_unique<zlr_EulerGamma>(row, p);
}

std::unique_ptr<zlr_Constant> make_euler_gamma_override(const ConstantRow& row, u64_t exponent, upL_t) {
    return std::make_unique<zlr_EulerGamma_Override>(row, exponent);
}

}  // namespace znp
