#include "series/classes/taylor.hpp"

#include "series/partial_sums.hpp"

namespace znp {

static_assert(RecursionRules<TaylorRules>);

void TaylorRules::end(Node& node, u64_t a, u64_t b) const {
    BasicIntR P = end_object(node.P);
    BasicIntR Q = end_object(node.Q);
    series.BSR_End(P, Q, a, b);
    adopt(node.P, P);
    adopt(node.Q, Q);
}

TaylorRules::Node TaylorRules::behind(const Node& results) const {
    const upL_t offset = longest_of(results.P, results.Q);
    Node right{.P = results.t, .Q = rest_of(results.Q, offset), .t = rest_of(results.P, offset)};
    right.P.reset_T();
    return right;
}

SumSizes Series_E_Taylor::sum_sizes(const PSRPlan& plan, u64_t threads) const {
    return PartialSums(*this, plan, threads).sizes();
}

void Series_E_Taylor::sum(const SumTask& task) const {
    PartialSums(*this, task.plan, task.bp.tds).sum(task);
}

}  // namespace znp
