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

#include "multiply/vst/vector_width.hpp"

namespace znp::vst {

static_assert(sizeof(__m256d) == vector_bytes);

inline constexpr double round_magic = 6755399441055744.0;  // 1.5 * 2^52

// p and 1/p in all lanes.
struct Modulus {
    __m256d p, inverse;
};

ZNP_INLINE Modulus make_modulus(double p, double inverse) {
    return {_mm256_set1_pd(p), _mm256_set1_pd(inverse)};
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

ZNP_INLINE void transpose(__m256d& a, __m256d& b, __m256d& c, __m256d& d) {
    const __m256d ab0 = _mm256_unpacklo_pd(a, b), ab1 = _mm256_unpackhi_pd(a, b);
    const __m256d cd0 = _mm256_unpacklo_pd(c, d), cd1 = _mm256_unpackhi_pd(c, d);
    a = _mm256_permute2f128_pd(ab0, cd0, 0x20);
    b = _mm256_permute2f128_pd(ab1, cd1, 0x20);
    c = _mm256_permute2f128_pd(ab0, cd0, 0x31);
    d = _mm256_permute2f128_pd(ab1, cd1, 0x31);
}

// A fixed factor: s and s / p, which takes the quotient off the chain of dependent operations.
struct Factor {
    __m256d s, quotient;
};
ZNP_INLINE Factor make_factor(__m256d s, const Modulus& m) {
    return {s, _mm256_mul_pd(s, m.inverse)};
}
ZNP_INLINE __m256d mul_mod(__m256d x, const Factor& f, const Modulus& m) {
    const __m256d magic = _mm256_set1_pd(round_magic);
    const __m256d q = _mm256_sub_pd(_mm256_fmadd_pd(x, f.quotient, magic), magic);
    const __m256d hi = _mm256_mul_pd(x, f.s);
    const __m256d lo = _mm256_fmsub_pd(x, f.s, hi);
    return _mm256_add_pd(_mm256_fnmadd_pd(q, m.p, hi), lo);
}

}  // namespace znp::vst
