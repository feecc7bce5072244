// The series A and B: their plan, and their sum by it.
#include "series/euler_gamma_ab.hpp"

#include "foundation/fail.hpp"
#include "series/classes/euler_gamma_ab.hpp"
#include "series/partial_sums.hpp"

namespace znp {

PSRPlan make_ab_plan(const Series_EulerGamma_BM_AB& series, upL_t p, double ratio) {
    PSRPlan plan = make_psr_plan(series, p, ratio);
    const u64_t end = plan.back().b;
    const auto precision_from = [&](u64_t a) {
        return static_cast<upL_t>(series.precision_of(a, end) * words_per_nat + 2);
    };
    for (SectionRow& row : plan) {
        if (row.a != 0) row.a &= ~u64_t{1};
        if (row.b != end) row.b &= ~u64_t{1};
    }
    std::erase_if(plan, [](const SectionRow& row) { return row.a == row.b; });
    for (SectionRow& row : plan) {
        row.precision = precision_from(row.a);
        row.length = series.words_of(row.a, row.b);
        row.next_precision = row.b == end ? 0 : precision_from(row.b);
    }
    return plan;
}

SumSizes Series_EulerGamma_BM_AB::sum_sizes(const PSRPlan& plan, u64_t threads) const {
    SumSizes sizes = PartialSums(*this, plan, threads).sizes();
    sizes.R = sizes.P;
    return sizes;
}

void Series_EulerGamma_BM_AB::sum(const SumTask& task) const {
    if (task.R == nullptr) {
        fail(zn_exception(error_code::unspecified, "B_PSR(): A series of this class has three results."));
    }
    PartialSums(*this, task.plan, task.bp.tds).sum(task);
}

ABSumSizes ab_sum_sizes(const Series_EulerGamma_BM_AB& series, const PSRPlan& plan, u64_t threads) {
    const SumSizes sizes = series.sum_sizes(plan, threads);
    return {sizes.P, sizes.nodes, sizes.work_bytes};
}

void B_PSR(const BasicParameters& bp, const Series_EulerGamma_BM_AB& series, const PSRPlan& plan,
           BigFloatR& T, BigFloatR& Q, BigFloatR& R, cdi* nodes, EventLog* log, StatusLine* status) {
    series.sum({bp, plan, T, Q, &R, nodes, log, status});
}

}  // namespace znp
