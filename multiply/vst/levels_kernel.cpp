// The binary levels above the blocks: two or three at a time, the tree depth first, so that a subtree stays
// in the cache that holds it.
//
// Bounds, forward: a value that is never multiplied grows from B to B + 1/2 + B/32 a level, from 1/2 in 12
// levels to 8. Inverse: join8 takes inputs below 1.35 p; the sums of 8 and of 4 products are reduced, those
// of 2 reach (1 + B/4) p = 1.34 p.
#include <immintrin.h>

#include <cassert>

#include "multiply/vst/vst_bounds.hpp"
#include "multiply/vst/vst_kernels.hpp"
#include "multiply/vst/vst_vector.hpp"

namespace znp::vst {

namespace {

// Twiddles of a node, of its children and grandchildren.
struct Node {
    const double* twiddles;
    unsigned level;
    upL_t index;

    ZNP_INLINE const double* at(unsigned depth) const {
        return twiddles + (upL_t{1} << (level + depth)) + (index << depth);
    }
    ZNP_INLINE Factor factor(unsigned depth, upL_t child, const Modulus& m) const {
        return make_factor(_mm256_broadcast_sd(at(depth) + child), m);
    }
};

template <bool inverse>
ZNP_INLINE void step4(double* row, upL_t step, upL_t count, const Node& node, const Modulus& m, bool reduce) {
    const Factors4 f = make_factors4(node.at(0), node.at(1), _mm256_broadcast_sd(node.twiddles), m);
    if constexpr (inverse) {
        join4_rows(row, step, count, f, m);
    } else if (reduce) {
        split4_rows<true>(row, step, count, f, m);
    } else {
        split4_rows<false>(row, step, count, f, m);
    }
}

template <bool inverse>
ZNP_INLINE void step2(double* row, upL_t step, upL_t count, const Node& node, const Modulus& m, bool reduce) {
    const Factor f = node.factor(0, 0, m);
    if constexpr (inverse) {
        join_rows<true>(row, step, count, f, m);
    } else if (reduce) {
        split_rows<true>(row, step, count, f, m);
    } else {
        split_rows<false>(row, step, count, f, m);
    }
}

// Two levels and one on 8 rows, which stay in the first-level cache meanwhile.
template <bool inverse>
ZNP_INLINE void step8(double* row, upL_t step, upL_t count, const Node& node, const Modulus& m, bool reduce) {
    if constexpr (!inverse) {
        step4<false>(row, 2 * step, count, node, m, reduce);
        step4<false>(row + step, 2 * step, count, node, m, reduce);
        for (unsigned i = 0; i < 4; i++)
            split_rows<false>(row + 2 * i * step, step, count, node.factor(2, i, m), m);
    } else {
        for (unsigned i = 0; i < 4; i++)
            join_rows<false>(row + 2 * i * step, step, count, node.factor(2, i, m), m);
        step4<true>(row, 2 * step, count, node, m, false);
        step4<true>(row + step, 2 * step, count, node, m, false);
    }
}

// What a step reads in a few hundred cycles: rows stand too far apart for the processor to see a pattern.
ZNP_INLINE void prefetch_rows(const Rows& rows, upL_t first, upL_t distance, unsigned depth) {
    for (unsigned k = 0; k < 1u << depth; k++) {
        const double* const row = rows.data + (first + k * distance) * rows.stride;
        for (upL_t i = 0; i < 4 * rows.count + 4; i += 8) _mm_prefetch(row + i, _MM_HINT_T0);
    }
}

// The top of the tree of X^N - 1, where all twiddles are 1 but that of the second child.
ZNP_INLINE void split_root(const Rows& rows, upL_t quarter, bool half, Modulus m) {
    const Factor i = make_factor(_mm256_broadcast_sd(rows.twiddles), m);
    const upL_t step = quarter * rows.stride;
    for (upL_t r = 0; r < quarter; r++) {
        double* x = rows.data + r * rows.stride;
        if (r + 2 < quarter) prefetch_rows(rows, r + 2, quarter, half ? 1 : 2);
        for (double* const end = x + 4 * rows.count; x != end; x += 4) {
            __m256d u = _mm256_load_pd(x), e = _mm256_load_pd(x + step);
            __m256d v = u, d = e;
            if (!half) {
                const __m256d x2 = _mm256_load_pd(x + 2 * step), x3 = _mm256_load_pd(x + 3 * step);
                u = _mm256_add_pd(v, x2);
                v = _mm256_sub_pd(v, x2);
                e = _mm256_add_pd(d, x3);
                d = _mm256_sub_pd(d, x3);
            }
            d = mul_mod(d, i, m);
            _mm256_store_pd(x, _mm256_add_pd(u, e));
            _mm256_store_pd(x + step, _mm256_sub_pd(u, e));
            _mm256_store_pd(x + 2 * step, _mm256_add_pd(v, d));
            _mm256_store_pd(x + 3 * step, _mm256_sub_pd(v, d));
        }
    }
}
ZNP_INLINE void join_root(const Rows& rows, upL_t quarter, double scale, Modulus m) {
    const Factor i = make_factor(_mm256_broadcast_sd(rows.twiddles), m);
    const Factor f = make_factor(_mm256_set1_pd(scale), m);
    const upL_t step = quarter * rows.stride;
    for (upL_t r = 0; r < quarter; r++) {
        double* x = rows.data + r * rows.stride;
        for (double* const end = x + 4 * rows.count; x != end; x += 4) {
            const __m256d y0 = _mm256_load_pd(x), y1 = _mm256_load_pd(x + step);
            const __m256d y2 = _mm256_load_pd(x + 2 * step), y3 = _mm256_load_pd(x + 3 * step);
            const __m256d u = _mm256_add_pd(y0, y1), e = _mm256_sub_pd(y0, y1);
            const __m256d v = _mm256_add_pd(y2, y3), d = mul_mod(_mm256_sub_pd(y2, y3), i, m);
            _mm256_store_pd(x, mul_mod(_mm256_add_pd(u, v), f, m));
            _mm256_store_pd(x + step, mul_mod(_mm256_add_pd(e, d), f, m));
            _mm256_store_pd(x + 2 * step, mul_mod(_mm256_sub_pd(u, v), f, m));
            _mm256_store_pd(x + 3 * step, mul_mod(_mm256_sub_pd(e, d), f, m));
        }
    }
}

// Levels of the next step: three as long as no single one is left over.
constexpr unsigned step_levels(unsigned levels) {
    return levels == 1 ? 1 : levels == 3 ? 3 : 2;
}

// cold: the first step that meets the rows.
template <bool inverse>
void step(const Rows& rows, upL_t first, unsigned levels, unsigned depth, const Node& node, const Modulus& m,
          bool reduce, bool cold) {
    const upL_t quarter = upL_t{1} << (levels - depth);
    double* row = rows.data + first * rows.stride;
    for (upL_t i = 0; i < quarter; i++, row += rows.stride) {
        const upL_t distance = quarter * rows.stride;
        if (cold) {
            if (inverse) {
                prefetch_rows(rows, first + (upL_t{2} << depth), 1, depth);
            } else if (i + 2 < quarter) {
                prefetch_rows(rows, first + i + 2, quarter, depth);
            }
        }
        if (depth == 3) {
            step8<inverse>(row, distance, rows.count, node, m, reduce);
        } else if (depth == 2) {
            step4<inverse>(row, distance, rows.count, node, m, reduce);
        } else {
            step2<inverse>(row, distance, rows.count, node, m, reduce);
        }
    }
}

// The subtree of `levels` levels at the node, on the rows from `first` on. A part's leaves go on in the
// blocks.
void forward_tree(const Rows& rows, const Part* part, upL_t first, unsigned levels, const Node& node,
                  const Modulus& m, bool reduce, bool cold) {
    if (levels > 0) {
        const unsigned depth = step_levels(levels);
        step<false>(rows, first, levels, depth, node, m, reduce, cold);
        if (levels > depth) {
            const upL_t section = upL_t{1} << (levels - depth);
            for (upL_t i = 0; i < upL_t{1} << depth; i++) {
                forward_tree(rows, part, first + i * section, levels - depth,
                             {node.twiddles, node.level + depth, (node.index << depth) + i}, m, false, false);
            }
            return;
        }
    }
    if (part != nullptr) forward_blocks(*part, first, upL_t{1} << levels);
}

void inverse_tree(const Rows& rows, const Part* part, const double* other, upL_t first, unsigned levels,
                  const Node& node, const Modulus& m) {
    const unsigned depth = levels > 0 ? step_levels(levels) : 0;
    const bool leaf = levels <= depth;
    if (!leaf) {
        const upL_t section = upL_t{1} << (levels - depth);
        for (upL_t i = 0; i < upL_t{1} << depth; i++) {
            inverse_tree(rows, part, other, first + i * section, levels - depth,
                         {node.twiddles, node.level + depth, (node.index << depth) + i}, m);
        }
    } else if (part != nullptr) {
        inverse_blocks(*part, other, first, upL_t{1} << levels);
    }
    if (depth > 0) step<true>(rows, first, levels, depth, node, m, false, leaf && part == nullptr);
}

Rows part_rows(const Part& part, Direction direction) {
    const upL_t lanes = part.b == 1 ? 16 : 8 * part.b;
    return {part.data, part.stride, lanes, part.twiddles.twiddles[direction], part.prime};
}

}  // namespace

void forward_levels(const Rows& rows, unsigned levels, Top top) {
    const Modulus m = make_modulus(rows.prime->p, rows.prime->inverse);
    [[maybe_unused]] const upL_t count = upL_t{1} << levels;
    assert(rows_bounded(rows, 0, top == Top::half_root ? count / 2 : count,
                        top == Top::large ? large_bound : any_bound));
    if (top == Top::any || top == Top::large) {
        forward_tree(rows, nullptr, 0, levels, {rows.twiddles, 0, 0}, m, top == Top::large, true);
        assert(rows_bounded(rows, 0, count, forward_bound));
        return;
    }
    const upL_t quarter = upL_t{1} << (levels - 2);
    split_root(rows, quarter, top == Top::half_root, m);
    for (upL_t i = 0; i < 4 && levels > 2; i++)
        forward_tree(rows, nullptr, i * quarter, levels - 2, {rows.twiddles, 2, i}, m, false, false);
    assert(rows_bounded(rows, 0, count, forward_bound));
}

void inverse_levels(const Rows& rows, unsigned levels) {
    const Modulus m = make_modulus(rows.prime->p, rows.prime->inverse);
    assert(rows_bounded(rows, 0, upL_t{1} << levels, inverse_bound));
    inverse_tree(rows, nullptr, nullptr, 0, levels, {rows.twiddles, 0, 0}, m);
    assert(rows_bounded(rows, 0, upL_t{1} << levels, inverse_bound));
}

void inverse_levels_root(const Rows& rows, unsigned levels, double scale) {
    const Modulus m = make_modulus(rows.prime->p, rows.prime->inverse);
    const upL_t quarter = upL_t{1} << (levels - 2);
    assert(rows_bounded(rows, 0, 4 * quarter, inverse_bound));
    for (upL_t i = 0; i < 4 && levels > 2; i++)
        inverse_tree(rows, nullptr, nullptr, i * quarter, levels - 2, {rows.twiddles, 2, i}, m);
    join_root(rows, quarter, scale, m);
    assert(rows_bounded(rows, 0, 4 * quarter, result_bound));
}

void forward_part(const Part& part) {
    const Modulus m = make_modulus(part.prime->p, part.prime->inverse);
    const Rows rows = part_rows(part, forward_direction);
    forward_tree(rows, &part, 0, part.levels, {rows.twiddles, 0, 0}, m, true, true);
}

void inverse_part(const Part& part, const double* other) {
    const Modulus m = make_modulus(part.prime->p, part.prime->inverse);
    const Rows rows = part_rows(part, inverse_direction);
    inverse_tree(rows, &part, other, 0, part.levels, {rows.twiddles, 0, 0}, m);
}

}  // namespace znp::vst
