// Products with a single word.
//
// Words, least significant first. Nothing allocates or throws; lengths are trusted.
#pragma once

#include "foundation/types.hpp"
#include "multiply/kernels/word_primitives.hpp"

namespace znp {

// T[0..L] = A[0..L) * w: always L + 1 words. T may be A. L may be 0.
void Mul1(c32i* T, const c32i* A, upL_t L, c32i w);
void Mul1(c64i* T, const c64i* A, upL_t L, c64i w);

// T[0..L) = T[0..L) * w + carry in place; returns the carry out of the top.
c32i MulW(c32i* T, upL_t L, c32i w, c32i carry = 0);
c64i MulW(c64i* T, upL_t L, c64i w, c64i carry = 0);

// The plain forms against which the tuned ones are tested.
template <class word>
void Mul1_reference(word* T, const word* A, upL_t L, word w);
template <class word>
word MulW_reference(word* T, upL_t L, word w, word carry);

}  // namespace znp
