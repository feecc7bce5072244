// zl_BSS: a hypergeometric series, as the binary splitting machinery sees it.
//
// A series knows its per-term formula and a few logarithmic size functions; how a range of terms is divided,
// merged, cut into sections and forked onto threads is the same for all (series/recursion.hpp,
// series/partial_series.hpp). A class of series (series/classes/) is a set of numbers that a range hands on,
// with their merge and their sum. A range is half-open, [a, b), in 64-bit term indices. A sum over a range is
// P/Q; R is what a range hands to the one on its right.
//
// Units: sizes in 64-bit words, logarithmic sizes in nats. Objects are immutable once built and shared by
// all threads. Nothing here allocates. Source: B. Haible, T. Papanikolaou, "Fast multiprecision evaluation
// of series of rational numbers", 1998.
#pragma once

#include "foundation/types.hpp"
#include "numbers/basic_int.hpp"
#include "numbers/exact_float.hpp"
#include "series/memory_plan.hpp"
#include "series/psr_plan.hpp"

namespace znp {

inline constexpr double nats_per_word = 44.3614195558365;      // 64 ln 2
inline constexpr double words_per_nat = 0.022542110013890053;  // 1 / (64 ln 2)
inline constexpr double digits_per_nat = 0.4342944819032518;   // 1 / ln 10

// ln(x!) by Stirling's formula; 0 for x up to 1.
double log_factorial(double x);

class zl_BSS {
  public:
    const bool alternating;       // the terms alternate in sign
    const u64_t memory_overhead;  // words added per level in the memory plan
    const u64_t end_threshold;    // ranges shorter than this go to the end routine

    zl_BSS(const zl_BSS&) = delete;
    zl_BSS& operator=(const zl_BSS&) = delete;
    virtual ~zl_BSS() = default;

    // Terms for so many words of precision, at least 2.
    virtual u64_t terms(upL_t words) const = 0;
    // ln of the size that Q(0, x) has grown to.
    virtual double size_at(double x) const = 0;
    // ln of the factor by which the terms shrink over [a, b).
    virtual double precision_of(u64_t a, u64_t b) const = 0;
    // Words of precision that are still needed of the terms from a on when the series ends at b. Only a
    // series that can be summed with truncated products (ASR) has it and says so; the others throw.
    virtual bool can_be_truncated() const { return false; }
    virtual upL_t PrecisionAtIndex(u64_t a, u64_t b) const;
    // What a range with a Q of L words takes (series/memory_plan.hpp).
    virtual MemoryPlan memory_plan(upL_t L, u64_t level, u64_t threads) const;
    // The sum by a plan, which the series' class makes, and what it takes (series/partial_series.hpp).
    virtual SumSizes sum_sizes(const PSRPlan& plan, u64_t threads) const = 0;
    virtual void sum(const SumTask& task) const = 0;

    // Where a range of more than 100 terms is divided: the smallest m that halves the size.
    u64_t split(u64_t a, u64_t b) const;
    // The middle up to 100 terms, split(a, b) above.
    u64_t divide(u64_t a, u64_t b) const;
    // The half [a, m) holds an odd number of terms, so that the one behind it begins with the other sign.
    bool subtracts(u64_t a, u64_t m) const { return alternating && ((a ^ m) & 1) != 0; }
    upL_t words_of(u64_t a, u64_t b) const;   // of Q(a, b)
    u64_t digits_of(u64_t a, u64_t b) const;  // the same in decimal digits

    // End of the section that starts at a: the smallest x in (a, b] at which what is needed of the tail, at
    // most target, no longer exceeds the section's own size. The asr form has a fixed size. Targets in nats.
    u64_t section_end(u64_t a, u64_t b, double target) const;
    u64_t section_end_asr(u64_t a, u64_t b, double target) const;

  protected:
    zl_BSS(bool alternating_, u64_t memory_overhead_, u64_t end_threshold_)
        : alternating(alternating_), memory_overhead(memory_overhead_), end_threshold(end_threshold_) {}
};

// Series with P, Q, R in a node (series/classes/type0.hpp).
class zl_BSS_P2B3_Type0 : public zl_BSS {
  public:
    // Fills P, Q, R of a range of 1 to end_threshold - 1 terms. t0 and t1 are scratch; all five objects have
    // the words that the memory plan gives a node below the threshold. An object that is too small throws
    // BufferTooSmallException at the location of the routine that noticed.
    virtual void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                         u64_t b) const = 0;
    SumSizes sum_sizes(const PSRPlan& plan, u64_t threads) const final;
    void sum(const SumTask& task) const final;

  protected:
    using zl_BSS::zl_BSS;
};

// Series whose terms are fractions of their own, P and Q in a node (series/classes/bbp.hpp).
class zl_BSS_P2B2_BBP : public zl_BSS {
  public:
    // The term k, which is the range [k - 1, k).
    virtual void BSR_End(ExactFloatR& P, ExactFloatR& Q, u64_t k) const = 0;
    SumSizes sum_sizes(const PSRPlan& plan, u64_t threads) const final;
    void sum(const SumTask& task) const final;

  protected:
    using zl_BSS::zl_BSS;
};

}  // namespace znp
