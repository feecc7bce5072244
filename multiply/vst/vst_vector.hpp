// Modular arithmetic on vectors of residues in double precision: the core of the VST kernels.
//
// A residue is an integer-valued double. With p < 2^48 and M = 1.5 2^52:
//
//     hi = x y, lo = x y - hi (exact by FMA), q = round(hi / p), result = hi - q p + lo,
//
// exact for |x y| < 2^51 p: 5 more bits than balanced factors need, so that sums of up to 2^5 balanced values
// may be multiplied unreduced by a balanced factor (T. Granlund, P. Montgomery, 1994; J. van der Hoeven,
// G. Lecerf, G. Quintin, "Modular SIMD arithmetic in Mathemagix", 2016).
//
// Only for files compiled as kernels.
#pragma once

#include <immintrin.h>

#include "foundation/types.hpp"

namespace znp::vst {

inline constexpr double round_magic = 6755399441055744.0;  // 1.5 * 2^52

// p and 1/p in all lanes.
struct Modulus {
    __m256d p, inverse;
};

ZNP_INLINE Modulus make_modulus(double p, double inverse) {
    return {_mm256_set1_pd(p), _mm256_set1_pd(inverse)};
}

// The nearest integer, for |x| < 2^51.
ZNP_INLINE __m256d round_to_integer(__m256d x) {
    const __m256d magic = _mm256_set1_pd(round_magic);
    return _mm256_sub_pd(_mm256_add_pd(x, magic), magic);
}

// x y mod p, |result| <= p/2 + 1 or so (see above).
ZNP_INLINE __m256d mul_mod(__m256d x, __m256d y, const Modulus& m) {
    const __m256d magic = _mm256_set1_pd(round_magic);
    const __m256d hi = _mm256_mul_pd(x, y);
    const __m256d lo = _mm256_fmsub_pd(x, y, hi);
    const __m256d q = _mm256_sub_pd(_mm256_fmadd_pd(hi, m.inverse, magic), magic);
    return _mm256_add_pd(_mm256_fnmadd_pd(q, m.p, hi), lo);
}

// x mod p, |result| <= p/2 + 1.
ZNP_INLINE __m256d reduce_mod(__m256d x, const Modulus& m) {
    const __m256d magic = _mm256_set1_pd(round_magic);
    const __m256d q = _mm256_sub_pd(_mm256_fmadd_pd(x, m.inverse, magic), magic);
    return _mm256_fnmadd_pd(q, m.p, x);
}

// A sum of products modulo p, exactly: the parts of the products above a fixed bit k are summed in one
// double, what is below them in another. magic = 1.5 2^(52+k) with 1.2 p^2 <= 2^(51+k) < 2.4 p^2, so that
// sums up to 1.2 p^2 have room; for four products of values up to 0.54 p.
class ProductSum {
  public:
    ZNP_INLINE explicit ProductSum(__m256d magic) : high_(magic), low_(_mm256_setzero_pd()) {}
    ZNP_INLINE void add(__m256d x, __m256d y) {
        const __m256d high = _mm256_fmadd_pd(x, y, high_);
        low_ = _mm256_add_pd(low_, _mm256_fmsub_pd(x, y, _mm256_sub_pd(high, high_)));
        high_ = high;
    }
    // |result| <= 1.12 p: the low parts of four products reach 2^(k+1) <= 0.6 p.
    ZNP_INLINE __m256d reduce(__m256d magic, const Modulus& m) const {
        const __m256d high = _mm256_sub_pd(high_, magic);
        const __m256d rounding = _mm256_set1_pd(round_magic);
        const __m256d q = _mm256_sub_pd(_mm256_fmadd_pd(high, m.inverse, rounding), rounding);
        return _mm256_add_pd(_mm256_fnmadd_pd(q, m.p, high), low_);
    }

  private:
    __m256d high_, low_;
};

ZNP_INLINE void transpose(__m256d& a, __m256d& b, __m256d& c, __m256d& d) {
    const __m256d ab0 = _mm256_unpacklo_pd(a, b), ab1 = _mm256_unpackhi_pd(a, b);
    const __m256d cd0 = _mm256_unpacklo_pd(c, d), cd1 = _mm256_unpackhi_pd(c, d);
    a = _mm256_permute2f128_pd(ab0, cd0, 0x20);
    b = _mm256_permute2f128_pd(ab1, cd1, 0x20);
    c = _mm256_permute2f128_pd(ab0, cd0, 0x31);
    d = _mm256_permute2f128_pd(ab1, cd1, 0x31);
}

// X^2m - w to X^m - s and X^m + s, and back (times 2, with 1/s).
ZNP_INLINE void split(__m256d& x, __m256d& y, __m256d s, const Modulus& m) {
    const __m256d t = mul_mod(y, s, m);
    y = _mm256_sub_pd(x, t);
    x = _mm256_add_pd(x, t);
}
ZNP_INLINE void join(__m256d& x, __m256d& y, __m256d inverse_s, const Modulus& m) {
    const __m256d t = _mm256_sub_pd(x, y);
    x = _mm256_add_pd(x, y);
    y = mul_mod(t, inverse_s, m);
}

// Two levels: s[0] at the node, s[1] and s[2] at its children. join4 reduces x0, the one output without a
// factor: from inputs below 1.2 p to outputs below 1.2 p.
ZNP_INLINE void split4(__m256d& x0, __m256d& x1, __m256d& x2, __m256d& x3, const __m256d (&s)[3],
                       const Modulus& m) {
    split(x0, x2, s[0], m);
    split(x1, x3, s[0], m);
    split(x0, x1, s[1], m);
    split(x2, x3, s[2], m);
}
ZNP_INLINE void join4(__m256d& x0, __m256d& x1, __m256d& x2, __m256d& x3, const __m256d (&s)[3],
                      const Modulus& m) {
    join(x0, x1, s[1], m);
    join(x2, x3, s[2], m);
    join(x0, x2, s[0], m);
    join(x1, x3, s[0], m);
    x0 = reduce_mod(x0, m);
}

}  // namespace znp::vst
