#include "series/classes/type0.hpp"

#include "series/partial_sums.hpp"

namespace znp {

static_assert(RecursionRules<Type0Rules> && RecursionRules<TruncatedType0Rules>);

namespace {

// The results of a short range, made in the places of the node's.
template <class Node>
void end_by_integers(const zl_BSS_P2B3_Type0& series, Node& node, BasicIntR& t0, BasicIntR& t1, u64_t a,
                     u64_t b) {
    BasicIntR P = end_object(node.P), Q = end_object(node.Q), R = end_object(node.R);
    series.BSR_End(P, Q, R, t0, t1, a, b);
    adopt(node.P, P);
    adopt(node.Q, Q);
    adopt(node.R, R);
}

}  // namespace

// ---- Exact sections

void Type0Rules::end(Node& node, u64_t a, u64_t b) const {
    const upL_t half = half_buffer_words(node.t.get_size());
    BasicIntR t0(node.t.get_base(), half);
    BasicIntR t1(node.t.get_base() + half, half);
    end_by_integers(series, node, t0, t1, a, b);
}

Type0Rules::Node Type0Rules::behind(const Node& results) const {
    const upL_t offset = longest_of(results.P, results.Q, results.R);
    return {.P = rest_of(results.P, offset),
            .Q = rest_of(results.Q, offset),
            .R = rest_of(results.R, offset),
            .t = results.t};
}

void Type0Rules::check(const SumTask& task, const SectionRow& row, const Node& node) const {
    if (!with_R) return check2(task.log, row.a, row.b, node.P, node.Q, task.bp.tds);
    check3(task.log, row.a, row.b, node.P, node.Q, node.R, task.bp.tds);
}

// ---- Sections with truncated products

void TruncatedType0Rules::end(Node& node, u64_t a, u64_t b) const {
    BasicIntR t0 = end_object(node.product), t1 = end_object(node.t);
    end_by_integers(series, node, t0, t1, a, b);
}

TruncatedType0Rules::Node TruncatedType0Rules::behind(const Node& results) const {
    const upL_t offset = longest_of(results.P, results.Q, results.R);
    return {.P = rest_of(results.P, offset),
            .Q = rest_of(results.Q, offset),
            .R = rest_of(results.R, offset),
            .product = as_buffer(results.product),
            .t = as_buffer(results.t)};
}

// ---- The class

SumSizes zl_BSS_P2B3_Type0::sum_sizes(const PSRPlan& plan, u64_t threads) const {
    return PartialSums(*this, plan, threads).sizes();
}

void zl_BSS_P2B3_Type0::sum(const SumTask& task) const {
    PartialSums(*this, task.plan, task.bp.tds).sum(task);
}

}  // namespace znp
