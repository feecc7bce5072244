// The recursion below a series' end threshold, in integers: halves, products, sum.
#pragma once

#include "series/bss.hpp"

namespace znp::terms {

// P, Q, R of a range of two or more terms from its halves, each by the virtual series.BSR_End. All five
// objects have end_words() of the series' term and b - a (series/catalogue.hpp). Results are at the start of
// P, Q and R. No two objects overlap.
void end_recursion(const zl_BSS_P2B3_Type0& series, BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0,
                   BasicIntR& t1, u64_t a, u64_t b);

}  // namespace znp::terms
