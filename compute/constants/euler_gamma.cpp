// The Euler-Mascheroni constant.
#include <cmath>

#include "compute/constants/constants.hpp"
#include "compute/constants/memory_query.hpp"
#include "compute/euler_gamma_memory.hpp"
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

// The Brent-McMillan formula with n = 2^k; algorithm 0 is the refined form, which needs half of n.
class zlr_EulerGamma_Base : public zlr_Constant {
  public:
    explicit zlr_EulerGamma_Base(u32_t exponent) : zlr_Constant(2), exponent_(exponent) {}
    char get_color() const override { return 'B'; }
    std::string get_short_name() const override { return "Euler's Constant"; }
    std::string get_algorithm_short(s32_t algorithm, upL_t) const override {
        if (algorithm == 0) return "Brent-McMillan (Refined)";
        if (algorithm == 1) return "Brent-McMillan";
        return {};
    }
    std::string get_algorithm_name(s32_t algorithm, upL_t) const override {
        const u64_t k = exponent_;
        if (algorithm == 0) return "Brent-McMillan with Refinement ( n = 2^" + to_string_u64(k - 1) + " )";
        if (algorithm == 1) return "Brent-McMillan ( n = 2^" + to_string_u64(k) + " )";
        return {};
    }
    bool get_memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads, upL_t& bytes) const override {
        return query_memory(*this, algorithm, p, bytes, [&] {
            const bool refined = algorithm == 0;
            return euler_gamma_memory_B(refined ? exponent_ - 1 : exponent_, refined, p, digits, threads);
        });
    }
    void run_B(s32_t, RunTimeParameters&) const override { refuse_B(*this); }

  protected:
    u32_t exponent_;
};

class zlr_EulerGamma final : public zlr_EulerGamma_Base {
  public:
    explicit zlr_EulerGamma(upL_t p) : zlr_EulerGamma_Base(brent_mcmillan_exponent(p)) {}
    std::string get_name() const override { return "Euler-Mascheroni Constant"; }
    void set_precision(upL_t p) override { exponent_ = brent_mcmillan_exponent(p); }
};

class zlr_EulerGamma_Override final : public zlr_EulerGamma_Base {
  public:
    explicit zlr_EulerGamma_Override(u64_t exponent) : zlr_EulerGamma_Base(static_cast<u32_t>(exponent)) {}
    std::string get_name() const override { return "Euler-Mascheroni Constant (parameter override)"; }
};

}  // namespace

std::unique_ptr<zlr_Constant> make_euler_gamma(upL_t p) {
    return std::make_unique<zlr_EulerGamma>(p);
}

std::unique_ptr<zlr_Constant> make_euler_gamma_override(u64_t exponent) {
    return std::make_unique<zlr_EulerGamma_Override>(exponent);
}

}  // namespace znp
