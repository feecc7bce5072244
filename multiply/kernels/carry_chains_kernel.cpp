// Differences of 64-bit words by subtract-with-borrow chains.

#include "multiply/kernels/carry_chains.hpp"

namespace znp::ADDv2 {

namespace {

// D[0..L) = X - Y, L >= 1; returns the borrow. The odd words first, then four a turn; everything between two
// SBB leaves the carry flag alone.
ZNP_INLINE c64i sub_chain(c64i* D, const c64i* X, const c64i* Y, upL_t L) {
    // clang-format off
#define ZNP_SBB(i) "mov 8*" #i "(%[X],%[i],8), %[t]\n\t" \
                   "sbb 8*" #i "(%[Y],%[i],8), %[t]\n\t" \
                   "mov %[t], 8*" #i "(%[D],%[i],8)\n\t"
    upL_t i = 0;
    upL_t count = L & 3;
    upL_t fours = L >> 2;
    c64i t;
    asm volatile(
        "test %[count], %[count]\n\t"
        "jz 2f\n"
        "1:\n\t"
        ZNP_SBB(0)
        "lea 1(%[i]), %[i]\n\t"
        "dec %[count]\n\t"
        "jnz 1b\n"
        "2:\n\t"
        "jrcxz 4f\n"
        "3:\n\t"
        ZNP_SBB(0) ZNP_SBB(1) ZNP_SBB(2) ZNP_SBB(3)
        "lea 4(%[i]), %[i]\n\t"
        "dec %[fours]\n\t"
        "jnz 3b\n"
        "4:\n\t"
        "sbb %[t], %[t]\n\t"
        : [i] "+r"(i), [count] "+r"(count), [fours] "+c"(fours), [t] "=&r"(t)
        : [D] "r"(D), [X] "r"(X), [Y] "r"(Y)
        : "cc", "memory");
#undef ZNP_SBB
    // clang-format on
    return t & 1;
}

}  // namespace

// The choice of the larger half is arithmetic: its answer is as good as random, and a branch on it would be
// mispredicted half of the time.
void sub_halves(c64i* D, const c64i* A, upL_t n, bool lower_ge) {
    const upL_t h = (n + 1) / 2;
    const upL_t ge = lower_ge;
    const c64i borrow = sub_chain(D, A + (h & (ge - 1)), A + (h & (0 - ge)), n - h);
    // A longer lower half: if it is the smaller one, its top word is zero and there is no borrow.
    if (n - h < h) D[h - 1] = A[h - 1] - borrow;
}

void sub_halves2(c64i* D, const c64i* A, bool A_ge, c64i* E, const c64i* B, bool B_ge, upL_t n) {
    sub_halves(D, A, n, A_ge);
    sub_halves(E, B, n, B_ge);
}

}  // namespace znp::ADDv2
