// Windows: the words [s, e) of a square or product.
//
// Words of the operands that cannot reach the window are dropped first. The value is the narrowed product's:
// it lacks the carry from the words below that were dropped, so the lowest words of a window can be short of
// the true ones. Callers that need exact words keep guard words below.
#pragma once

#include "multiply/word_span.hpp"

namespace znp::bkt {

// Operands of a window after narrowing: which words are kept, and where the window lies in their product.
struct NarrowedSqr {
    upL_t A_offset, n;
    upL_t s, e;
};
struct NarrowedMul {
    upL_t A_offset, La;
    upL_t B_offset, Lb;
    upL_t s, e;
};
NarrowedSqr narrow_sqr(upL_t s, upL_t e, upL_t n);
NarrowedMul narrow_mul(upL_t s, upL_t e, upL_t La, upL_t Lb);

// S has the bytes that the query gives.
template <class word>
void sqr_window(Window<word> R, WordSpan<word> A, word* S);
template <class word>
void mul_window(Window<word> R, WordSpan<word> A, WordSpan<word> B, word* S);

template <class word>
upL_t sqr_window_bytes(upL_t s, upL_t e, upL_t n);
template <class word>
upL_t elm_window_bytes(upL_t m);
template <class word>
upL_t mul_window_bytes(upL_t s, upL_t e, upL_t La, upL_t Lb);

// Enough for any square or product window of operands with up to m words each.
template <class word>
upL_t scratch_bytes(upL_t m);

}  // namespace znp::bkt
