// The asymptotic series C of Euler's constant: R(b) = (2b - 1)^3, P(b) = R(b), Q(b) = b 2^(2m + 5).
//
// Its terms are ((2x)!)^3 / ((x!)^4 (16n)^(2x)), n = 2^m. They shrink up to x = 2n, to about e^(-4n), and
// grow again from there on. Source: R. P. Brent, E. M. McMillan, "Some new algorithms for high-precision
// computation of Euler's constant", 1980.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "series/catalogue.hpp"
#include "series/terms/bisection.hpp"
#include "series/terms/end_recursion.hpp"
#include "series/terms/parameter_range.hpp"
#include "series/terms/term_words.hpp"

namespace znp {

using namespace terms;

namespace {

// -ln of the term at x.
double smallness(double x, u32_t m) {
    return x * (2 * m + 8) * std::numbers::ln2 + 4 * log_factorial(x) - 3 * log_factorial(2 * x);
}

// ln(64 ln 2), the size of a fraction that starts with one word.
constexpr double size_at_start = 3.7923701627780075;

}  // namespace

EulerGamma_BM_C::EulerGamma_BM_C(u32_t m_) : zl_BSS_P2B3_Type0(false, 17, 8), m(euler_gamma_parameter(m_)) {}

u64_t EulerGamma_BM_C::terms(upL_t words) const {
    const double target = nats_per_word * static_cast<double>(words) + 1;
    const u64_t smallest = u64_t{2} << m;
    const u64_t x =
        first_at_least(1, smallest, target, [this](u64_t i) { return smallness(static_cast<double>(i), m); });
    return std::min(x + 2, smallest);
}

double EulerGamma_BM_C::size_at(double x) const {
    return x * (m * 2 * std::numbers::ln2 + 5 * std::numbers::ln2) + size_at_start + log_factorial(x);
}

double EulerGamma_BM_C::precision_of(u64_t a, u64_t b) const {
    return smallness(static_cast<double>(b), m) - smallness(static_cast<double>(a), m);
}

upL_t EulerGamma_BM_C::PrecisionAtIndex(u64_t a, u64_t b) const {
    return static_cast<upL_t>(std::max(precision_of(a, b), 0.0) * words_per_nat + 2);
}

void EulerGamma_BM_C::BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                              u64_t b) const {
    if (b - a != 1) return end_recursion(*this, P, Q, R, t0, t1, a, b);

    constexpr const char* location = "EulerGamma_BM_C_BSR_End1()";
    store(R, location, product(2 * b - 1, 2 * b - 1, 2 * b - 1));
    P.check_size(location, 3);
    P.set_bui(R);

    Q.check_size(location, term_words);
    const u32_t shift = 2 * m + 5;
    const upL_t zeros = shift / 64;
    std::fill_n(Q.get_T(), zeros, cdi{0});
    const Words<2> top = two_words(u128_t{b} << (shift % 64));
    std::copy(top.begin(), top.end(), Q.get_T() + zeros);
    Q.set_LN(zeros + 2);
}

}  // namespace znp
