// Schoolbook products of short operands.
//
// Words, least significant first; operands may have leading zero words. T never overlaps an operand and need
// not be cleared; all 2 n or La + Lb words of it are written. Lengths are at least 1. No scratch, no
// allocation. Cost: n^2 (La Lb) word products, of 64-bit words in both families.
#pragma once

#include "foundation/types.hpp"

namespace znp::bkt {

void sqrB(c32i* T, const c32i* A, upL_t n);
void sqrB(c64i* T, const c64i* A, upL_t n);
void elmB(c32i* T, const c32i* A, const c32i* B, upL_t n);
void elmB(c64i* T, const c64i* A, const c64i* B, upL_t n);
void mulB(c32i* T, const c32i* A, upL_t La, const c32i* B, upL_t Lb);
void mulB(c64i* T, const c64i* A, upL_t La, const c64i* B, upL_t Lb);

// The middle of a product: T[4..n + 4) = the words [Lb, Lb + n) of A[0..n + Lb) * B[0..Lb), short by less
// than Lb units of the lowest one: part of the carry from below is missing. Lb at least 4, n at least 1; T
// has n + 8 words. Cost: (n + 4) Lb word products.
void middleB(c64i* T, const c64i* A, const c64i* B, upL_t Lb, upL_t n);

}  // namespace znp::bkt
