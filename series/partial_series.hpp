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

#include <vector>

#include "foundation/event_log.hpp"
#include "foundation/status_line.hpp"
#include "multiply/basic_parameters.hpp"
#include "numbers/big_float.hpp"
#include "series/bss.hpp"

namespace znp {

struct SectionRow {
    upL_t precision;       // words of precision of this section and everything to its right
    upL_t length;          // words of the section's Q
    upL_t next_precision;  // precision of the following row; 0 in the last row
    u64_t a, b;            // the section's terms
    bool asr;              // summed with truncated products
};

using PSRPlan = std::vector<SectionRow>;

// The sections for p words; ratio 1.0, or 0.5 for smaller sections. memory_limit in bytes, 0: none (only a
// series with PrecisionAtIndex can be summed under a limit).
PSRPlan make_psr_plan(const zl_BSS& series, upL_t p, double ratio, upL_t memory_limit = 0, u64_t threads = 1);

// One section for the terms [a, b): what a series that is summed without a partition uses.
PSRPlan make_single_section(const zl_BSS& series, u64_t a, u64_t b);

// The plan as a table on the console, a diagnostic: a row's number, precision, end and terms, whether its
// products are truncated, and the percentage of all terms that stand behind it.
void print_psr_plan(const PSRPlan& plan);

// What a sum by a plan takes.
struct SumSizes {
    upL_t P, Q;        // words of the results' buffers
    upL_t nodes;       // words of the scratch for the objects of the recursion
    upL_t work_bytes;  // of the work buffer
};

// series is one of the classes that B_PSR knows: Series_E_Taylor, zl_BSS_P2B2_BBP, zl_BSS_P2B3_Type0. Another
// throws.
SumSizes sum_sizes(const zl_BSS& series, const PSRPlan& plan, u64_t threads);

// P/Q is the sum over all terms of the plan, to the precision of its first row.
//
// The sign: the first term enters with plus. Where a series alternates, P/Q = t1 - t2 + t3 - ..., so that a
// closing formula whose own terms start with a further one of index 0 subtracts it: a Q - P.
//
// P and Q have at least the words of sum_sizes, nodes too (32-byte aligned), bp its work bytes (32-byte
// aligned) and the threads. The results start anywhere in their buffers. Failures of a check throw
// (series/modular_check.hpp). log and status may be null; behind its label the status line shows what is
// done, and the digits of the numbers just made.
void B_PSR(const BasicParameters& bp, const zl_BSS& series, const PSRPlan& plan, BigFloatR<cdi>& P,
           BigFloatR<cdi>& Q, cdi* nodes, EventLog* log, StatusLine* status);

}  // namespace znp
