// The series A and B of the Brent-McMillan formula for Euler's constant, summed together.
//
//     B = sum over k from 0 of (n^k / k!)^2,  A = sum of H_k (n^k / k!)^2,  n = 2^m,  H_k = 1 + 1/2 + ... +
//     1/k
//
// and A/B - m ln 2 is the constant, but for about e^(-4n). A range holds four numbers U, V, W, X: U/V is its
// harmonic sum, W/V^2 its part of B, and X/V^3 its part of A. Over all terms from 1 on, W/V^2 is B - 1 and
// X/V^3 is A, so that A/B = X / (V (V^2 + W)).
//
// Source: R. P. Brent, E. M. McMillan, "Some new algorithms for high-precision computation of Euler's
// constant", 1980.
#pragma once

#include "foundation/event_log.hpp"
#include "foundation/status_line.hpp"
#include "multiply/basic_parameters.hpp"
#include "numbers/big_float.hpp"
#include "series/bss.hpp"
#include "series/partial_series.hpp"

namespace znp {

class Series_EulerGamma_BM_AB : public zl_BSS {
  public:
    explicit Series_EulerGamma_BM_AB(u32_t m_);  // up to 62, or a fatal error
    const u32_t m;

    // Sizes are those of X, the longest of the four.
    u64_t terms(upL_t words) const override;
    double size_at(double x) const override;
    double precision_of(u64_t a, u64_t b) const override;

    // Where a range of three or more terms is divided: as in the other series, but at an even index, so that
    // two neighbouring terms come from one formula.
    u64_t divide_even(u64_t a, u64_t b) const;

    // A range of one or two terms. The objects have the words of end_words at least.
    static constexpr upL_t end_words[4] = {1, 2, 3, 4};
    virtual void BSR_End(ExactFloatR& U, ExactFloatR& V, ExactFloatR& W, ExactFloatR& X, u64_t a,
                         u64_t b) const;

    SumSizes sum_sizes(const PSRPlan& plan, u64_t threads) const override;
    void sum(const SumTask& task) const override;

  private:
    double magnitude(double x) const;  // ln(n^x / x!)
};

// The sections for p words, which begin at even indices (otherwise as in make_psr_plan).
PSRPlan make_ab_plan(const Series_EulerGamma_BM_AB& series, upL_t p, double ratio);

struct ABSumSizes {
    upL_t results;     // words of the buffers of T, Q and R, each
    upL_t nodes;       // words of the scratch for the objects of the recursion
    upL_t work_bytes;  // of the work buffer
};
ABSumSizes ab_sum_sizes(const Series_EulerGamma_BM_AB& series, const PSRPlan& plan, u64_t threads);

// T = X, Q = V and R = W over all terms of the plan, to the precision of its first row: with S = Q^2, R/S is
// B - 1 and T/(Q S) is A. Buffers, failures, log and status are as in B_PSR of series/partial_series.hpp.
void B_PSR(const BasicParameters& bp, const Series_EulerGamma_BM_AB& series, const PSRPlan& plan,
           BigFloatR& T, BigFloatR& Q, BigFloatR& R, cdi* nodes, EventLog* log, StatusLine* status);

}  // namespace znp
