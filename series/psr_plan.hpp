// The plan of sections, by which a long series is summed, and what a sum by it takes and gets.
//
// Words are 64-bit.
#pragma once

#include <vector>

#include "foundation/event_log.hpp"
#include "foundation/status_line.hpp"
#include "multiply/basic_parameters.hpp"
#include "numbers/big_float.hpp"

namespace znp {

class zl_BSS;

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
    upL_t R = 0;       // words of the third result's buffer, where the class has one
};

// A sum to be made: bp has its work bytes and the threads.
struct SumTask {
    const BasicParameters& bp;
    const PSRPlan& plan;
    BigFloatR& P;
    BigFloatR& Q;
    BigFloatR* R;  // null but where the class has a third result
    cdi* nodes;
    EventLog* log;       // or null
    StatusLine* status;  // or null
};

}  // namespace znp
