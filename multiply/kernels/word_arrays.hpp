// Sums and differences of arrays of words of one length, and the ripple of a carry.
//
// All return the carry or borrow out of the top word. T may be the same array as an operand, and otherwise does not
// overlap it. Cost: one pass.
#pragma once

#include "foundation/types.hpp"

namespace znp {

// T[0..L) = A + B + carry.
bool add_words(c32i* T, const c32i* A, const c32i* B, upL_t L, bool carry = false);
bool add_words(c64i* T, const c64i* A, const c64i* B, upL_t L, bool carry = false);

// T[0..L) = A - B - borrow.
bool sub_words(c32i* T, const c32i* A, const c32i* B, upL_t L, bool borrow = false);
bool sub_words(c64i* T, const c64i* A, const c64i* B, upL_t L, bool borrow = false);

// T[0..L) = A + carry, A - borrow. In place it stops where the carry dies.
template <class word>
bool copy_add_carry(word* T, const word* A, upL_t L, bool carry);
template <class word>
bool copy_sub_borrow(word* T, const word* A, upL_t L, bool borrow);

// T[0..L) = 0 - A - borrow.
template <class word>
bool negate_words(word* T, const word* A, upL_t L, bool borrow = false);

// Length without zero top words.
template <class word>
constexpr upL_t normalised_length(const word* T, upL_t L) {
    while (L != 0 && T[L - 1] == 0) L--;
    return L;
}

}  // namespace znp
