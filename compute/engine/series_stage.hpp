// The stage of a series: its sum P/Q, and the quotient that its constant is made of.
//
// All constants of the form c (a Q + P) / (b Q), and those next to it, take the same road: the sum, the
// combination of P and Q by products with words, one division. Precisions p in words.
#pragma once

#include "compute/engine/stage_lines.hpp"
#include "series/partial_series.hpp"

namespace znp {

// T / D, or D / T where it is inverted, with T = nQ Q + nP P, or nQ Q - nP P, and D = dQ Q. P/Q is the sum of
// the series with its first term counted positive, whether it alternates or not.
struct SeriesQuotient {
    cdi nQ;
    cdi nP;  // not 0
    bool subtract;
    cdi dQ;  // not 0
    bool inverted = false;
};

// (a Q + P) / (b Q), P counted negative where the series alternates.
SeriesQuotient common_quotient(const zl_BSS& series, cdi a, cdi b);

// A sum, Q below P in the heap; Q has room for a product with a word.
struct SeriesSum {
    HeapFloat Q, P;
};

// All sections of the plan, with their lines. Failed checks of the series are exceptions.
SeriesSum sum_plan_B(StageMemory& memory, StageLines& lines, const zl_BSS& series, const PSRPlan& plan);

// The stages "Summing Series..." and "Division...". The result has divide_words.
HeapFloat series_quotient_B(StageMemory& memory, const zl_BSS& series, const PSRPlan& plan,
                            const SeriesQuotient& formula, upL_t p);

// c (a Q + P) / (b Q), P counted negative where the series alternates, over all terms for the run's
// precision. a and b at least 1, c not 0.
HeapFloat sum_series_B(StageMemory& memory, const zl_BSS& series, cdi a, cdi b, s64_t c);

}  // namespace znp
