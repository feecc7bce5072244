// The pointwise step: products modulo X^4 - w of polynomials, each a vector.
//
// Coefficient k of a b is the sum over i of a_i times element 4 - i + k of the eight w b_0 .. w b_3, b_0 ..
// b_3: a_i in all lanes times a window of these. Windows are loaded from memory, which costs the arithmetic
// pipes nothing. A window overlaps two stores, and so waits until both have left the store queue: the eight
// are written long before they are read. A square has fewer products than windows, and goes by coefficients
// of four polynomials, transposed.
//
// Inputs up to 2.84 p are not reduced. They give sums up to 32.3 p^2 < 2^53 p and results up to 4 p: a
// quotient is rounded to a multiple of 4, and its relative error of 2^-52 adds less than 2. Inputs up to 4.1
// p, of which one side is reduced, stay far within.
//
// Only for files compiled as kernels.
#pragma once

#include <immintrin.h>

#include "multiply/vst/vst_vector.hpp"

namespace znp::vst {

struct PointwiseModulus {
    Modulus m;
    __m256d split, rounding;
};
ZNP_INLINE PointwiseModulus make_pointwise_modulus(const Modulus& m, double product_magic) {
    return {m, _mm256_set1_pd(product_magic), _mm256_set1_pd(4 * round_magic)};
}

// A sum of products in two parts, high - split and low: what is above bit k and what is below it. With split
// = 1.5 2^(52+k) and 33 p^2 <= 2^(51+k) < 66 p^2, sums up to 33 p^2 have room, and each product adds up to 5
// p to the low part.
class WideSum {
  public:
    ZNP_INLINE void begin(__m256d x, __m256d y, const PointwiseModulus& pm) {
        high_ = _mm256_fmadd_pd(x, y, pm.split);
        low_ = _mm256_fmsub_pd(x, y, _mm256_sub_pd(high_, pm.split));
    }
    ZNP_INLINE void add(__m256d x, __m256d y) {
        const __m256d high = _mm256_fmadd_pd(x, y, high_);
        low_ = _mm256_add_pd(low_, _mm256_fmsub_pd(x, y, _mm256_sub_pd(high, high_)));
        high_ = high;
    }
    ZNP_INLINE __m256d reduce(const PointwiseModulus& pm) const {
        const __m256d high = _mm256_sub_pd(high_, pm.split);
        const __m256d sum = _mm256_add_pd(high, low_);
        const __m256d q = _mm256_sub_pd(_mm256_fmadd_pd(sum, pm.m.inverse, pm.rounding), pm.rounding);
        return _mm256_add_pd(_mm256_fnmadd_pd(q, pm.m.p, high), low_);
    }

  private:
    __m256d high_, low_;
};

// ---- Products ---------------------------------------------------------------------------------------------

struct alignas(64) Windows {
    double x[8];
};
template <bool reduced>
ZNP_INLINE void make_windows(Windows& out, const double* b, __m256d w, const Modulus& m) {
    const __m256d v = _mm256_load_pd(b);
    _mm256_store_pd(out.x + 4, reduced ? reduce_mod(v, m) : v);
    _mm256_store_pd(out.x, mul_mod(v, w, m));
}

// Two products side by side.
struct ProductPair {
    WideSum sum[2];
};
ZNP_INLINE ProductPair multiply_pair(const double* a, const Windows* b, const PointwiseModulus& pm) {
    ProductPair pair;
    for (unsigned i = 0; i < 4; i++) {
        for (unsigned k = 0; k < 2; k++) {
            const __m256d x = _mm256_broadcast_sd(a + 4 * k + i);
            const __m256d y = _mm256_loadu_pd(b[k].x + 4 - i);
            if (i == 0) {
                pair.sum[k].begin(x, y, pm);
            } else {
                pair.sum[k].add(x, y);
            }
        }
    }
    return pair;
}
ZNP_INLINE void store_pair(double* x, const ProductPair& pair, const PointwiseModulus& pm) {
    for (unsigned k = 0; k < 2; k++) _mm256_store_pd(x + 4 * k, pair.sum[k].reduce(pm));
}

// ---- Squares ----------------------------------------------------------------------------------------------

// Coefficients of four polynomials, and those that are needed times w.
struct alignas(64) Transposed {
    __m256d a[4], wa2, wa3;
};
template <bool reduced>
ZNP_INLINE void make_transposed(Transposed& out, const double* x, __m256d w, const Modulus& m) {
    __m256d v[4];
    for (unsigned i = 0; i < 4; i++) {
        v[i] = _mm256_load_pd(x + 4 * i);
        if (reduced) v[i] = reduce_mod(v[i], m);
    }
    transpose(v[0], v[1], v[2], v[3]);
    for (unsigned i = 0; i < 4; i++) out.a[i] = v[i];
    out.wa2 = mul_mod(v[2], w, m);
    out.wa3 = mul_mod(v[3], w, m);
}

ZNP_INLINE void square4(double* x, const Transposed& t, const PointwiseModulus& pm) {
    const __m256d twice0 = _mm256_add_pd(t.a[0], t.a[0]);
    const __m256d twice1 = _mm256_add_pd(t.a[1], t.a[1]);
    const __m256d twice2 = _mm256_add_pd(t.a[2], t.a[2]);
    WideSum s[4];
    s[0].begin(t.a[0], t.a[0], pm);
    s[1].begin(twice0, t.a[1], pm);
    s[2].begin(twice0, t.a[2], pm);
    s[3].begin(twice0, t.a[3], pm);
    s[0].add(twice1, t.wa3);
    s[1].add(twice2, t.wa3);
    s[2].add(t.a[1], t.a[1]);
    s[3].add(twice1, t.a[2]);
    s[0].add(t.a[2], t.wa2);
    s[2].add(t.a[3], t.wa3);
    __m256d c[4];
    for (unsigned i = 0; i < 4; i++) c[i] = s[i].reduce(pm);
    transpose(c[0], c[1], c[2], c[3]);
    for (unsigned i = 0; i < 4; i++) _mm256_store_pd(x + 4 * i, c[i]);
}

}  // namespace znp::vst
