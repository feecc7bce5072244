// The sum of a series in memory: the plan of sections, what it needs, and the summation by it.
//
// A long series is cut into sections. Each section is summed exactly (series/recursion.hpp) and verified by
// its residues; the sections are merged from the last to the first into an accumulator that is truncated to
// the precision which the sections on its left leave it. So the memory of a sum is bounded, and most of the
// small late sections cost little.
//
// Words are 64-bit. Nothing allocates: the caller gives all memory, in the sizes of sum_sizes, which are a
// promise and hold exactly.
#pragma once

#include "series/bss.hpp"
#include "series/psr_plan.hpp"

namespace znp {

SumSizes sum_sizes(const zl_BSS& series, const PSRPlan& plan, u64_t threads);

// P/Q is the sum over all terms of the plan, to the precision of its first row.
//
// The sign: the first term enters with plus. Where a series alternates, P/Q = t1 - t2 + t3 - ..., so that a
// closing formula whose own terms start with a further one of index 0 subtracts it: a Q - P.
//
// P and Q have at least the words of sum_sizes, nodes too (32-byte aligned), bp its work bytes (32-byte
// aligned) and the threads. The results start anywhere in their buffers. Failures of a check throw
// (series/modular_check.hpp). log and status may be null; behind its label the status line shows what is
// done, and the digits of the numbers just made. What else fails inside a section leaves its range in the
// log.
//
// A class with three results has a form of its own (series/euler_gamma_ab.hpp); here it throws.
void B_PSR(const BasicParameters& bp, const zl_BSS& series, const PSRPlan& plan, BigFloatR& P, BigFloatR& Q,
           cdi* nodes, EventLog* log, StatusLine* status);

}  // namespace znp
