// What the tests of sums share: the sum of a plan in buffers of exactly the promised sizes, and exact
// rationals of an independent library.
#pragma once

#include <gmp.h>
#include <gtest/gtest.h>

#include <vector>

#include "numbers/float_test_support.hpp"
#include "series/partial_series.hpp"

namespace znp::testing {

// A fraction p/q; q is positive.
struct Fraction {
    Integer p, q;
};

// -log2 of the relative difference of two fractions; infinite if they are equal.
inline double agreement(const Fraction& x, const Fraction& y) {
    const Integer a = x.p * y.q;
    const Integer b = y.p * x.q;
    return a.log2() - (a - b).log2();
}

// B_PSR with every buffer exactly as promised, guard words behind each.
class GuardedSum {
  public:
    GuardedSum(const zl_BSS& series, const PSRPlan& plan, u64_t threads, EventLog* log = nullptr,
               StatusLine* status = nullptr)
        : sizes(sum_sizes(series, plan, threads)), P_(sizes.P), Q_(sizes.Q), nodes_(sizes.nodes) {
        Work work(sizes.work_bytes);
        BasicParameters bp = work.bp();
        bp.tds = threads;
        B_PSR(bp, series, plan, P_.x, Q_.x, nodes_.data(), log, status);
    }

    const BigFloat<cdi>& P() const { return P_.x; }
    const BigFloat<cdi>& Q() const { return Q_.x; }
    Fraction fraction() const {
        const s64_t low = std::min(P().get_exp(), Q().get_exp());
        return {value(P(), low), value(Q(), low)};
    }

    const SumSizes sizes;

  private:
    BigIn<cdi> P_, Q_;
    GuardedWords<cdi> nodes_;
};

}  // namespace znp::testing
