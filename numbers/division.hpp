// A/B by the reciprocal of B to half the precision and one correction of the quotient (Karp and Markstein).
//
// Q has p + 3 words. With h = (p + 1) / 2: r = 1/B to h words, y0 = A r to h words, d = A - y0 B from a
// cyclic product whose top equals A's, Q = y0 + d r. Up to 9 words: Q = A r. Cost about 2.7 products of p by
// p words. A = 0 gives 0 without a reciprocal; B = 0 fires as in the reciprocal. Failures fire with code 2.
// Nothing is allocated.
#pragma once

#include "numbers/newton_steps.hpp"

namespace znp {

// The cut below which a division goes straight to the small reciprocal.
inline constexpr upL_t division_t9 = newton::small_precision;

// The division.
void zlm_div_t9_B(const BasicParameters& bp, BigFloatR& Q, const BigFloat& A, const BigFloat& B, upL_t p,
                  newton::Scratch scratch, StatusLine* status = nullptr);

// Its step on all threads, which follows the reciprocal, p above 9: r is 1/B to h = (p + 1) / 2 words, at
// most h + 2 long; a transform of at least p + 9 words. scratch: 3 h + 11 words.
void zlp_div_t9_B(const BasicParameters& bp, const transform& algorithm, BigFloatR& Q, const BigFloat& A,
                  const BigFloat& B, const BigFloat& r, upL_t p, newton::Scratch scratch,
                  StatusLine* status = nullptr);

// Of the division: words of scratch, exactly; bytes of work buffer.
upL_t div_scratch_words(upL_t p);
upL_t div_work_bytes(upL_t p, u64_t threads);

}  // namespace znp
