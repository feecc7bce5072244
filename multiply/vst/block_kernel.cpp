// The lowest levels, within blocks of 64, 96, 160 and 224 points, and the pointwise step.
#include <immintrin.h>

#include "multiply/vst/vst_kernels.hpp"
#include "multiply/vst/vst_vector.hpp"

namespace znp::vst {

namespace {

ZNP_INLINE __m256d all(const double* x) {
    return _mm256_broadcast_sd(x);
}

struct Vectors4 {
    __m256d x[4];
};

// Four polynomials of four coefficients, coefficient by coefficient, reduced.
ZNP_INLINE Vectors4 load_polynomials(const double* x, const Modulus& m) {
    Vectors4 v = {{_mm256_load_pd(x), _mm256_load_pd(x + 4), _mm256_load_pd(x + 8), _mm256_load_pd(x + 12)}};
    for (__m256d& y : v.x) y = reduce_mod(y, m);
    transpose(v.x[0], v.x[1], v.x[2], v.x[3]);
    return v;
}

// Products modulo X^4 - w, one polynomial in each lane. Inputs below 0.54 p... outputs below 1.12 p.
ZNP_INLINE Vectors4 multiply_polynomials(const Vectors4& a, const Vectors4& b, __m256d w, __m256d magic,
                                         const Modulus& m) {
    const __m256d wb[4] = {b.x[0], mul_mod(b.x[1], w, m), mul_mod(b.x[2], w, m), mul_mod(b.x[3], w, m)};
    Vectors4 c;
    for (unsigned k = 0; k < 4; k++) {
        ProductSum sum(magic);
        for (unsigned i = 0; i < 4; i++) sum.add(a.x[i], i <= k ? b.x[k - i] : wb[k + 4 - i]);
        c.x[k] = sum.reduce(magic, m);
    }
    return c;
}

ZNP_INLINE Vectors4 square_polynomials(const Vectors4& a, __m256d w, __m256d magic, const Modulus& m) {
    const __m256d wa2 = mul_mod(a.x[2], w, m), wa3 = mul_mod(a.x[3], w, m);
    const __m256d twice0 = _mm256_add_pd(a.x[0], a.x[0]);
    const __m256d twice1 = _mm256_add_pd(a.x[1], a.x[1]);
    const __m256d twice2 = _mm256_add_pd(a.x[2], a.x[2]);
    ProductSum s0(magic), s1(magic), s2(magic), s3(magic);
    s0.add(a.x[0], a.x[0]);
    s1.add(twice0, a.x[1]);
    s2.add(twice0, a.x[2]);
    s3.add(twice0, a.x[3]);
    s0.add(twice1, wa3);
    s1.add(twice2, wa3);
    s2.add(a.x[1], a.x[1]);
    s3.add(twice1, a.x[2]);
    s0.add(a.x[2], wa2);
    s2.add(a.x[3], wa3);
    return {{s0.reduce(magic, m), s1.reduce(magic, m), s2.reduce(magic, m), s3.reduce(magic, m)}};
}

// The pointwise step on 4 vectors: x = x y modulo X^4 - w of its four polynomials.
ZNP_INLINE Vectors4 pointwise(const double* x, const double* y, __m256d w, __m256d magic, const Modulus& m) {
    const Vectors4 a = load_polynomials(x, m);
    Vectors4 c = x == y ? square_polynomials(a, w, magic, m)
                        : multiply_polynomials(a, load_polynomials(y, m), w, magic, m);
    transpose(c.x[0], c.x[1], c.x[2], c.x[3]);
    return c;
}

// ---- b = 1: 16 vectors, four levels -----------------------------------------------------------------------

// Where the twiddles of a block's nodes stand, by level.
struct BlockNodes {
    const double* level[4];

    ZNP_INLINE BlockNodes(const double* twiddles, unsigned levels, upL_t block) {
        for (unsigned e = 0; e < 4; e++) level[e] = twiddles + (upL_t{1} << (levels + e)) + (block << e);
    }
};

ZNP_INLINE void forward_block_1(double* x, const BlockNodes& node, __m256d i, const Modulus& m) {
    split4_rows<false>(x, 16, 4, make_factors4(node.level[0], node.level[1], i, m), m);
    const auto factors = [&](unsigned g) {
        return make_factors4(node.level[2] + g, node.level[3] + 2 * g, i, m);
    };
    Factors4 f = factors(0);
    Half4 half = split4_begin(x, 4, _mm256_load_pd(x), f, m);
    for (unsigned g = 1; g < 4; g++, x += 16) {
        const Factors4 next = factors(g);
        const Half4 next_half = split4_begin(x + 16, 4, _mm256_load_pd(x + 16), next, m);
        split4_end(x, 4, half, f, m);
        f = next;
        half = next_half;
    }
    split4_end(x, 4, half, f, m);
}

// The weights of the polynomials of a pair of nodes: s0, -s0, s1, -s1.
ZNP_INLINE __m256d pair_weights(const double* s) {
    const __m256d pair = _mm256_permute4x64_pd(_mm256_castpd128_pd256(_mm_load_pd(s)), 0x50);
    return _mm256_xor_pd(pair, _mm256_setr_pd(0.0, -0.0, 0.0, -0.0));
}

ZNP_INLINE void inverse_block_1(double* x, const double* y, const double* weights, const BlockNodes& node,
                                __m256d i, __m256d magic, const Modulus& m) {
    for (unsigned g = 0; g < 4; g++) {
        double* const z = x + 16 * g;
        Vectors4 c;
        if (y != nullptr) {
            c = pointwise(z, y + 16 * g, pair_weights(weights + 2 * g), magic, m);
        } else {
            for (unsigned k = 0; k < 4; k++) c.x[k] = reduce_mod(_mm256_load_pd(z + 4 * k), m);
        }
        const Factors4 f = make_factors4(node.level[2] + g, node.level[3] + 2 * g, i, m);
        join4_end(z, 4, join4_begin(z, 4, c.x, false, f, m), f, m);
    }
    join4_rows<true>(x, 16, 4, make_factors4(node.level[0], node.level[1], i, m), m);
}

// ---- b = 3, 5, 7: 8 b vectors, three levels and the odd step ----------------------------------------------

// t to its values at the powers of z: t[k] = sum over j of t[j] z^jk.
template <unsigned b>
ZNP_INLINE void odd_dft(__m256d (&t)[b], const OddConstants& c, const Modulus& m) {
    if constexpr (b == 3) {
        const __m256d d = mul_mod(_mm256_sub_pd(t[1], t[2]), _mm256_set1_pd(c.z), m);
        const __m256d y0 = _mm256_add_pd(t[0], _mm256_add_pd(t[1], t[2]));
        const __m256d y1 = _mm256_add_pd(_mm256_sub_pd(t[0], t[2]), d);
        t[2] = _mm256_sub_pd(_mm256_sub_pd(t[0], t[1]), d);
        t[1] = y1;
        t[0] = y0;
    } else {
        constexpr unsigned half = (b - 1) / 2;
        __m256d sum[half], difference[half];
        __m256d y0 = t[0];
        for (unsigned j = 0; j < half; j++) {
            sum[j] = _mm256_add_pd(t[j + 1], t[b - 1 - j]);
            difference[j] = _mm256_sub_pd(t[j + 1], t[b - 1 - j]);
            y0 = _mm256_add_pd(y0, sum[j]);
        }
        for (unsigned k = 0; k < half; k++) {
            __m256d even = t[0];
            __m256d odd = _mm256_setzero_pd();
            for (unsigned j = 0; j < half; j++) {
                even = _mm256_add_pd(even, mul_mod(sum[j], _mm256_set1_pd(c.cos[j + 1][k + 1]), m));
                odd = _mm256_add_pd(odd, mul_mod(difference[j], _mm256_set1_pd(c.sin[j + 1][k + 1]), m));
            }
            t[k + 1] = _mm256_add_pd(even, odd);
            t[b - 1 - k] = _mm256_sub_pd(even, odd);
        }
        t[0] = y0;
    }
}

template <unsigned b>
ZNP_INLINE void forward_odd(double* x, const double* powers, upL_t nodes, const OddConstants& c,
                            const Modulus& m) {
    __m256d t[b];
    t[0] = _mm256_load_pd(x);
    for (unsigned r = 1; r < b; r++)
        t[r] = mul_mod(_mm256_load_pd(x + 4 * r), all(powers + (r - 1) * nodes), m);
    odd_dft<b>(t, c, m);
    for (unsigned r = 0; r < b; r++) _mm256_store_pd(x + 4 * r, t[r]);
}

template <unsigned b>
ZNP_INLINE void inverse_odd(double* x, const double* powers, upL_t nodes, const OddConstants& c,
                            const Modulus& m) {
    __m256d t[b];
    for (unsigned r = 0; r < b; r++) t[r] = _mm256_load_pd(x + 4 * r);
    odd_dft<b>(t, c, m);
    _mm256_store_pd(x, reduce_mod(t[0], m));
    for (unsigned r = 1; r < b; r++)
        _mm256_store_pd(x + 4 * r, mul_mod(t[r], all(powers + (r - 1) * nodes), m));
}

template <unsigned b>
void forward_block(const Part& part, upL_t block, const Modulus& m) {
    double* const x = part.data + block * part.stride;
    const double* const twiddles = part.twiddles.twiddles[forward_direction];
    // The rest of the block's tree: three levels on 8 rows of b vectors.
    double local[8];
    local[0] = twiddles[0];
    for (unsigned e = 0; e < 3; e++) {
        for (upL_t j = 0; j < upL_t{1} << e; j++)
            local[(1u << e) + j] = twiddles[(upL_t{1} << (part.levels + e)) + (block << e) + j];
    }
    forward_levels({x, 4 * b, b, local, part.prime}, 3, Top::any);
    const double* const powers = part.twiddles.powers[forward_direction] + 8 * block;
    for (unsigned g = 0; g < 8; g++)
        forward_odd<b>(x + 4 * b * g, powers + g, part.twiddles.nodes, part.prime->odd[forward_direction], m);
}

template <unsigned b>
void inverse_block(const Part& part, const double* other, upL_t block, __m256d magic, const Modulus& m) {
    double* const x = part.data + block * part.stride;
    const double* const weights = part.twiddles.weights + 8 * b * block;
    for (unsigned i = 0; i < 8 * b; i += 4) {
        Vectors4 c;
        if (other != nullptr) {
            c = pointwise(x + 4 * i, other + block * part.stride + 4 * i, _mm256_load_pd(weights + i), magic,
                          m);
        } else {
            for (unsigned k = 0; k < 4; k++) c.x[k] = reduce_mod(_mm256_load_pd(x + 4 * (i + k)), m);
        }
        for (unsigned k = 0; k < 4; k++) _mm256_store_pd(x + 4 * (i + k), c.x[k]);
    }
    const double* const powers = part.twiddles.powers[inverse_direction] + 8 * block;
    for (unsigned g = 0; g < 8; g++)
        inverse_odd<b>(x + 4 * b * g, powers + g, part.twiddles.nodes, part.prime->odd[inverse_direction], m);
    const double* const twiddles = part.twiddles.twiddles[inverse_direction];
    double local[8];
    local[0] = twiddles[0];
    for (unsigned e = 0; e < 3; e++) {
        for (upL_t j = 0; j < upL_t{1} << e; j++)
            local[(1u << e) + j] = twiddles[(upL_t{1} << (part.levels + e)) + (block << e) + j];
    }
    inverse_levels({x, 4 * b, b, local, part.prime}, 3);
}

}  // namespace

void forward_blocks(const Part& part, upL_t first, upL_t count) {
    const Modulus m = make_modulus(part.prime->p, part.prime->inverse);
    for (upL_t i = first; i < first + count; i++) {
        switch (part.b) {
            case 1:
                forward_block_1(part.data + i * part.stride,
                                BlockNodes(part.twiddles.twiddles[forward_direction], part.levels, i),
                                all(part.twiddles.twiddles[forward_direction]), m);
                break;
            case 3:
                forward_block<3>(part, i, m);
                break;
            case 5:
                forward_block<5>(part, i, m);
                break;
            default:
                forward_block<7>(part, i, m);
                break;
        }
    }
}

void inverse_blocks(const Part& part, const double* other, upL_t first, upL_t count) {
    const Modulus m = make_modulus(part.prime->p, part.prime->inverse);
    const __m256d magic = _mm256_set1_pd(part.prime->product_magic);
    const double* const weights = part.twiddles.twiddles[forward_direction] + (upL_t{1} << (part.levels + 3));
    for (upL_t i = first; i < first + count; i++) {
        switch (part.b) {
            case 1:
                inverse_block_1(part.data + i * part.stride,
                                other != nullptr ? other + i * part.stride : nullptr, weights + 8 * i,
                                BlockNodes(part.twiddles.twiddles[inverse_direction], part.levels, i),
                                all(part.twiddles.twiddles[inverse_direction]), magic, m);
                break;
            case 3:
                inverse_block<3>(part, other, i, magic, m);
                break;
            case 5:
                inverse_block<5>(part, other, i, magic, m);
                break;
            default:
                inverse_block<7>(part, other, i, magic, m);
                break;
        }
    }
}

}  // namespace znp::vst
