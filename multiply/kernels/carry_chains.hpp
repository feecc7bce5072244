// ADDv2: carry chains over arrays of words, as Karatsuba's method and the number objects need them.
//
// Words, least significant first. `n` is the length of a number that is cut in two halves: the lower one has
// h = ceil(n / 2) words, the upper one n - h, that is h or h - 1. Buffers overlap only where a routine works
// in place. Lengths are trusted; nothing allocates or throws. Cost: one pass.
#pragma once

#include "foundation/types.hpp"

namespace znp::ADDv2 {

// A >= B, where La is Lb or Lb + 1 and Lb is at least 1. Scans down from the top and stops at the first
// difference.
bool cmp_halves(const c32i* A, upL_t La, const c32i* B, upL_t Lb);
bool cmp_halves(const c64i* A, upL_t La, const c64i* B, upL_t Lb);

// D[0..h) = |lower - upper| of A, n >= 2. lower_ge is the answer of cmp_halves on the two.
void sub_halves(c32i* D, const c32i* A, upL_t n, bool lower_ge);
void sub_halves(c64i* D, const c64i* A, upL_t n, bool lower_ge);

// The same for two numbers of equal length.
void sub_halves2(c32i* D, const c32i* A, bool A_ge, c32i* E, const c32i* B, bool B_ge, upL_t n);
void sub_halves2(c64i* D, const c64i* A, bool A_ge, c64i* E, const c64i* B, bool B_ge, upL_t n);

// T[0..L) += carry, which may be negative; stops as soon as the carry dies. Returns what leaves the top.
// Small carries only: |carry| < 2^31.
s64_t add_ripple(c32i* T, upL_t L, s64_t carry);
s64_t add_ripple(c64i* T, upL_t L, s64_t carry);

// The plain forms against which the tuned ones are tested.
template <class word>
bool cmp_halves_reference(const word* A, upL_t La, const word* B, upL_t Lb);
template <class word>
void sub_halves_reference(word* D, const word* A, upL_t n, bool lower_ge);
template <class word>
s64_t add_ripple_reference(word* T, upL_t L, s64_t carry);

}  // namespace znp::ADDv2
