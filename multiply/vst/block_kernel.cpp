// The lowest levels, within blocks of 64, 96, 160 and 224 points, and the pointwise step.
//
// A block's work is divided into stages, and a stage of one block runs before the next stage of the block
// before it: what a stage reads has been ready for a while, and two stages' chains of dependent operations
// overlap.
//
// Bounds, in multiples of p < 0.97 2^48; a product of a value below B by a factor is below 1/2 + B / 32.
// Forward, inputs up to 10: two levels add 1.7 to what is not multiplied, the third 0.9. For b = 1 the lower
// two levels reduce it first and leave 2.3. The odd step reduces it and leaves 2.3 (b = 3); b = 5 and 7
// reduce it before the first two levels as well, for products below 0.58, and leave 2.84 and 4.1. Products
// are below 4, for b = 7 below 2.6. Inverse: sums of four (b = 1) or of b products reach 20 and are reduced.
// The levels that follow, from 1.5: the sum of two products, each of a difference below 3, is below 1.2, all
// else is less.
#include <immintrin.h>

#include <cassert>

#include "multiply/vst/block_pointwise.hpp"
#include "multiply/vst/odd_dft.hpp"
#include "multiply/vst/vst_bounds.hpp"
#include "multiply/vst/vst_kernels.hpp"
#include "multiply/vst/vst_vector.hpp"

namespace znp::vst {

namespace {

ZNP_INLINE __m256d all(const double* x) {
    return _mm256_broadcast_sd(x);
}

// A count that the compiler does not know: a loop that it would unroll in full stays short.
ZNP_INLINE upL_t opaque(upL_t n) {
    asm("" : "+r"(n));
    return n;
}

// The same for loops of b > 1; those of b = 1 are short.
template <unsigned b>
ZNP_INLINE upL_t rolled(upL_t n) {
    return b == 1 ? n : opaque(n);
}

// A block that comes a few hundred cycles later; it may lie behind the part.
ZNP_INLINE void prefetch(const double* x, upL_t doubles) {
    for (upL_t i = 0; i < doubles + 4; i += 8) _mm_prefetch(x + i, _MM_HINT_T0);
}

// ---- Two levels on four vectors ---------------------------------------------------------------------------

// The twiddles of a node and of its two children.
struct Node4 {
    Factor s, r0, r1;
};
ZNP_INLINE Node4 make_node(const double* s, const double* r, const Modulus& m) {
    return {make_factor(all(s), m), make_factor(all(r), m), make_factor(all(r + 1), m)};
}

// Both directions in two halves: a loop begins four vectors before it finishes the last four, since the
// chain of dependent operations is longer than what a processor looks ahead.
struct SplitHalf {
    __m256d u, v, e, d;
};
template <bool reduce>
ZNP_INLINE SplitHalf split_node_begin(const double* x, upL_t step, const Node4& f, const Modulus& m) {
    const __m256d t2 = mul_mod(_mm256_load_pd(x + 2 * step), f.s, m);
    const __m256d t3 = mul_mod(_mm256_load_pd(x + 3 * step), f.s, m);
    const __m256d x1 = _mm256_load_pd(x + step);
    __m256d x0 = _mm256_load_pd(x);
    if (reduce) x0 = reduce_mod(x0, m);
    return {_mm256_add_pd(x0, t2), _mm256_sub_pd(x0, t2), _mm256_add_pd(x1, t3), _mm256_sub_pd(x1, t3)};
}
ZNP_INLINE void split_node_end(double* x, upL_t step, const SplitHalf& half, const Node4& f,
                               const Modulus& m) {
    const __m256d e = mul_mod(half.e, f.r0, m);
    const __m256d d = mul_mod(half.d, f.r1, m);
    _mm256_store_pd(x, _mm256_add_pd(half.u, e));
    _mm256_store_pd(x + step, _mm256_sub_pd(half.u, e));
    _mm256_store_pd(x + 2 * step, _mm256_add_pd(half.v, d));
    _mm256_store_pd(x + 3 * step, _mm256_sub_pd(half.v, d));
}

struct JoinHalf {
    __m256d x0, x2, x3;
};
ZNP_INLINE JoinHalf join_node_begin(double* x, upL_t step, const Node4& f, const Modulus& m) {
    const __m256d y0 = _mm256_load_pd(x), y1 = _mm256_load_pd(x + step);
    const __m256d y2 = _mm256_load_pd(x + 2 * step), y3 = _mm256_load_pd(x + 3 * step);
    const __m256d e = mul_mod(_mm256_sub_pd(y0, y1), f.r0, m);
    const __m256d d = mul_mod(_mm256_sub_pd(y2, y3), f.r1, m);
    const __m256d u = _mm256_add_pd(y0, y1);
    const __m256d v = _mm256_add_pd(y2, y3);
    _mm256_store_pd(x + step, _mm256_add_pd(e, d));
    return {_mm256_add_pd(u, v), _mm256_sub_pd(u, v), _mm256_sub_pd(e, d)};
}
ZNP_INLINE void join_node_end(double* x, upL_t step, const JoinHalf& half, const Node4& f, const Modulus& m) {
    _mm256_store_pd(x, reduce_mod(half.x0, m));
    _mm256_store_pd(x + 2 * step, mul_mod(half.x2, f.s, m));
    _mm256_store_pd(x + 3 * step, mul_mod(half.x3, f.s, m));
}

// ---- The blocks of a part ---------------------------------------------------------------------------------

// One direction through blocks of 8 b vectors, or 16 for b = 1.
template <unsigned b, Direction direction>
class Blocks {
  public:
    static constexpr upL_t vectors = block_lanes(b);

    ZNP_INLINE explicit Blocks(const Part& part)
        : m_(make_modulus(part.prime->p, part.prime->inverse)),
          data_(part.data),
          stride_(part.stride),
          twiddles_(part.twiddles.twiddles[direction]),
          levels_(part.levels),
          powers_(part.twiddles.powers[direction]),
          nodes_(part.twiddles.nodes),
          odd_(make_odd_factors(part.prime->odd[direction], m_)) {}

    ZNP_INLINE double* block(upL_t i) const { return data_ + i * stride_; }

    // The two upper levels, on four rows.
    ZNP_INLINE void split_rows(upL_t i) const {
        constexpr bool reduce = b >= 5;
        const Node4 f = make_node(level(i, 0), level(i, 1), m_);
        double* x = block(i);
        SplitHalf half = split_node_begin<reduce>(x, vectors, f, m_);
        for (upL_t j = 1, n = rolled<b>(vectors / 4); j < n; j++, x += 4) {
            const SplitHalf next = split_node_begin<reduce>(x + 4, vectors, f, m_);
            split_node_end(x, vectors, half, f, m_);
            half = next;
        }
        split_node_end(x, vectors, half, f, m_);
    }
    ZNP_INLINE void join_rows(upL_t i) const {
        const Node4 f = make_node(level(i, 0), level(i, 1), m_);
        double* x = block(i);
        JoinHalf half = join_node_begin(x, vectors, f, m_);
        for (upL_t j = 1, n = rolled<b>(vectors / 4); j < n; j++, x += 4) {
            const JoinHalf next = join_node_begin(x + 4, vectors, f, m_);
            join_node_end(x, vectors, half, f, m_);
            half = next;
        }
        join_node_end(x, vectors, half, f, m_);
    }

    // b = 1: the two lower ones.
    ZNP_INLINE void split_nodes(upL_t i) const {
        double* x = block(i);
        Node4 f = make_node(level(i, 2), level(i, 3), m_);
        SplitHalf half = split_node_begin<true>(x, 4, f, m_);
        for (upL_t g = 1; g < 4; g++, x += 16) {
            const Node4 next_f = make_node(level(i, 2) + g, level(i, 3) + 2 * g, m_);
            const SplitHalf next = split_node_begin<true>(x + 16, 4, next_f, m_);
            split_node_end(x, 4, half, f, m_);
            half = next;
            f = next_f;
        }
        split_node_end(x, 4, half, f, m_);
    }
    ZNP_INLINE void join_nodes(upL_t i) const {
        double* x = block(i);
        Node4 f = make_node(level(i, 2), level(i, 3), m_);
        JoinHalf half = join_node_begin(x, 4, f, m_);
        for (upL_t g = 1; g < 4; g++, x += 16) {
            const Node4 next_f = make_node(level(i, 2) + g, level(i, 3) + 2 * g, m_);
            const JoinHalf next = join_node_begin(x + 16, 4, next_f, m_);
            join_node_end(x, 4, half, f, m_);
            half = next;
            f = next_f;
        }
        join_node_end(x, 4, half, f, m_);
    }

    // b > 1: the third level
    ZNP_INLINE void split_pairs(upL_t i) const {
        for (upL_t g = 0, n = rolled<b>(4); g < n; g++) {
            double* const x = block(i) + 8 * b * g;
            const Factor f = make_factor(all(level(i, 2) + g), m_);
            for (upL_t j = 0; j < 4 * b; j += 4) {
                const __m256d u = _mm256_load_pd(x + j);
                const __m256d v = mul_mod(_mm256_load_pd(x + j + 4 * b), f, m_);
                _mm256_store_pd(x + j, _mm256_add_pd(u, v));
                _mm256_store_pd(x + j + 4 * b, _mm256_sub_pd(u, v));
            }
        }
    }
    ZNP_INLINE void join_pairs(upL_t i) const {
        for (upL_t g = 0, n = rolled<b>(4); g < n; g++) {
            double* const x = block(i) + 8 * b * g;
            const Factor f = make_factor(all(level(i, 2) + g), m_);
            for (upL_t j = 0; j < 4 * b; j += 4) {
                const __m256d u = _mm256_load_pd(x + j), v = _mm256_load_pd(x + j + 4 * b);
                _mm256_store_pd(x + j, _mm256_add_pd(u, v));
                _mm256_store_pd(x + j + 4 * b, mul_mod(_mm256_sub_pd(u, v), f, m_));
            }
        }
    }

    // and the odd step at the 8 nodes.
    ZNP_INLINE void multiply_powers(upL_t i) const {
        for (upL_t g = 0, n = rolled<b>(8); g < n; g++) {
            double* const x = block(i) + 4 * b * g;
            for (upL_t r = 1; r < b; r++)
                _mm256_store_pd(x + 4 * r, mul_mod(_mm256_load_pd(x + 4 * r), power(i, g, r), m_));
        }
    }
    ZNP_INLINE void odd_dfts(upL_t i) const {
        for (upL_t g = 0, n = rolled<b>(8); g < n; g++) {
            double* const x = block(i) + 4 * b * g;
            __m256d t[b];
            for (upL_t r = 0; r < b; r++) t[r] = _mm256_load_pd(x + 4 * r);
            if (direction == forward_direction) t[0] = reduce_mod(t[0], m_);
            odd_dft(t, odd_, m_);
            if (direction == inverse_direction) t[0] = reduce_mod(t[0], m_);
            for (upL_t r = 0; r < b; r++) _mm256_store_pd(x + 4 * r, t[r]);
        }
    }

  private:
    // Twiddles of the nodes of block i at one of its levels.
    ZNP_INLINE const double* level(upL_t i, unsigned depth) const {
        return twiddles_ + (upL_t{1} << (levels_ + depth)) + (i << depth);
    }
    ZNP_INLINE __m256d power(upL_t i, upL_t g, upL_t r) const {
        return all(powers_ + (r - 1) * nodes_ + 8 * i + g);
    }

    Modulus m_;
    double* data_;
    upL_t stride_;
    const double* twiddles_;
    unsigned levels_;
    const double* powers_;
    upL_t nodes_;
    OddFactors odd_;
};

// The pointwise step of a part's blocks in two stages, with a buffer between them.
template <unsigned b>
class Pointwise {
  public:
    static constexpr upL_t vectors = block_lanes(b);

    ZNP_INLINE explicit Pointwise(const Part& part)
        : pm_(make_pointwise_modulus(make_modulus(part.prime->p, part.prime->inverse),
                                     part.prime->product_magic)),
          data_(part.data),
          stride_(part.stride),
          weights_(b == 1 ? part.twiddles.twiddles[forward_direction] + (upL_t{1} << (part.levels + 3))
                          : part.twiddles.weights) {}

  protected:
    ZNP_INLINE double* block(upL_t i) const { return data_ + i * stride_; }

    // The weights of the polynomials of block i: for b = 1 those of the nodes s, of which each has s and -s.
    ZNP_INLINE const double* weights(upL_t i) const { return weights_ + (b == 1 ? 8 : vectors) * i; }

    PointwiseModulus pm_;
    double* data_;
    upL_t stride_;
    const double* weights_;
};

template <unsigned b>
class Products : public Pointwise<b> {
  public:
    using Pointwise<b>::vectors;

    ZNP_INLINE Products(const Part& part, const double* other) : Pointwise<b>(part), other_(other) {}

    ZNP_INLINE void prepare(upL_t i) {
        Windows* const out = windows_[i % 2];
        const double* const y = other_ + i * this->stride_;
        prefetch(y + 2 * this->stride_, 4 * vectors);
        const double* const w = this->weights(i);
        if constexpr (b == 1) {
            const __m256d minus = _mm256_set1_pd(-0.0);
            for (upL_t v = 0; v < vectors; v += 2) {
                const __m256d s = all(w + v / 2);
                make_windows<false>(out[v], y + 4 * v, s, this->pm_.m);
                make_windows<false>(out[v + 1], y + 4 * v + 4, _mm256_xor_pd(s, minus), this->pm_.m);
            }
        } else {
            for (upL_t v = 0, n = rolled<b>(vectors); v < n; v++)
                make_windows<b == 7>(out[v], y + 4 * v, all(w + v), this->pm_.m);
        }
    }

    // A pair is begun before the last one is reduced.
    ZNP_INLINE void multiply(upL_t i) const {
        double* x = this->block(i);
        const Windows* y = windows_[i % 2];
        ProductPair pair = multiply_pair(x, y, this->pm_);
        for (double* const last = x + 4 * (opaque(vectors) - 2); x != last; x += 8) {
            const ProductPair next = multiply_pair(x + 8, y += 2, this->pm_);
            store_pair(x, pair, this->pm_);
            pair = next;
        }
        store_pair(x, pair, this->pm_);
    }

  private:
    const double* other_;
    Windows windows_[2][vectors];
};

template <unsigned b>
class Squares : public Pointwise<b> {
  public:
    using Pointwise<b>::vectors;

    ZNP_INLINE explicit Squares(const Part& part) : Pointwise<b>(part) {}

    ZNP_INLINE void prepare(upL_t i) {
        const double* const x = this->block(i);
        const double* const w = this->weights(i);
        for (upL_t g = 0, n = opaque(vectors / 4); g < n; g++) {
            const __m256d v = b == 1 ? pair_weights(w + 2 * g) : _mm256_load_pd(w + 4 * g);
            make_transposed<b == 7>(transposed_[i % 2][g], x + 16 * g, v, this->pm_.m);
        }
    }
    ZNP_INLINE void multiply(upL_t i) const {
        double* const x = this->block(i);
        for (upL_t g = 0, n = opaque(vectors / 4); g < n; g++)
            square4(x + 16 * g, transposed_[i % 2][g], this->pm_);
    }

  private:
    // s0, -s0, s1, -s1.
    ZNP_INLINE static __m256d pair_weights(const double* s) {
        const __m256d pair = _mm256_permute4x64_pd(_mm256_castpd128_pd256(_mm_load_pd(s)), 0x50);
        return _mm256_xor_pd(pair, _mm256_setr_pd(0.0, -0.0, 0.0, -0.0));
    }

    Transposed transposed_[2][vectors / 4];
};

template <unsigned b>
void forward(const Part& part, upL_t first, upL_t count) {
    const Blocks<b, forward_direction> blocks(part);
    const upL_t last = first + count - 1;
    blocks.split_rows(first);
    if constexpr (b == 1) {
        for (upL_t i = first; i < last; i++) {
            blocks.split_rows(i + 1);
            blocks.split_nodes(i);
        }
        blocks.split_nodes(last);
    } else {
        blocks.split_pairs(first);
        blocks.multiply_powers(first);
        for (upL_t i = first; i < last; i++) {
            blocks.split_rows(i + 1);
            blocks.odd_dfts(i);
            blocks.split_pairs(i + 1);
            blocks.multiply_powers(i + 1);
        }
        blocks.odd_dfts(last);
    }
}

template <unsigned b, class Product>
ZNP_INLINE void inverse(const Part& part, Product& product, upL_t first, upL_t count) {
    const Blocks<b, inverse_direction> blocks(part);
    const upL_t last = first + count;
    product.prepare(first);
    for (upL_t i = first; i < last; i++) {
        prefetch(blocks.block(i + 3), 4 * blocks.vectors);
        if (i + 1 < last) product.prepare(i + 1);
        product.multiply(i);
        if (i > first) blocks.join_rows(i - 1);
        if constexpr (b == 1) {
            blocks.join_nodes(i);
        } else {
            blocks.odd_dfts(i);
            blocks.multiply_powers(i);
            blocks.join_pairs(i);
        }
    }
    blocks.join_rows(last - 1);
}

template <unsigned b>
void inverse(const Part& part, const double* other, upL_t first, upL_t count) {
    if (other == part.data) {
        Squares<b> squares(part);
        inverse<b>(part, squares, first, count);
    } else {
        Products<b> products(part, other);
        inverse<b>(part, products, first, count);
    }
}

}  // namespace

void forward_blocks(const Part& part, upL_t first, upL_t count) {
    assert(blocks_bounded(part, first, first + count, large_bound));
    switch (part.b) {
        case 1:
            forward<1>(part, first, count);
            break;
        case 3:
            forward<3>(part, first, count);
            break;
        case 5:
            forward<5>(part, first, count);
            break;
        default:
            forward<7>(part, first, count);
            break;
    }
    assert(blocks_bounded(part, first, first + count, pointwise_bound(part.b)));
}

void inverse_blocks(const Part& part, const double* other, upL_t first, upL_t count) {
    assert(blocks_bounded(part, first, first + count, pointwise_bound(part.b)));
    switch (part.b) {
        case 1:
            inverse<1>(part, other, first, count);
            break;
        case 3:
            inverse<3>(part, other, first, count);
            break;
        case 5:
            inverse<5>(part, other, first, count);
            break;
        default:
            inverse<7>(part, other, first, count);
            break;
    }
    assert(blocks_bounded(part, first, first + count, inverse_bound));
}

}  // namespace znp::vst
