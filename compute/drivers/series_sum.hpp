// The common summation: a series to P/Q, and the quotient that its constant is made of.
//
// All constants of the form c (a Q + P) / (b Q), and those next to it, take the same road: the sum, the
// combination of P and Q by products with words, one division. Precisions p in words.
#pragma once

#include "compute/drivers/heap_float.hpp"
#include "compute/run_time_parameters.hpp"
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

// The stages "Summing Series..." and "Division...". out has room for a product with a word and the carry of a
// sum. Failed checks of the series are exceptions.
void series_quotient_B(HeapFloat& out, RunTimeParameters& run, const zl_BSS& series, const PSRPlan& plan,
                       const SeriesQuotient& formula, upL_t p);
// Bytes of the heap, at the peak of the two stages; of what is left,
// HeapFloat::bytes(series_quotient_words(p)).
upL_t series_quotient_bytes(const zl_BSS& series, const PSRPlan& plan, const SeriesQuotient& formula, upL_t p,
                            u64_t threads);
upL_t series_quotient_words(upL_t p);

// (a Q + P) / (b Q), P counted negative where the series alternates.
SeriesQuotient common_quotient(const zl_BSS& series, cdi a, cdi b);

// c (a Q + P) / (b Q), P counted negative where the series alternates, over all terms for run.p words. a and
// b at least 1, c not 0.
void sum_series_B(HeapFloat& out, const zl_BSS& series, RunTimeParameters& run, cdi a, cdi b, s64_t c);
upL_t sum_series_bytes(const zl_BSS& series, cdi a, cdi b, upL_t p, u64_t threads);

}  // namespace znp
