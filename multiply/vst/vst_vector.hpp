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

// X^2m - w to X^m - s and X^m + s, and back (times 2, with 1/s).
ZNP_INLINE void split(__m256d& x, __m256d& y, const Factor& s, const Modulus& m) {
    const __m256d t = mul_mod(y, s, m);
    y = _mm256_sub_pd(x, t);
    x = _mm256_add_pd(x, t);
}
ZNP_INLINE void join(__m256d& x, __m256d& y, const Factor& inverse_s, const Modulus& m) {
    const __m256d t = _mm256_sub_pd(x, y);
    x = _mm256_add_pd(x, y);
    y = mul_mod(t, inverse_s, m);
}

// Two levels. With s and r the twiddles of the node and of its first child, and i = sqrt(-1) = T[1], that of
// the second child is i r. The three inputs with a factor are multiplied at once, which leaves one product in
// the chain behind them.
struct Factors4 {
    Factor s, r, rs, i;
};
ZNP_INLINE Factors4 make_factors4(const double* s, const double* r, __m256d i, const Modulus& m) {
    const __m256d s0 = _mm256_broadcast_sd(s), r0 = _mm256_broadcast_sd(r);
    return {make_factor(s0, m), make_factor(r0, m), make_factor(mul_mod(r0, s0, m), m), make_factor(i, m)};
}

// Both directions in two halves, for loops that begin one vector group before they finish the last: the chain
// of dependent operations is longer than what a processor looks ahead.
struct Half4 {
    __m256d a, b;
};

ZNP_INLINE Half4 split4_begin(double* x, upL_t step, __m256d x0, const Factors4& f, const Modulus& m) {
    const __m256d t2 = mul_mod(_mm256_load_pd(x + 2 * step), f.s, m);
    const __m256d t1 = mul_mod(_mm256_load_pd(x + step), f.r, m);
    const __m256d t3 = mul_mod(_mm256_load_pd(x + 3 * step), f.rs, m);
    const __m256d u = _mm256_add_pd(x0, t2);
    const __m256d e = _mm256_add_pd(t1, t3);
    _mm256_store_pd(x, _mm256_add_pd(u, e));
    _mm256_store_pd(x + step, _mm256_sub_pd(u, e));
    return {_mm256_sub_pd(x0, t2), _mm256_sub_pd(t1, t3)};
}
ZNP_INLINE void split4_end(double* x, upL_t step, const Half4& half, const Factors4& f, const Modulus& m) {
    const __m256d d = mul_mod(half.b, f.i, m);
    _mm256_store_pd(x + 2 * step, _mm256_add_pd(half.a, d));
    _mm256_store_pd(x + 3 * step, _mm256_sub_pd(half.a, d));
}

// Times 4. From inputs below B p: x[0] below 4 B p, the others below (1/2 + (2 B + 1) / 32) p.
ZNP_INLINE Half4 join4_begin(double* x, upL_t step, const __m256d (&y)[4], bool reduce, const Factors4& f,
                             const Modulus& m) {
    const __m256d d = mul_mod(_mm256_sub_pd(y[2], y[3]), f.i, m);
    const __m256d u = _mm256_add_pd(y[0], y[1]);
    const __m256d e = _mm256_sub_pd(y[0], y[1]);
    const __m256d v = _mm256_add_pd(y[2], y[3]);
    const __m256d sum = _mm256_add_pd(u, v);
    _mm256_store_pd(x + 2 * step, mul_mod(_mm256_sub_pd(u, v), f.s, m));
    _mm256_store_pd(x, reduce ? reduce_mod(sum, m) : sum);
    return {_mm256_add_pd(e, d), _mm256_sub_pd(e, d)};
}
ZNP_INLINE void join4_end(double* x, upL_t step, const Half4& half, const Factors4& f, const Modulus& m) {
    _mm256_store_pd(x + step, mul_mod(half.a, f.r, m));
    _mm256_store_pd(x + 3 * step, mul_mod(half.b, f.rs, m));
}

// Two levels on 4 rows of `count` vectors, `step` doubles apart. The constants come by value: stores to the
// rows cannot change them.
template <bool reduce>
ZNP_INLINE void split4_rows(double* x, upL_t step, upL_t count, Factors4 f, Modulus m) {
    const auto begin = [&](double* y) {
        const __m256d x0 = _mm256_load_pd(y);
        return split4_begin(y, step, reduce ? reduce_mod(x0, m) : x0, f, m);
    };
    Half4 half = begin(x);
    for (double* const last = x + 4 * (count - 1); x != last; x += 4) {
        const Half4 next = begin(x + 4);
        split4_end(x, step, half, f, m);
        half = next;
    }
    split4_end(x, step, half, f, m);
}
ZNP_INLINE void join4_rows(double* x, upL_t step, upL_t count, Factors4 f, Modulus m) {
    const auto begin = [&](double* y) {
        const __m256d v[4] = {_mm256_load_pd(y), _mm256_load_pd(y + step), _mm256_load_pd(y + 2 * step),
                              _mm256_load_pd(y + 3 * step)};
        return join4_begin(y, step, v, true, f, m);
    };
    Half4 half = begin(x);
    for (double* const last = x + 4 * (count - 1); x != last; x += 4) {
        const Half4 next = begin(x + 4);
        join4_end(x, step, half, f, m);
        half = next;
    }
    join4_end(x, step, half, f, m);
}

}  // namespace znp::vst
