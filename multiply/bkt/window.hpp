// Windows: the words [s, e) of a square or product.
//
// Words of the operands that cannot reach the window are dropped first. The value is the narrowed product's:
// it lacks the carry from the words below that were dropped, so the lowest words of a window can be short of
// the true ones. Callers that need exact words keep guard words below.
#pragma once

#include "foundation/types.hpp"

namespace znp::bkt {

// Operands of a window after narrowing: which words are kept, and where the window lies in their product.
struct SqrWindow {
    upL_t A_offset, n;
    upL_t s, e;
};
struct MulWindow {
    upL_t A_offset, La;
    upL_t B_offset, Lb;
    upL_t s, e;
};
SqrWindow narrow_sqr(upL_t s, upL_t e, upL_t n);
MulWindow narrow_mul(upL_t s, upL_t e, upL_t La, upL_t Lb);

// T has e - s words; S the bytes that the query gives.
void sqr_window(c32i* T, upL_t s, upL_t e, const c32i* A, upL_t n, c32i* S);
void sqr_window(c64i* T, upL_t s, upL_t e, const c64i* A, upL_t n, c64i* S);
void mul_window(c32i* T, upL_t s, upL_t e, const c32i* A, upL_t La, const c32i* B, upL_t Lb, c32i* S);
void mul_window(c64i* T, upL_t s, upL_t e, const c64i* A, upL_t La, const c64i* B, upL_t Lb, c64i* S);

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
