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

// ---- One level and two, on vectors -----------------------------------------------------------------------

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

// Times 4. From inputs below B p: x[0] is reduced, the others are below (1/2 + (2 B + 1) / 32) p.
ZNP_INLINE Half4 join4_begin(double* x, upL_t step, const __m256d (&y)[4], const Factors4& f,
                             const Modulus& m) {
    const __m256d d = mul_mod(_mm256_sub_pd(y[2], y[3]), f.i, m);
    const __m256d u = _mm256_add_pd(y[0], y[1]);
    const __m256d e = _mm256_sub_pd(y[0], y[1]);
    const __m256d v = _mm256_add_pd(y[2], y[3]);
    const __m256d sum = _mm256_add_pd(u, v);
    _mm256_store_pd(x + 2 * step, mul_mod(_mm256_sub_pd(u, v), f.s, m));
    _mm256_store_pd(x, reduce_mod(sum, m));
    return {_mm256_add_pd(e, d), _mm256_sub_pd(e, d)};
}
ZNP_INLINE void join4_end(double* x, upL_t step, const Half4& half, const Factors4& f, const Modulus& m) {
    _mm256_store_pd(x + step, mul_mod(half.a, f.r, m));
    _mm256_store_pd(x + 3 * step, mul_mod(half.b, f.rs, m));
}

// ---- Rows -------------------------------------------------------------------------------------------------

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

// The rows that come next, brought to the second-level cache while these are worked on: a line with each
// vector of four rows, which is about what the memory gives. The processor sees no pattern in rows that stand
// so far apart.
class Fetch {
  public:
    ZNP_INLINE Fetch(const Rows& rows, unsigned levels)
        : row_(rows.next != nullptr ? rows.next : rows.data),
          stride_(rows.stride),
          left_(rows.next != nullptr ? upL_t{1} << levels : 0) {}

    ZNP_INLINE bool done() const { return left_ == 0; }
    // The next row, and when there is none left always the same.
    ZNP_INLINE const double* take() {
        const double* const row = row_;
        if (left_ > 0) {
            left_--;
            row_ += stride_;
        }
        return row;
    }

  private:
    const double* row_;
    upL_t stride_, left_;
};

// What a walk through the tree takes along.
struct Walk {
    Rows rows;
    Modulus m;
    Fetch fetch;

    ZNP_INLINE Walk(const Rows& r, unsigned levels)
        : rows(r), m(make_modulus(r.prime->p, r.prime->inverse)), fetch(r, levels) {}
};

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
template <bool inverse, bool reduce, bool fetching, class FactorsOf>
ZNP_INLINE void sweep4(const Groups& w, const FactorsOf& factors, Modulus m, Fetch& fetch) {
    constexpr bool same = FactorsOf::same;
    const upL_t step = w.step;
    const auto begin = [step, m](double* x, const Factors4& f) {
        if constexpr (inverse) {
            const __m256d v[4] = {_mm256_load_pd(x), _mm256_load_pd(x + step), _mm256_load_pd(x + 2 * step),
                                  _mm256_load_pd(x + 3 * step)};
            return join4_begin(x, step, v, f, m);
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
    double* x = w.data;
    Factors4 f = factors(0);
    Half4 half = begin(x, f);
    for (upL_t g = 1;; g++) {
        Factors4 following = f;
        if constexpr (!same) following = factors(g < w.groups ? g : 0);
        const double *near = nullptr, *far = nullptr;
        if constexpr (fetching) {
            near = fetch.take();
            far = fetch.take();
        }
        for (double* const last = x + 4 * (w.count - 1); x != last; x += 4) {
            if constexpr (fetching) {
                _mm_prefetch(near, _MM_HINT_T1);
                const double* const next = near + 8;
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
    }
    end(x, half, f);
}

// Two levels at a node, on 4 quarters of rows.
template <bool inverse>
void node4(const Groups& w, const Node& node, Walk& walk, bool reduce) {
    const NodeFactors f{make_factors4(node.at(0), node.at(1), _mm256_broadcast_sd(node.twiddles), walk.m)};
    if (!inverse && reduce) {
        sweep4<inverse, true, true>(w, f, walk.m, walk.fetch);
    } else if (walk.fetch.done()) {
        sweep4<inverse, false, false>(w, f, walk.m, walk.fetch);
    } else {
        sweep4<inverse, false, true>(w, f, walk.m, walk.fetch);
    }
}

// Two levels at each of several nodes, on 4 rows.
template <bool inverse>
void nodes4(const Groups& w, const Node& node, Walk& walk) {
    const NodesFactors f{node.at(0), node.at(1), _mm256_broadcast_sd(node.twiddles), walk.m};
    if (walk.fetch.done()) {
        sweep4<inverse, false, false>(w, f, walk.m, walk.fetch);
    } else {
        sweep4<inverse, false, true>(w, f, walk.m, walk.fetch);
    }
}

// One level on 2 rows, four vectors at a time; count is a multiple of 4. fetched: a row, if fetching.
template <bool inverse, bool reduce, bool fetching>
ZNP_INLINE void rows2(double* x, upL_t step, upL_t count, const double* fetched, Factor f, Modulus m) {
    for (double* const end = x + 4 * count; x != end; x += 16) {
        if constexpr (fetching) {
            _mm_prefetch(fetched, _MM_HINT_T1);
            _mm_prefetch(fetched + 8, _MM_HINT_T1);
            fetched += 16;
        }
        for (unsigned i = 0; i < 16; i += 4) {
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
        rows2<inverse, true, false>(row, step, count, nullptr, f, m);
    } else {
        rows2<inverse, false, false>(row, step, count, nullptr, f, m);
    }
}

// Two levels and one on 8 rows, which stay in the first-level cache meanwhile.
template <bool inverse>
void step8(double* row, upL_t step, upL_t count, const Node& node, Walk& walk, bool reduce) {
    const Groups pair{row, 2 * step, count, 2, step};
    if constexpr (!inverse) node4<false>(pair, node, walk, reduce);
    for (unsigned i = 0; i < 4; i++) {
        const Factor f = node.factor(2, i, walk.m);
        double* const x = row + 2 * i * step;
        if (i % 2 == 0 && !walk.fetch.done()) {
            rows2<inverse, false, true>(x, step, count, walk.fetch.take(), f, walk.m);
        } else {
            rows2<inverse, false, false>(x, step, count, nullptr, f, walk.m);
        }
    }
    if constexpr (inverse) node4<true>(pair, node, walk, false);
}

// The top of the tree of X^N - 1, where all twiddles are 1 but that of the second child.
ZNP_INLINE void split_root(Walk& walk, upL_t quarter, bool half) {
    const Rows& rows = walk.rows;
    const Modulus m = walk.m;
    const Factor i = make_factor(_mm256_broadcast_sd(rows.twiddles), m);
    const upL_t step = quarter * rows.stride;
    for (upL_t r = 0; r < quarter; r++) {
        double* x = rows.data + r * rows.stride;
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

// The first levels of a subtree, or its last ones.
template <bool inverse>
void step(Walk& walk, upL_t first, unsigned levels, unsigned depth, const Node& node, bool reduce) {
    const Rows& rows = walk.rows;
    const upL_t quarter = upL_t{1} << (levels - depth);
    double* const row = rows.data + first * rows.stride;
    const upL_t distance = quarter * rows.stride;
    if (depth == 2) {
        node4<inverse>({row, distance, rows.count, quarter, rows.stride}, node, walk, reduce);
    } else if (depth == 3) {
        step8<inverse>(row, distance, rows.count, node, walk, reduce);
    } else {
        step2<inverse>(row, distance, rows.count, node, walk.m, reduce);
    }
}

// Two levels at 4 nodes, on 16 rows.
template <bool inverse>
void leaves(Walk& walk, upL_t first, const Node& node) {
    const Rows& rows = walk.rows;
    nodes4<inverse>({rows.data + first * rows.stride, rows.stride, rows.count, 4, 4 * rows.stride},
                    {node.twiddles, node.level + 2, node.index << 2}, walk);
}

// The subtree of `levels` levels at the node, on the rows from `first` on. A part's leaves go on in the
// blocks.
void forward_tree(Walk& walk, const Part* part, upL_t first, unsigned levels, const Node& node, bool reduce) {
    if (levels > 0) {
        const unsigned depth = step_levels(levels);
        step<false>(walk, first, levels, depth, node, reduce);
        if (levels > 4) {
            const upL_t section = upL_t{1} << (levels - depth);
            for (upL_t i = 0; i < upL_t{1} << depth; i++) {
                forward_tree(walk, part, first + i * section, levels - depth,
                             {node.twiddles, node.level + depth, (node.index << depth) + i}, false);
            }
            return;
        }
        if (levels == 4) leaves<false>(walk, first, node);
    }
    if (part != nullptr) forward_blocks(*part, first, upL_t{1} << levels);
}

void inverse_tree(Walk& walk, const Part* part, const double* other, upL_t first, unsigned levels,
                  const Node& node) {
    const unsigned depth = levels > 0 ? step_levels(levels) : 0;
    if (levels > 4) {
        const upL_t section = upL_t{1} << (levels - depth);
        for (upL_t i = 0; i < upL_t{1} << depth; i++) {
            inverse_tree(walk, part, other, first + i * section, levels - depth,
                         {node.twiddles, node.level + depth, (node.index << depth) + i});
        }
    } else {
        if (part != nullptr) inverse_blocks(*part, other, first, upL_t{1} << levels);
        if (levels == 4) leaves<true>(walk, first, node);
    }
    if (depth > 0) step<true>(walk, first, levels, depth, node, false);
}

Rows part_rows(const Part& part, Direction direction) {
    return {part.data,  part.stride, block_lanes(part.b), part.twiddles.twiddles[direction],
            part.prime, part.next};
}

}  // namespace

void forward_levels(const Rows& rows, unsigned levels, Top top) {
    [[maybe_unused]] const upL_t count = upL_t{1} << levels;
    assert(rows_bounded(rows, 0, top == Top::half_root ? count / 2 : count,
                        top == Top::large ? large_bound : any_bound));
    Walk walk(rows, levels);
    if (top == Top::any || top == Top::large) {
        forward_tree(walk, nullptr, 0, levels, {rows.twiddles, 0, 0}, top == Top::large);
    } else {
        const upL_t quarter = upL_t{1} << (levels - 2);
        split_root(walk, quarter, top == Top::half_root);
        for (upL_t i = 0; i < 4 && levels > 2; i++)
            forward_tree(walk, nullptr, i * quarter, levels - 2, {rows.twiddles, 2, i}, false);
    }
    assert(rows_bounded(rows, 0, count, forward_bound));
}

void inverse_levels(const Rows& rows, unsigned levels) {
    assert(rows_bounded(rows, 0, upL_t{1} << levels, inverse_bound));
    Walk walk(rows, levels);
    inverse_tree(walk, nullptr, nullptr, 0, levels, {rows.twiddles, 0, 0});
    assert(rows_bounded(rows, 0, upL_t{1} << levels, inverse_bound));
}

void inverse_levels_root(const Rows& rows, unsigned levels, double scale) {
    const upL_t quarter = upL_t{1} << (levels - 2);
    assert(rows_bounded(rows, 0, 4 * quarter, inverse_bound));
    Walk walk(rows, levels);
    for (upL_t i = 0; i < 4 && levels > 2; i++)
        inverse_tree(walk, nullptr, nullptr, i * quarter, levels - 2, {rows.twiddles, 2, i});
    join_root(rows, quarter, scale, walk.m);
    assert(rows_bounded(rows, 0, 4 * quarter, result_bound));
}

void forward_part(const Part& part) {
    const Rows rows = part_rows(part, forward_direction);
    Walk walk(rows, part.levels);
    forward_tree(walk, &part, 0, part.levels, {rows.twiddles, 0, 0}, true);
}

void inverse_part(const Part& part, const double* other) {
    Rows rows = part_rows(part, inverse_direction);
    rows.next = nullptr;  // the forward step has brought it
    Walk walk(rows, part.levels);
    inverse_tree(walk, &part, other, 0, part.levels, {rows.twiddles, 0, 0});
}

}  // namespace znp::vst
