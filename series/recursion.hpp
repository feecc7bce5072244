// The recursion over a range of terms: halves, merge, and the fork to threads.
//
// A range [a, b) is divided where its size halves, each half is summed, and the two results are merged; short
// ranges go to an end routine. Which numbers a node holds, its end routine and its merge are the rules of the
// series' class, a type with the operations of RecursionRules below.
//
// A node's objects are floats in buffers of the caller, all in the sizes of series/memory_plan.hpp for the
// range; one object may be longer than another. Results end up at the start of their buffers or just above
// it (low zero words drop out). The work buffer is bp's; bp.tds is the count of threads that a merge may use.
// Nothing allocates but the records of the threads.
//
// Threads: the tasks of a fork share read-only rules only. A node of at least fork_min_terms terms that may
// use two threads or more halves its buffers and its work buffer for its two halves, which run at the same
// time; the merge then has the whole of them. A failure on another thread arrives at the join, whole.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>

#include "foundation/threads.hpp"
#include "foundation/types.hpp"
#include "multiply/basic_parameters.hpp"
#include "series/bss.hpp"
#include "series/recursion_progress.hpp"

namespace znp {

inline constexpr u64_t fork_min_terms = 1000;

// What is summed, and how. Rules are small values.
//   Node          the objects of a node by their names, ExactFloatR or BigFloatR: results and temporaries.
//                 Node::all(node) is the array of pointers to them, node.shown() the one that progress tells
//   series        the series
//   ends          whether the range goes to end(), which fills the node's results
//   divide        where it is divided, strictly inside
//   behind        the objects of the right half, once the left half has left its results in the node: what
//                 remains of their buffers. The right half's results may be told to lie in a temporary and
//                 the other way round.
//   merge         out = left and right; out's buffers start where left's do, and reach over right's. With
//                 subtract the right half enters with a minus sign.
// and, where a class has them:
//   left, right   the rules of the two halves, if they are not the whole's
//   right_half    what behind() does, for the upper halves of the buffers of a node that forks: swaps roles
template <class R>
concept RecursionRules = requires(const R& rules, const BasicParameters& bp, typename R::Node& node,
                                  const typename R::Node& results, u64_t a) {
    { rules.series } -> std::convertible_to<const zl_BSS&>;
    { rules.ends(a, a) } -> std::same_as<bool>;
    { rules.divide(a, a) } -> std::same_as<u64_t>;
    rules.end(node, a, a);
    { rules.behind(results) } -> std::same_as<typename R::Node>;
    rules.merge(bp, node, results, results, true);
    R::Node::all(node);
    node.shown();
};

template <RecursionRules R>
R left_rules(const R& rules, u64_t m) {
    if constexpr (requires { rules.left(m); }) {
        return rules.left(m);
    } else {
        return rules;
    }
}

template <RecursionRules R>
R right_rules(const R& rules, u64_t m) {
    if constexpr (requires { rules.right(m); }) {
        return rules.right(m);
    } else {
        return rules;
    }
}

// The part of a node's time that its merge takes, for the progress only.
inline constexpr double merge_share = 0.1;

// Of a number that a merge has made, for the progress.
constexpr u64_t digits_of(upL_t words) {
    return static_cast<u64_t>(static_cast<double>(words) * WordTraits<cdi>::decimal_digits + 1);
}

// The halves one after the other by sum_half(rules, node, a, b, progress), then the merge.
template <RecursionRules R, class SumHalf>
void sum_in_place(const BasicParameters& bp, const R& rules, typename R::Node& node, u64_t a, u64_t b,
                  const RecursionProgress& progress, SumHalf sum_half) {
    using Node = typename R::Node;
    const u64_t m = rules.divide(a, b);
    sum_half(left_rules(rules, m), node, a, m, progress.part(0, (1 - merge_share) / 2));
    const Node left = node;
    Node right = rules.behind(left);
    sum_half(right_rules(rules, m), right, m, b, progress.part((1 - merge_share) / 2, 1 - merge_share));
    rules.merge(bp, node, left, right, rules.series.subtracts(a, m));
}

// On this thread alone, but for the merges.
template <RecursionRules R>
void sum_serial(const BasicParameters& bp, const R& rules, typename R::Node& node, u64_t a, u64_t b,
                const RecursionProgress& progress) {
    if (rules.ends(a, b)) {
        rules.end(node, a, b);
        return;
    }
    sum_in_place(bp, rules, node, a, b, progress,
                 [&bp](const R& half, typename R::Node& part, u64_t from, u64_t to,
                       const RecursionProgress& share) { sum_serial(bp, half, part, from, to, share); });
    if (progress && b - a >= fork_min_terms) progress.done(digits_of(node.shown().get_L()));
}

// The lower and the upper half of a buffer; the split keeps the alignment of four words and of 32 bytes.
constexpr upL_t half_buffer_words(upL_t words) {
    return (words >> 1) & ~upL_t{3};
}
constexpr upL_t half_buffer_bytes(upL_t bytes) {
    return (bytes >> 6) << 5;
}

// By up to `threads` tasks.
template <RecursionRules R>
void sum_forked(const BasicParameters& bp, const R& rules, typename R::Node& node, u64_t a, u64_t b,
                u64_t threads, const RecursionProgress& progress) {
    using Node = typename R::Node;
    BasicParameters own = bp;
    own.tds = std::max<u64_t>(1, std::min(bp.tds, threads));
    if (threads < 2 || b - a < fork_min_terms) return sum_serial(own, rules, node, a, b, progress);

    const u64_t m = rules.divide(a, b);
    Node left = node;
    Node right = node;
    const auto whole = Node::all(node), lower = Node::all(left), upper = Node::all(right);
    for (upL_t i = 0; i < whole.size(); i++) {
        const upL_t half = half_buffer_words(whole[i]->get_size());
        lower[i]->set_base(whole[i]->get_base(), half);
        upper[i]->set_base(whole[i]->get_base() + half, half);
    }
    if constexpr (requires { rules.right_half(right); }) rules.right_half(right);
    const upL_t bytes = half_buffer_bytes(bp.ML);
    const BasicParameters left_bp{bp.holder, bp.M, bytes, bp.tds};
    const BasicParameters right_bp{bp.holder, bp.M + bytes, bytes, bp.tds};

    auto sum_right = make_task([&](u64_t) {
        sum_forked(right_bp, right_rules(rules, m), right, m, b, threads >> 1, RecursionProgress());
    });
    auto sum_left = make_task([&](u64_t) {
        sum_forked(left_bp, left_rules(rules, m), left, a, m, threads - (threads >> 1),
                   progress.part(0, 1 - merge_share));
    });
    fork_two(sum_right, sum_left);
    rules.merge(own, node, left, right, rules.series.subtracts(a, m));
    if (progress) progress.done(digits_of(node.shown().get_L()));
}

// Tasks of a range on so many threads: twice as many, so that uneven halves even out.
constexpr u64_t range_tasks(u64_t threads) {
    return threads < 2 ? threads : 2 * threads;
}

// From the top: `level` levels of halves one after the other on all of bp's threads, then forks into
// range_tasks.
template <RecursionRules R>
void sum_range(const BasicParameters& bp, const R& rules, typename R::Node& node, u64_t a, u64_t b,
               u64_t level, const RecursionProgress& progress) {
    if (progress) progress.begin(rules.series.digits_of(a, b));
    if (level == 0 || b - a < fork_min_terms) {
        return sum_forked(bp, rules, node, a, b, range_tasks(bp.tds), progress);
    }
    sum_in_place(bp, rules, node, a, b, progress,
                 [&bp, level](const R& half, typename R::Node& part, u64_t from, u64_t to,
                              const RecursionProgress& share) {
                     sum_range(bp, half, part, from, to, level - 1, share);
                 });
    if (progress) progress.done(digits_of(node.shown().get_L()));
}

}  // namespace znp
