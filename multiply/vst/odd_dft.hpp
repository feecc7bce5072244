// DFTs of 3, 5 and 7 points modulo p, on vectors.
//
// With sums and differences of the inputs j and b - j, a DFT is a matrix of the (z^j + z^-j) / 2 times the
// sums and one of the (z^j - z^-j) / 2 times the differences. For b = 7 both are, but for signs, cyclic
// convolutions of length 3; for b = 5 they have length 2, the second with a sign. The mean of the constants
// taken out, a cyclic convolution of length 3 whose constants c_1, c_2, c_3 have the sum 0 takes three
// products:
//
//     p_1 = -c_2 (x_1 - x_2),  p_2 = -c_1 (x_2 - x_3),  p_3 = -c_3 (x_3 - x_1):
//     c_1 x_1 + c_2 x_2 + c_3 x_3 = p_1 - p_3,  c_2 x_1 + c_3 x_2 + c_1 x_3 = p_2 - p_1,  ... = p_3 - p_2.
//
// In all 1, 5 and 8 products (S. Winograd, "On computing the discrete Fourier transform", 1978).
//
// Only for files compiled as kernels.
#pragma once

#include <immintrin.h>

#include "multiply/vst/vst_tables.hpp"
#include "multiply/vst/vst_vector.hpp"

namespace znp::vst {

// OddConstants, ready for use.
struct OddFactors {
    Factor z, mean[2], factors[2][3];
};
ZNP_INLINE OddFactors make_odd_factors(const OddConstants& c, const Modulus& m) {
    const auto factor = [&](const double& x) { return make_factor(_mm256_broadcast_sd(&x), m); };
    OddFactors f;
    f.z = factor(c.z);
    for (unsigned k = 0; k < 2; k++) {
        f.mean[k] = factor(c.mean[k]);
        for (unsigned j = 0; j < 3; j++) f.factors[k][j] = factor(c.factors[k][j]);
    }
    return f;
}

ZNP_INLINE void odd_dft(__m256d (&t)[3], const OddFactors& c, const Modulus& m) {
    const __m256d d = mul_mod(_mm256_sub_pd(t[1], t[2]), c.z, m);
    const __m256d y0 = _mm256_add_pd(t[0], _mm256_add_pd(t[1], t[2]));
    const __m256d y1 = _mm256_add_pd(_mm256_sub_pd(t[0], t[2]), d);
    t[2] = _mm256_sub_pd(_mm256_sub_pd(t[0], t[1]), d);
    t[1] = y1;
    t[0] = y0;
}

ZNP_INLINE void odd_dft(__m256d (&t)[5], const OddFactors& c, const Modulus& m) {
    const __m256d s1 = _mm256_add_pd(t[1], t[4]), d1 = _mm256_sub_pd(t[1], t[4]);
    const __m256d s2 = _mm256_add_pd(t[2], t[3]), d2 = _mm256_sub_pd(t[2], t[3]);
    const __m256d sum = _mm256_add_pd(s1, s2);
    const __m256d odd = mul_mod(_mm256_add_pd(d1, d2), c.factors[1][0], m);
    const __m256d odd1 = _mm256_add_pd(mul_mod(d2, c.factors[1][1], m), odd);
    const __m256d odd2 = _mm256_sub_pd(mul_mod(d1, c.factors[1][2], m), odd);
    const __m256d even = _mm256_add_pd(mul_mod(sum, c.mean[0], m), t[0]);
    const __m256d difference = mul_mod(_mm256_sub_pd(s1, s2), c.factors[0][0], m);
    const __m256d even1 = _mm256_add_pd(even, difference);
    const __m256d even2 = _mm256_sub_pd(even, difference);
    t[0] = _mm256_add_pd(t[0], sum);
    t[1] = _mm256_add_pd(even1, odd1);
    t[2] = _mm256_add_pd(even2, odd2);
    t[3] = _mm256_sub_pd(even2, odd2);
    t[4] = _mm256_sub_pd(even1, odd1);
}

// x = the cyclic convolution with the constants, plus `mean`.
ZNP_INLINE void convolve3(__m256d (&x)[3], __m256d mean, const Factor (&c)[3], const Modulus& m) {
    const __m256d p1 = mul_mod(_mm256_sub_pd(x[0], x[1]), c[0], m);
    const __m256d p2 = mul_mod(_mm256_sub_pd(x[1], x[2]), c[1], m);
    const __m256d p3 = mul_mod(_mm256_sub_pd(x[2], x[0]), c[2], m);
    x[0] = _mm256_add_pd(mean, _mm256_sub_pd(p1, p3));
    x[1] = _mm256_add_pd(mean, _mm256_sub_pd(p2, p1));
    x[2] = _mm256_add_pd(mean, _mm256_sub_pd(p3, p2));
}

ZNP_INLINE void odd_dft(__m256d (&t)[7], const OddFactors& c, const Modulus& m) {
    __m256d s[3] = {_mm256_add_pd(t[1], t[6]), _mm256_add_pd(t[2], t[5]), _mm256_add_pd(t[3], t[4])};
    __m256d d[3] = {_mm256_sub_pd(t[1], t[6]), _mm256_sub_pd(t[2], t[5]), _mm256_sub_pd(t[4], t[3])};
    const __m256d sum = _mm256_add_pd(_mm256_add_pd(s[0], s[1]), s[2]);
    const __m256d difference = _mm256_add_pd(_mm256_add_pd(d[0], d[1]), d[2]);
    convolve3(s, _mm256_add_pd(mul_mod(sum, c.mean[0], m), t[0]), c.factors[0], m);
    convolve3(d, mul_mod(difference, c.mean[1], m), c.factors[1], m);
    t[0] = _mm256_add_pd(t[0], sum);
    t[1] = _mm256_add_pd(s[0], d[0]);
    t[6] = _mm256_sub_pd(s[0], d[0]);
    t[2] = _mm256_add_pd(s[1], d[1]);
    t[5] = _mm256_sub_pd(s[1], d[1]);
    t[3] = _mm256_sub_pd(s[2], d[2]);
    t[4] = _mm256_add_pd(s[2], d[2]);
}

}  // namespace znp::vst
