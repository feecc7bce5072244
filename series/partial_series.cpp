#include "series/partial_series.hpp"

namespace znp {

SumSizes sum_sizes(const zl_BSS& series, const PSRPlan& plan, u64_t threads) {
    return series.sum_sizes(plan, threads);
}

void B_PSR(const BasicParameters& bp, const zl_BSS& series, const PSRPlan& plan, BigFloatR& P, BigFloatR& Q,
           cdi* nodes, EventLog* log, StatusLine* status) {
    series.sum({bp, plan, P, Q, nullptr, nodes, log, status});
}

}  // namespace znp
