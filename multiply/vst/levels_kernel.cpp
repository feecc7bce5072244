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

// A line of each of two rows.
ZNP_INLINE void prefetch(const double* x, upL_t step) {
    _mm_prefetch(x, _MM_HINT_T0);
    _mm_prefetch(x + step, _MM_HINT_T0);
}

// Four rows at a time, `step` doubles apart, `count` vectors long; a group of them begins `advance` doubles
// behind the one before.
struct Groups {
    double* data;
    upL_t step, count, groups, advance;
};

// The factors of groups that belong to one node, and of groups that are nodes of their own.
struct NodeFactors {
    static constexpr bool same = true;
    Factors4 f;
    ZNP_INLINE Factors4 operator()(upL_t) const { return f; }
};
struct NodesFactors {
    static constexpr bool same = false;
    const double *s, *r;
    __m256d i;
    Modulus m;
    ZNP_INLINE Factors4 operator()(upL_t group) const {
        return make_factors4(s + group, r + 2 * group, i, m);
    }
};

// Two levels, group by group. A group begins before the one in front of it is finished, so that the pipeline
// of dependent operations fills only once; the factors of the next group are made meanwhile.
template <bool inverse, bool reduce, bool cold, class FactorsOf>
ZNP_INLINE void sweep4(const Groups& w, const FactorsOf& factors, Modulus m) {
    constexpr bool same = FactorsOf::same;
    const upL_t step = w.step;
    const auto begin = [step, m](double* x, const Factors4& f) {
        if constexpr (inverse) {
            const __m256d v[4] = {_mm256_load_pd(x), _mm256_load_pd(x + step), _mm256_load_pd(x + 2 * step),
                                  _mm256_load_pd(x + 3 * step)};
            return join4_begin(x, step, v, true, f, m);
        } else {
            const __m256d x0 = _mm256_load_pd(x);
            return split4_begin(x, step, reduce ? reduce_mod(x0, m) : x0, f, m);
        }
    };
    const auto end = [step, m](double* x, const Half4& half, const Factors4& f) {
        if constexpr (inverse) {
            join4_end(x, step, half, f, m);
        } else {
            split4_end(x, step, half, f, m);
        }
    };
    // What is read two groups later, a line of two rows with each vector: the rows stand too far apart for
    // the processor to see a pattern.
    const double* near = w.data + 2 * w.advance;
    const double* far = near + 2 * step;
    double* x = w.data;
    Factors4 f = factors(0);
    Half4 half = begin(x, f);
    for (upL_t g = 1;; g++) {
        Factors4 following = f;
        if constexpr (!same) following = factors(g < w.groups ? g : 0);
        for (double* const last = x + 4 * (w.count - 1); x != last; x += 4) {
            if constexpr (cold) {
                prefetch(near, step);
                const double* const next = near + 4;
                near = far;
                far = next;
            }
            const Half4 next = begin(x + 4, f);
            end(x, half, f);
            half = next;
        }
        if (g == w.groups) break;
        double* const y = w.data + g * w.advance;
        const Half4 next = begin(y, same ? f : following);
        end(x, half, f);
        half = next;
        if constexpr (!same) f = following;
        x = y;
        near = y + 2 * w.advance;
        far = near + 2 * step;
    }
    end(x, half, f);
}

// Two levels at a node, on 4 quarters of rows.
template <bool inverse>
void node4(const Groups& w, const Node& node, const Modulus& m, bool reduce, bool cold) {
    const NodeFactors f{make_factors4(node.at(0), node.at(1), _mm256_broadcast_sd(node.twiddles), m)};
    if (cold) {
        sweep4<inverse, !inverse, true>(w, f, m);
    } else if (inverse || !reduce) {
        sweep4<inverse, false, false>(w, f, m);
    } else {
        sweep4<inverse, true, false>(w, f, m);
    }
}

// Two levels at each of several nodes, on 4 rows.
template <bool inverse>
void nodes4(const Groups& w, const Node& node, const Modulus& m, bool cold) {
    const NodesFactors factors{node.at(0), node.at(1), _mm256_broadcast_sd(node.twiddles), m};
    if (cold) {
        sweep4<inverse, false, true>(w, factors, m);
    } else {
        sweep4<inverse, false, false>(w, factors, m);
    }
}

// One level on 2 rows, four vectors at a time; count is a multiple of 4. cold: the rows `ahead` doubles from
// here are read next.
template <bool inverse, bool reduce, bool cold>
ZNP_INLINE void rows2(double* x, upL_t step, upL_t count, upL_t ahead, Factor f, Modulus m) {
    for (double* const end = x + 4 * count; x != end; x += 16) {
        for (unsigned i = 0; i < 16; i += 4) {
            if (cold && i % 8 == 0) prefetch(x + ahead + i, step);
            __m256d u = _mm256_load_pd(x + i), v = _mm256_load_pd(x + step + i);
            if (reduce && !inverse) u = reduce_mod(u, m);
            if (inverse) {
                join(u, v, f, m);
            } else {
                split(u, v, f, m);
            }
            _mm256_store_pd(x + i, reduce && inverse ? reduce_mod(u, m) : u);
            _mm256_store_pd(x + step + i, v);
        }
    }
}

// One level at a node of two rows.
template <bool inverse>
void step2(double* row, upL_t step, upL_t count, const Node& node, const Modulus& m, bool reduce) {
    const Factor f = node.factor(0, 0, m);
    if (inverse || reduce) {
        rows2<inverse, true, false>(row, step, count, 0, f, m);
    } else {
        rows2<inverse, false, false>(row, step, count, 0, f, m);
    }
}

// Two levels and one on 8 rows, which stay in the first-level cache meanwhile.
template <bool inverse>
void step8(double* row, upL_t step, upL_t count, const Node& node, const Modulus& m, bool reduce, bool cold) {
    const Groups pair{row, 2 * step, count, 2, step};
    if constexpr (!inverse) node4<false>(pair, node, m, reduce, cold);
    for (unsigned i = 0; i < 4; i++) {
        const Factor f = node.factor(2, i, m);
        if (inverse && cold) {
            rows2<inverse, false, true>(row + 2 * i * step, step, count, 8 * step, f, m);
        } else {
            rows2<inverse, false, false>(row + 2 * i * step, step, count, 0, f, m);
        }
    }
    if constexpr (inverse) node4<true>(pair, node, m, false, false);
}

// The top of the tree of X^N - 1, where all twiddles are 1 but that of the second child.
ZNP_INLINE void split_root(const Rows& rows, upL_t quarter, bool half, Modulus m) {
    const Factor i = make_factor(_mm256_broadcast_sd(rows.twiddles), m);
    const upL_t step = quarter * rows.stride;
    for (upL_t r = 0; r < quarter; r++) {
        double* x = rows.data + r * rows.stride;
        // As in sweep4; the two rows that are zero are written all the same.
        const double* near = x + (r + 2 < quarter ? 2 * rows.stride : 0);
        const double* far = near + 2 * step;
        for (double* const end = x + 4 * rows.count; x != end; x += 4) {
            prefetch(near, step);
            const double* const next = near + 4;
            near = far;
            far = next;
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

// The first levels of a subtree, or its last ones. cold: nothing has met the rows before.
template <bool inverse>
void step(const Rows& rows, upL_t first, unsigned levels, unsigned depth, const Node& node, const Modulus& m,
          bool reduce, bool cold) {
    const upL_t quarter = upL_t{1} << (levels - depth);
    double* const row = rows.data + first * rows.stride;
    const upL_t distance = quarter * rows.stride;
    if (depth == 2)
        return node4<inverse>({row, distance, rows.count, quarter, rows.stride}, node, m, reduce, cold);
    if (depth == 3) {
        step8<inverse>(row, distance, rows.count, node, m, reduce, cold);
    } else {
        step2<inverse>(row, distance, rows.count, node, m, reduce);
    }
}

// Two levels at 4 nodes, on 16 rows.
template <bool inverse>
void leaves(const Rows& rows, upL_t first, const Node& node, const Modulus& m, bool cold) {
    nodes4<inverse>({rows.data + first * rows.stride, rows.stride, rows.count, 4, 4 * rows.stride},
                    {node.twiddles, node.level + 2, node.index << 2}, m, cold);
}

// The subtree of `levels` levels at the node, on the rows from `first` on. A part's leaves go on in the
// blocks.
void forward_tree(const Rows& rows, const Part* part, upL_t first, unsigned levels, const Node& node,
                  const Modulus& m, bool reduce, bool cold) {
    if (levels > 0) {
        const unsigned depth = step_levels(levels);
        step<false>(rows, first, levels, depth, node, m, reduce, cold);
        if (levels > 4) {
            const upL_t section = upL_t{1} << (levels - depth);
            for (upL_t i = 0; i < upL_t{1} << depth; i++) {
                forward_tree(rows, part, first + i * section, levels - depth,
                             {node.twiddles, node.level + depth, (node.index << depth) + i}, m, false, false);
            }
            return;
        }
        if (levels == 4) leaves<false>(rows, first, node, m, false);
    }
    if (part != nullptr) forward_blocks(*part, first, upL_t{1} << levels);
}

void inverse_tree(const Rows& rows, const Part* part, const double* other, upL_t first, unsigned levels,
                  const Node& node, const Modulus& m) {
    const unsigned depth = levels > 0 ? step_levels(levels) : 0;
    const bool cold = part == nullptr;
    if (levels > 4) {
        const upL_t section = upL_t{1} << (levels - depth);
        for (upL_t i = 0; i < upL_t{1} << depth; i++) {
            inverse_tree(rows, part, other, first + i * section, levels - depth,
                         {node.twiddles, node.level + depth, (node.index << depth) + i}, m);
        }
    } else {
        if (part != nullptr) inverse_blocks(*part, other, first, upL_t{1} << levels);
        if (levels == 4) leaves<true>(rows, first, node, m, cold);
    }
    if (depth > 0) step<true>(rows, first, levels, depth, node, m, false, cold && levels < 4);
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
