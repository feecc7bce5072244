#include "compute/engine/series_stage.hpp"

#include "compute/engine/newton_stages.hpp"

namespace znp {

namespace {

// factor * x to p words in out, if there is anything to multiply; the product, or x itself.
BigFloat times(HeapFloat& out, const BigFloat& x, cdi factor, upL_t p) {
    if (factor == 0) return {};
    if (factor == 1) return x;
    out.set_mul_uW(x.top_words(p), factor);
    return out;
}

// nQ Q + nP P or nQ Q - nP P.
HeapFloat combination(StageMemory& memory, const SeriesSum& sum, const SeriesQuotient& formula, upL_t p) {
    const upL_t words = number_words(memory.room(p));
    HeapFloat nQ, nP;
    if (formula.nQ > 1) nQ = memory.number(words);
    if (formula.nP > 1) nP = memory.number(words);
    HeapFloat T = memory.number(words);
    memory.carry_out([&](RunTimeParameters&) {
        const BigFloat left = times(nQ, sum.Q, formula.nQ, p);
        const BigFloat right = times(nP, sum.P, formula.nP, p);
        if (formula.subtract) {
            T.set_sub(left, right, p + extra_precision);
        } else {
            T.set_add(left, right, p + extra_precision);
        }
    });
    return T;
}

// The numbers of the quotient in the places of Q and P.
void close_sum(StageMemory& memory, SeriesSum& sum, const SeriesQuotient& formula, upL_t p) {
    const bool is_P_alone = formula.nQ == 0 && formula.nP == 1 && !formula.subtract;
    if (!is_P_alone) {
        memory.carry_out([](RunTimeParameters& run) { run.events.add("Finishing Series"); });
        sum.P = combination(memory, sum, formula, p);
        sum.P.settle();
    }
    if (formula.dQ != 1) {
        memory.carry_out([&](RunTimeParameters&) {
            sum.Q.set_view(sum.Q.top_words(p));
            sum.Q.mul_uW(formula.dQ);
        });
    }
}

}  // namespace

SeriesQuotient common_quotient(const zl_BSS& series, cdi a, cdi b) {
    return {a, 1, series.alternating, b};
}

SeriesSum sum_plan_B(StageMemory& memory, StageLines& lines, const zl_BSS& series, const PSRPlan& plan) {
    lines.print_terms(plan.back().b - plan.front().a);
    lines.start("Summing: ");
    const SumSizes sizes = sum_sizes(series, plan, memory.threads());
    SeriesSum sum;
    sum.Q = memory.number(sizes.Q + 1);
    sum.P = memory.number(sizes.P);
    const auto nodes = memory.array<cdi>(sizes.nodes);
    const auto work = memory.work(sizes.work_bytes);
    memory.carry_out([&](RunTimeParameters& run) {
        B_PSR(run.arithmetic(work.get(), work.size), series, plan, sum.P, sum.Q, nodes.get(), &run.events,
              lines.status());
    });
    return sum;
}

HeapFloat series_quotient_B(StageMemory& memory, const zl_BSS& series, const PSRPlan& plan,
                            const SeriesQuotient& formula, upL_t p) {
    SeriesSum sum;
    {
        StageLines lines(memory, "Summing Series...  ", "Summing Series");
        sum = sum_plan_B(memory, lines, series, plan);
        close_sum(memory, sum, formula, p);
        lines.finish();
    }
    HeapFloat out = formula.inverted ? divide_B(memory, sum.Q, sum.P, p) : divide_B(memory, sum.P, sum.Q, p);
    sum.P.free();
    sum.Q.free();
    out.settle();
    return out;
}

HeapFloat sum_series_B(StageMemory& memory, const zl_BSS& series, cdi a, cdi b, s64_t c) {
    const upL_t p = memory.settings().p;
    HeapFloat out = series_quotient_B(memory, series, make_psr_plan(series, p, 1.0, 0, memory.threads()),
                                      common_quotient(series, a, b), p);
    if (c < 0) out.negate();
    const u64_t factor = c < 0 ? u64_t{0} - static_cast<u64_t>(c) : static_cast<u64_t>(c);
    memory.carry_out([&](RunTimeParameters&) {
        if (factor != 1) out.mul_uW(factor);
    });
    return out;
}

}  // namespace znp
