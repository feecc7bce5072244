#include "compute/drivers/series_sum.hpp"

#include <algorithm>

#include "compute/drivers/shared_stages.hpp"
#include "compute/drivers/stage.hpp"
#include "compute/stages.hpp"

namespace znp {

namespace {

// A sum in the heap, Q below P.
struct SeriesSum {
    HeapFloat Q, P;
};

// Q has room for a product with a word.
constexpr upL_t Q_words(const SumSizes& sizes) {
    return sizes.Q + 1;
}

upL_t sum_bytes(const SumSizes& sizes) {
    return HeapFloat::bytes(Q_words(sizes)) + HeapFloat::bytes(sizes.P);
}

// Numbers of the closing formulas: p + 2 words, a word of a product or a sum on either end.
constexpr upL_t combined_words(upL_t p) {
    return p + extra_precision + 2;
}

SeriesSum sum_plan(RunTimeParameters& run, const zl_BSS& series, const PSRPlan& plan, StatusLine* status) {
    const SumSizes sizes = sum_sizes(series, plan, run.tds);
    SeriesSum sum;
    sum.Q = HeapFloat(run.heap, Q_words(sizes));
    sum.P = HeapFloat(run.heap, sizes.P);
    const auto nodes = make_guarded_array<cdi>(&run.heap, sizes.nodes);
    const auto work = make_guarded_array<std::byte>(&run.heap, sizes.work_bytes);
    B_PSR(run.arithmetic(work.get(), sizes.work_bytes), series, plan, sum.P, sum.Q, nodes.get(), &run.events,
          status);
    return sum;
}

// factor * x to p words in out, if there is anything to multiply; the product, or x itself.
Number times(HeapFloat& out, RunTimeParameters& run, const Number& x, cdi factor, upL_t p) {
    if (factor == 1) return x;
    out = HeapFloat(run.heap, combined_words(p));
    out.set_mul_uW(x.top_words(p), factor);
    return out;
}

// nQ Q + nP P or nQ Q - nP P.
HeapFloat combination(const SeriesSum& sum, RunTimeParameters& run, const SeriesQuotient& formula, upL_t p) {
    HeapFloat nQ, nP;
    const Number left = formula.nQ == 0 ? Number() : times(nQ, run, sum.Q, formula.nQ, p);
    const Number right = times(nP, run, sum.P, formula.nP, p);
    HeapFloat T(run.heap, combined_words(p));
    if (formula.subtract) {
        T.set_sub(left, right, p + extra_precision);
    } else {
        T.set_add(left, right, p + extra_precision);
    }
    return T;
}

constexpr bool is_P_alone(const SeriesQuotient& formula) {
    return formula.nQ == 0 && formula.nP == 1 && !formula.subtract;
}

// The numbers of the quotient in the places of Q and P.
void close_sum(SeriesSum& sum, RunTimeParameters& run, const SeriesQuotient& formula, upL_t p) {
    if (!is_P_alone(formula)) {
        run.events.add("Finishing Series");
        sum.P = combination(sum, run, formula, p);
        sum.P.settle();
    }
    if (formula.dQ != 1) {
        const Number top = sum.Q.top_words(p);
        sum.Q.set_view(top.get_T(), top.get_L(), top.get_exp(), top.raw_sign());
        sum.Q.mul_uW(formula.dQ);
    }
}

upL_t combination_bytes(const SeriesQuotient& formula, upL_t p) {
    const upL_t products = (formula.nQ > 1 ? 1u : 0u) + (formula.nP > 1 ? 1u : 0u);
    return is_P_alone(formula) ? 0 : (products + 1) * HeapFloat::bytes(combined_words(p));
}

}  // namespace

upL_t series_quotient_words(upL_t p) {
    return divide_words(p);
}

void series_quotient_B(HeapFloat& out, RunTimeParameters& run, const zl_BSS& series, const PSRPlan& plan,
                       const SeriesQuotient& formula, upL_t p) {
    SeriesSum sum;
    {
        Stage stage(run, "Summing Series...  ", "Summing Series");
        stage.print_terms(plan.back().b - plan.front().a);
        sum = sum_plan(run, series, plan, stage.start("Summing: "));
        close_sum(sum, run, formula, p);
        stage.finish();
    }
    if (formula.inverted) {
        divide_B(out, run, sum.Q, sum.P, p);
    } else {
        divide_B(out, run, sum.P, sum.Q, p);
    }
    sum.P.free();
    sum.Q.free();
    out.settle();
}

upL_t series_quotient_bytes(const zl_BSS& series, const PSRPlan& plan, const SeriesQuotient& formula, upL_t p,
                            u64_t threads) {
    const SumSizes sizes = sum_sizes(series, plan, threads);
    const upL_t sum = sum_bytes(sizes);
    const upL_t T = std::max(HeapFloat::bytes(sizes.P), HeapFloat::bytes(combined_words(p)));
    return std::max({sum + heap_words(sizes.nodes) + heap_bytes(sizes.work_bytes),
                     sum + combination_bytes(formula, p),
                     HeapFloat::bytes(Q_words(sizes)) + T + divide_bytes(p, threads)});
}

SeriesQuotient common_quotient(const zl_BSS& series, cdi a, cdi b) {
    return {a, 1, series.alternating, b};
}

void sum_series_B(HeapFloat& out, const zl_BSS& series, RunTimeParameters& run, cdi a, cdi b, s64_t c) {
    series_quotient_B(out, run, series, make_psr_plan(series, run.p, 1.0, 0, run.tds),
                      common_quotient(series, a, b), run.p);
    if (c < 0) out.negate();
    const u64_t factor = c < 0 ? u64_t{0} - static_cast<u64_t>(c) : static_cast<u64_t>(c);
    if (factor != 1) out.mul_uW(factor);
}

upL_t sum_series_bytes(const zl_BSS& series, cdi a, cdi b, upL_t p, u64_t threads) {
    return series_quotient_bytes(series, make_psr_plan(series, p, 1.0, 0, threads),
                                 common_quotient(series, a, b), p, threads);
}

}  // namespace znp
