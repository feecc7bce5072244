// The lowest levels, within blocks of 64, 96, 160 and 224 points, and the pointwise step.
#include <immintrin.h>

#include <cassert>

#include "multiply/vst/vst_bounds.hpp"
#include "multiply/vst/vst_kernels.hpp"
#include "multiply/vst/vst_vector.hpp"

namespace znp::vst {

namespace {

ZNP_INLINE __m256d all(const double* x) {
    return _mm256_broadcast_sd(x);
}

// A block that comes a few hundred cycles later; it may lie behind the part.
ZNP_INLINE void prefetch(const double* x, upL_t doubles) {
    for (upL_t i = 0; i < doubles + 4; i += 8) _mm_prefetch(x + i, _MM_HINT_T0);
}

// ---- The pointwise step -----------------------------------------------------------------------------------
//
// Products modulo X^4 - w of four polynomials at a time, one in each lane. The three parts go over the whole
// block one after the other, through a buffer: each is a shorter chain of dependent operations than all
// together, and so many of them are under way at once.

// Four vectors, transposed: coefficient by coefficient.
ZNP_INLINE void load_polynomials(__m256d (&v)[4], const double* x, const Modulus& m) {
    for (unsigned i = 0; i < 4; i++) v[i] = reduce_mod(_mm256_load_pd(x + 4 * i), m);
    transpose(v[0], v[1], v[2], v[3]);
}

struct Operands {
    __m256d a[4], b[4], wb[4];
};

// Inputs up to p / 2 and a little, so that the sums stay below 1.2 p^2; outputs below 1.12 p.
ZNP_INLINE void multiply_polynomials(__m256d (&c)[4], const Operands& x, __m256d magic, const Modulus& m) {
    for (unsigned k = 0; k < 4; k++) {
        ProductSum sum(magic);
        for (unsigned i = 0; i < 4; i++) sum.add(x.a[i], i <= k ? x.b[k - i] : x.wb[k + 4 - i]);
        c[k] = sum.reduce(magic, m);
    }
}

// wb[2], wb[3]: w a[2], w a[3].
ZNP_INLINE void square_polynomials(__m256d (&c)[4], const Operands& x, __m256d magic, const Modulus& m) {
    const __m256d twice0 = _mm256_add_pd(x.a[0], x.a[0]);
    const __m256d twice1 = _mm256_add_pd(x.a[1], x.a[1]);
    const __m256d twice2 = _mm256_add_pd(x.a[2], x.a[2]);
    ProductSum s0(magic), s1(magic), s2(magic), s3(magic);
    s0.add(x.a[0], x.a[0]);
    s1.add(twice0, x.a[1]);
    s2.add(twice0, x.a[2]);
    s3.add(twice0, x.a[3]);
    s0.add(twice1, x.wb[3]);
    s1.add(twice2, x.wb[3]);
    s2.add(x.a[1], x.a[1]);
    s3.add(twice1, x.a[2]);
    s0.add(x.a[2], x.wb[2]);
    s2.add(x.a[3], x.wb[3]);
    c[0] = s0.reduce(magic, m);
    c[1] = s1.reduce(magic, m);
    c[2] = s2.reduce(magic, m);
    c[3] = s3.reduce(magic, m);
}

// x = x y for the polynomials of `groups` times 4 vectors, with weight(group) their four w.
template <unsigned groups, class Weight>
ZNP_INLINE void pointwise(double* x, const double* y, const Weight& weight, __m256d magic, Modulus m) {
    Operands buffer[groups];
    if (x == y) {
        for (unsigned g = 0; g < groups; g++) {
            Operands& o = buffer[g];
            const __m256d w = weight(g);
            load_polynomials(o.a, x + 16 * g, m);
            o.wb[2] = mul_mod(o.a[2], w, m);
            o.wb[3] = mul_mod(o.a[3], w, m);
        }
        for (unsigned g = 0; g < groups; g++) square_polynomials(buffer[g].b, buffer[g], magic, m);
    } else {
        for (unsigned g = 0; g < groups; g++) load_polynomials(buffer[g].a, x + 16 * g, m);
        for (unsigned g = 0; g < groups; g++) {
            Operands& o = buffer[g];
            const __m256d w = weight(g);
            load_polynomials(o.b, y + 16 * g, m);
            for (unsigned i = 1; i < 4; i++) o.wb[i] = mul_mod(o.b[i], w, m);
        }
        for (unsigned g = 0; g < groups; g++) {
            __m256d c[4];
            multiply_polynomials(c, buffer[g], magic, m);
            for (unsigned i = 0; i < 4; i++) buffer[g].b[i] = c[i];
        }
    }
    for (unsigned g = 0; g < groups; g++) {
        __m256d c[4] = {buffer[g].b[0], buffer[g].b[1], buffer[g].b[2], buffer[g].b[3]};
        transpose(c[0], c[1], c[2], c[3]);
        for (unsigned i = 0; i < 4; i++) _mm256_store_pd(x + 16 * g + 4 * i, c[i]);
    }
}

// No product: the values themselves, reduced.
ZNP_INLINE void reduce_block(double* x, upL_t vectors, Modulus m) {
    for (double* const end = x + 4 * vectors; x != end; x += 4)
        _mm256_store_pd(x, reduce_mod(_mm256_load_pd(x), m));
}

// ---- b = 1: 16 vectors, four levels -----------------------------------------------------------------------

// Where the twiddles of a block's nodes stand, by level.
struct BlockNodes {
    const double* level[4];

    ZNP_INLINE BlockNodes(const double* twiddles, unsigned levels, upL_t block) {
        for (unsigned e = 0; e < 4; e++) level[e] = twiddles + (upL_t{1} << (levels + e)) + (block << e);
    }
};

ZNP_INLINE void forward_block_1(double* x, const BlockNodes& node, __m256d i, Modulus m) {
    split4_rows<false>(x, 16, 4, make_factors4(node.level[0], node.level[1], i, m), m);
    Factors4 f[4];
    for (unsigned g = 0; g < 4; g++) f[g] = make_factors4(node.level[2] + g, node.level[3] + 2 * g, i, m);
    Half4 half = split4_begin(x, 4, _mm256_load_pd(x), f[0], m);
    for (unsigned g = 1; g < 4; g++, x += 16) {
        const Half4 next = split4_begin(x + 16, 4, _mm256_load_pd(x + 16), f[g], m);
        split4_end(x, 4, half, f[g - 1], m);
        half = next;
    }
    split4_end(x, 4, half, f[3], m);
}

// The weights of the polynomials of a pair of nodes: s0, -s0, s1, -s1.
ZNP_INLINE __m256d pair_weights(const double* s) {
    const __m256d pair = _mm256_permute4x64_pd(_mm256_castpd128_pd256(_mm_load_pd(s)), 0x50);
    return _mm256_xor_pd(pair, _mm256_setr_pd(0.0, -0.0, 0.0, -0.0));
}

ZNP_INLINE void inverse_block_1(double* x, const double* y, const double* weights, const BlockNodes& node,
                                __m256d i, __m256d magic, Modulus m) {
    if (y != nullptr) {
        pointwise<4>(
            x, y, [&](unsigned g) { return pair_weights(weights + 2 * g); }, magic, m);
    } else {
        reduce_block(x, 16, m);
    }
    const auto begin = [&](double* z, const Factors4& f) {
        const __m256d v[4] = {_mm256_load_pd(z), _mm256_load_pd(z + 4), _mm256_load_pd(z + 8),
                              _mm256_load_pd(z + 12)};
        return join4_begin(z, 4, v, false, f, m);
    };
    Factors4 f[4];
    for (unsigned g = 0; g < 4; g++) f[g] = make_factors4(node.level[2] + g, node.level[3] + 2 * g, i, m);
    double* z = x;
    Half4 half = begin(z, f[0]);
    for (unsigned g = 1; g < 4; g++, z += 16) {
        const Half4 next = begin(z + 16, f[g]);
        join4_end(z, 4, half, f[g - 1], m);
        half = next;
    }
    join4_end(z, 4, half, f[3], m);
    join4_rows(x, 16, 4, make_factors4(node.level[0], node.level[1], i, m), m);
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

// Where the twiddles of a block's nodes stand, by level, and i.
struct OddBlockNodes {
    const double* level[3];
    __m256d i;

    ZNP_INLINE OddBlockNodes(const double* twiddles, unsigned levels, upL_t block) : i(all(twiddles)) {
        for (unsigned e = 0; e < 3; e++) level[e] = twiddles + (upL_t{1} << (levels + e)) + (block << e);
    }
};

// The odd step at the 8 nodes of a block, b vectors each. A node is begun before the last one is finished.
template <unsigned b>
ZNP_INLINE void forward_odd(double* x, const double* powers, upL_t nodes, const OddConstants& constants,
                            Modulus m) {
    __m256d t[b];
    const auto begin = [&](unsigned g) {
        t[0] = _mm256_load_pd(x + 4 * b * g);
        for (unsigned r = 1; r < b; r++)
            t[r] = mul_mod(_mm256_load_pd(x + 4 * (b * g + r)), all(powers + (r - 1) * nodes + g), m);
    };
    begin(0);
    for (unsigned g = 0; g < 8; g++) {
        __m256d u[b];
        for (unsigned r = 0; r < b; r++) u[r] = t[r];
        if (g < 7) begin(g + 1);
        odd_dft<b>(u, constants, m);
        for (unsigned r = 0; r < b; r++) _mm256_store_pd(x + 4 * (b * g + r), u[r]);
    }
}
template <unsigned b>
ZNP_INLINE void inverse_odd(double* x, const double* powers, upL_t nodes, const OddConstants& constants,
                            Modulus m) {
    __m256d t[b];
    const auto begin = [&](unsigned g) {
        for (unsigned r = 0; r < b; r++) t[r] = _mm256_load_pd(x + 4 * (b * g + r));
        odd_dft<b>(t, constants, m);
    };
    begin(0);
    for (unsigned g = 0; g < 8; g++) {
        __m256d u[b];
        for (unsigned r = 0; r < b; r++) u[r] = t[r];
        if (g < 7) begin(g + 1);
        _mm256_store_pd(x + 4 * b * g, reduce_mod(u[0], m));
        for (unsigned r = 1; r < b; r++) {
            _mm256_store_pd(x + 4 * (b * g + r), mul_mod(u[r], all(powers + (r - 1) * nodes + g), m));
        }
    }
}

template <unsigned b>
ZNP_INLINE void forward_block(const Part& part, upL_t block, Modulus m) {
    double* const x = part.data + block * part.stride;
    const OddBlockNodes node(part.twiddles.twiddles[forward_direction], part.levels, block);
    split4_rows<false>(x, 8 * b, 2 * b, make_factors4(node.level[0], node.level[1], node.i, m), m);
    for (unsigned g = 0; g < 4; g++) {
        const Factor f = make_factor(all(node.level[2] + g), m);
        for (double* z = x + 8 * b * g; z != x + 8 * b * g + 4 * b; z += 4) {
            __m256d u = _mm256_load_pd(z), v = _mm256_load_pd(z + 4 * b);
            split(u, v, f, m);
            _mm256_store_pd(z, u);
            _mm256_store_pd(z + 4 * b, v);
        }
    }
    forward_odd<b>(x, part.twiddles.powers[forward_direction] + 8 * block, part.twiddles.nodes,
                   part.prime->odd[forward_direction], m);
}

template <unsigned b>
ZNP_INLINE void inverse_block(const Part& part, const double* other, upL_t block, __m256d magic, Modulus m) {
    double* const x = part.data + block * part.stride;
    const double* const weights = part.twiddles.weights + 8 * b * block;
    if (other != nullptr) {
        pointwise<2 * b>(
            x, other + block * part.stride, [&](unsigned g) { return _mm256_load_pd(weights + 4 * g); },
            magic, m);
    } else {
        reduce_block(x, 8 * b, m);
    }
    inverse_odd<b>(x, part.twiddles.powers[inverse_direction] + 8 * block, part.twiddles.nodes,
                   part.prime->odd[inverse_direction], m);
    const OddBlockNodes node(part.twiddles.twiddles[inverse_direction], part.levels, block);
    for (unsigned g = 0; g < 4; g++) {
        const Factor f = make_factor(all(node.level[2] + g), m);
        for (double* z = x + 8 * b * g; z != x + 8 * b * g + 4 * b; z += 4) {
            __m256d u = _mm256_load_pd(z), v = _mm256_load_pd(z + 4 * b);
            join(u, v, f, m);
            _mm256_store_pd(z, u);
            _mm256_store_pd(z + 4 * b, v);
        }
    }
    join4_rows(x, 8 * b, 2 * b, make_factors4(node.level[0], node.level[1], node.i, m), m);
}

}  // namespace

void forward_blocks(const Part& part, upL_t first, upL_t count) {
    const Modulus m = make_modulus(part.prime->p, part.prime->inverse);
    assert(blocks_bounded(part, first, first + count, forward_bound));
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
    assert(blocks_bounded(part, first, first + count, forward_bound));
}

void inverse_blocks(const Part& part, const double* other, upL_t first, upL_t count) {
    const Modulus m = make_modulus(part.prime->p, part.prime->inverse);
    const __m256d magic = _mm256_set1_pd(part.prime->product_magic);
    const double* const weights = part.twiddles.twiddles[forward_direction] + (upL_t{1} << (part.levels + 3));
    const upL_t doubles = part.b == 1 ? 64 : 32 * part.b;
    for (upL_t i = first; i < first + count; i++) {
        prefetch(part.data + (i + 3) * part.stride, doubles);
        if (other != nullptr && other != part.data) prefetch(other + (i + 3) * part.stride, doubles);
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
    assert(blocks_bounded(part, first, first + count, inverse_bound));
}

}  // namespace znp::vst
