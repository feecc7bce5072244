// Vectors of four complex numbers and the radix-4 steps, for the kernel files only.
#pragma once

#include <immintrin.h>

#include "multiply/fft/fft_tables.hpp"

namespace znp::fft {

// Sees the trees at work, and does nothing (fft_forward_steps.hpp, fft_inverse_steps.hpp).
struct Unwatched {
    ZNP_INLINE void operator()() const {}
};

struct CV {
    __m256d r, i;
};

ZNP_INLINE CV load(const double* p) {
    return {_mm256_load_pd(p), _mm256_load_pd(p + 4)};
}
ZNP_INLINE void store(double* p, CV a) {
    _mm256_store_pd(p, a.r);
    _mm256_store_pd(p + 4, a.i);
}
ZNP_INLINE CV add(CV a, CV b) {
    return {_mm256_add_pd(a.r, b.r), _mm256_add_pd(a.i, b.i)};
}
ZNP_INLINE CV sub(CV a, CV b) {
    return {_mm256_sub_pd(a.r, b.r), _mm256_sub_pd(a.i, b.i)};
}
// a + i b, a - i b
ZNP_INLINE CV add_i(CV a, CV b) {
    return {_mm256_sub_pd(a.r, b.i), _mm256_add_pd(a.i, b.r)};
}
ZNP_INLINE CV sub_i(CV a, CV b) {
    return {_mm256_add_pd(a.r, b.i), _mm256_sub_pd(a.i, b.r)};
}
// a b, a conj(b)
ZNP_INLINE CV mul(CV a, CV b) {
    return {_mm256_fmsub_pd(a.r, b.r, _mm256_mul_pd(a.i, b.i)),
            _mm256_fmadd_pd(a.r, b.i, _mm256_mul_pd(a.i, b.r))};
}
ZNP_INLINE CV mul_conj(CV a, CV b) {
    return {_mm256_fmadd_pd(a.r, b.r, _mm256_mul_pd(a.i, b.i)),
            _mm256_fmsub_pd(a.i, b.r, _mm256_mul_pd(a.r, b.i))};
}
// s + a b
ZNP_INLINE CV mul_add(CV s, CV a, CV b) {
    return {_mm256_fnmadd_pd(a.i, b.i, _mm256_fmadd_pd(a.r, b.r, s.r)),
            _mm256_fmadd_pd(a.i, b.r, _mm256_fmadd_pd(a.r, b.i, s.i))};
}
// 2 a - b
ZNP_INLINE CV twice_minus(CV a, CV b) {
    const __m256d two = _mm256_set1_pd(2.0);
    return {_mm256_fmsub_pd(two, a.r, b.r), _mm256_fmsub_pd(two, a.i, b.i)};
}

// Powers 1, 2, 3 of a twiddle factor.
struct Powers {
    CV e1, e2, e3;
};
// Those of a block, in all lanes.
ZNP_INLINE Powers block_powers(const BlockTwiddles& t) {
    return {{_mm256_broadcast_sd(t.c), _mm256_broadcast_sd(t.s)},
            {_mm256_broadcast_sd(t.c + 1), _mm256_broadcast_sd(t.s + 1)},
            {_mm256_broadcast_sd(t.c + 2), _mm256_broadcast_sd(t.s + 2)}};
}
// Those of its children, one in each lane.
ZNP_INLINE Powers child_powers(const BlockTwiddles& t) {
    return {{_mm256_load_pd(t.child_c[0]), _mm256_load_pd(t.child_s[0])},
            {_mm256_load_pd(t.child_c[1]), _mm256_load_pd(t.child_s[1])},
            {_mm256_load_pd(t.child_c[2]), _mm256_load_pd(t.child_s[2])}};
}

// (x0, x1, x2, x3), coefficients of Y^0 .. Y^3, to the values at Y = e, -e, i e, -i e. Twelve of the
// additions and fourteen multiply-adds: what comes with e^2 is fused, which evens out the load of add and
// multiply pipes.
ZNP_INLINE void forward_step(CV& x0, CV& x1, CV& x2, CV& x3, const Powers& e) {
    const CV even = mul_add(x0, x2, e.e2);
    const CV diff = twice_minus(x0, even);
    const CV t1 = mul(x1, e.e1);
    const CV t3 = mul(x3, e.e3);
    const CV p = add(t1, t3);
    const CV q = sub(t1, t3);
    x0 = add(even, p);
    x1 = sub(even, p);
    x2 = add_i(diff, q);
    x3 = sub_i(diff, q);
}

// The inverse of forward_step, times 4.
ZNP_INLINE void inverse_step(CV& x0, CV& x1, CV& x2, CV& x3, const Powers& e) {
    const CV even = add(x0, x1);
    const CV p = sub(x0, x1);
    const CV diff = add(x2, x3);
    const CV q = sub(x2, x3);
    x0 = add(even, diff);
    x2 = mul_conj(sub(even, diff), e.e2);
    x1 = mul_conj(sub_i(p, q), e.e1);
    x3 = mul_conj(add_i(p, q), e.e3);
}

// One step, forward or inverse, over a block of 4 quarter groups.
template <void (*step)(CV&, CV&, CV&, CV&, const Powers&)>
ZNP_INLINE void pass(double* x, upL_t quarter, const BlockTwiddles& twiddles) {
    const Powers e = block_powers(twiddles);
    const upL_t q = 8 * quarter;
    for (double* end = x + q; x != end; x += 8) {
        CV a = load(x), b = load(x + q), c = load(x + 2 * q), d = load(x + 3 * q);
        step(a, b, c, d, e);
        store(x, a);
        store(x + q, b);
        store(x + 2 * q, c);
        store(x + 3 * q, d);
    }
}

ZNP_INLINE void transpose(__m256d& a, __m256d& b, __m256d& c, __m256d& d) {
    const __m256d ab0 = _mm256_unpacklo_pd(a, b), ab1 = _mm256_unpackhi_pd(a, b);
    const __m256d cd0 = _mm256_unpacklo_pd(c, d), cd1 = _mm256_unpackhi_pd(c, d);
    a = _mm256_permute2f128_pd(ab0, cd0, 0x20);
    b = _mm256_permute2f128_pd(ab1, cd1, 0x20);
    c = _mm256_permute2f128_pd(ab0, cd0, 0x31);
    d = _mm256_permute2f128_pd(ab1, cd1, 0x31);
}
ZNP_INLINE void transpose(CV& a, CV& b, CV& c, CV& d) {
    transpose(a.r, b.r, c.r, d.r);
    transpose(a.i, b.i, c.i, d.i);
}

}  // namespace znp::fft
