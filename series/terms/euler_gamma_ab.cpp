// Terms of the series A and B. With N = 2^(2m), the term at b alone is
//
//     U = 1,       V = b,         W = X = N^b
//
// and two terms with the last index k are, in one step,
//
//     U = 2k - 1,  V = k (k - 1), W = (k^2 + N) N^(k - 1), X = (k^3 + (2k - 1) N) N^(k - 1).
#include <algorithm>
#include <numbers>

#include "foundation/fail.hpp"
#include "multiply/kernels/guard_residue.hpp"
#include "multiply/kernels/residue.hpp"
#include "series/euler_gamma_ab.hpp"
#include "series/terms/bisection.hpp"
#include "series/terms/parameter_range.hpp"
#include "series/terms/term_words.hpp"

namespace znp {

using namespace terms;

namespace {

// ln(64 ln 2), the size of a fraction that starts with one word.
constexpr double size_at_start = 3.7923701627780075;

// 2^e: what makes a number of a few words a term. The residues of the term follow from those of the few words
// and of the power, which both numbers of a term share: modulo 2^61 - 1 a power of two is a rotation.
class PowerOf2 {
  public:
    explicit PowerOf2(u64_t e) : e_(e), guard_(guard::word_power(static_cast<s64_t>(e / 64))) {}

    // x = value * 2^e.
    template <upL_t N>
    void set_multiple(ExactFloatR& x, const Words<N>& value) const {
        const Words<N + 1> words = times(value, u64_t{1} << (e_ % 64));
        const u64_t hash = residue::mul_power_of_2(residue::hash_words(value.data(), N),
                                                   static_cast<unsigned>(e_ % 61));
        x.reset_T();
        std::copy(words.begin(), words.end(), x.word_ptr(0));
        x.set_LN(N + 1, static_cast<s64_t>(e_ / 64), hash,
                 guard::mul(guard::hash_words(words.data(), N + 1), guard_));
    }

  private:
    const u64_t e_;
    const u64_t guard_;  // of the whole words
};

}  // namespace

Series_EulerGamma_BM_AB::Series_EulerGamma_BM_AB(u32_t m_)
    : zl_BSS(false, 18, 1), m(euler_gamma_parameter(m_)) {}

double Series_EulerGamma_BM_AB::magnitude(double x) const {
    return x * m * std::numbers::ln2 - log_factorial(x);
}

// The terms grow up to n and shrink from there on.
u64_t Series_EulerGamma_BM_AB::terms(upL_t words) const {
    const u64_t n = u64_t{1} << m;
    const auto smallness = [this](u64_t x) { return -2 * magnitude(static_cast<double>(x)); };
    const double target = smallness(n) + nats_per_word * static_cast<double>(words) + 1;
    return first_at_least(n, doubling_bound(n, target, smallness), target, smallness) + 2;
}

double Series_EulerGamma_BM_AB::size_at(double x) const {
    const double n = static_cast<double>(u64_t{1} << m);
    return 3 * (log_factorial(x) + size_at_start) + 2 * magnitude(std::min(x, n));
}

double Series_EulerGamma_BM_AB::precision_of(u64_t a, u64_t b) const {
    const double largest = static_cast<double>(std::max(a, u64_t{1} << m));
    return 2 * (magnitude(largest) - magnitude(static_cast<double>(b)));
}

u64_t Series_EulerGamma_BM_AB::divide_even(u64_t a, u64_t b) const {
    if (b - a <= 100) return ((a + b + 1) >> 1) & ~u64_t{1};
    return std::max(split(a, b) & ~u64_t{1}, a + 1);
}

void Series_EulerGamma_BM_AB::BSR_End(ExactFloatR& U, ExactFloatR& V, ExactFloatR& W, ExactFloatR& X, u64_t a,
                                      u64_t b) const {
    upL_t i = 0;
    for (const ExactFloatR* x : {&U, &V, &W, &X}) {
        const upL_t words = end_words[i++];
        if (x->get_size() >= words) continue;
        fail(BufferTooSmallException("Series_EulerGamma_BM_AB::BSR_End()", x->get_size(), words));
    }
    if (b - a == 1) {
        U.set_uW(1);
        V.set_uW(b);
        PowerOf2(2 * m * b).set_multiple(W, Words<1>{1});
        X.set_efp(W);
        return;
    }
    const u128_t N = u128_t{1} << (2 * m);
    const u64_t j = b - 1;
    const PowerOf2 shift(2 * m * j);
    U.set_uW(2 * b - 1);
    V.reset_T();
    const Words<2> v = product(b, j);
    std::copy(v.begin(), v.end(), V.word_ptr(0));
    V.set_LN(2, 0);
    shift.set_multiple(W, two_words(u128_t{b} * b + N));

    // k^3 + (2k - 1) N = ((k + 2) j + 3 + 2N) j + 1 + N
    const Words<2> inner = two_words(u128_t{b + 2} * j + 3 + 2 * N);
    Words<3> x = times(inner, j);
    const Words<2> last = two_words(1 + N);
    u128_t sum = u128_t{x[0]} + last[0];
    x[0] = static_cast<u64_t>(sum);
    sum = (sum >> 64) + x[1] + last[1];
    x[1] = static_cast<u64_t>(sum);
    x[2] += static_cast<u64_t>(sum >> 64);
    shift.set_multiple(X, x);
}

}  // namespace znp
