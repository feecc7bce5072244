#include "series/classes/bbp.hpp"

#include "series/partial_sums.hpp"

namespace znp {

static_assert(RecursionRules<BBPRules>);

BBPRules::Node BBPRules::behind(const Node& results) const {
    const upL_t offset = longest_of(results.P, results.Q);
    return {.P = rest_of(results.P, offset), .Q = rest_of(results.Q, offset), .t = results.t};
}

SumSizes zl_BSS_P2B2_BBP::sum_sizes(const PSRPlan& plan, u64_t threads) const {
    return PartialSums(*this, plan, threads).sizes();
}

void zl_BSS_P2B2_BBP::sum(const SumTask& task) const {
    PartialSums(*this, task.plan, task.bp.tds).sum(task);
}

}  // namespace znp
