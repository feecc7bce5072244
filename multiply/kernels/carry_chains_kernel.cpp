// Differences of 64-bit words by subtract-with-borrow chains.

#include "multiply/kernels/carry_chains.hpp"
#include "multiply/kernels/carry_loop.hpp"

namespace znp::ADDv2 {

// The choice of the larger half is arithmetic: its answer is as good as random, and a branch on it would be
// mispredicted half of the time.
void sub_halves(c64i* D, const c64i* A, upL_t n, bool lower_ge) {
    const upL_t h = (n + 1) / 2;
    const upL_t ge = lower_ge;
    const bool borrow = sub_loop(D, A + (h & (ge - 1)), A + (h & (0 - ge)), n - h, false);
    // A longer lower half: if it is the smaller one, its top word is zero and there is no borrow.
    if (n - h < h) D[h - 1] = A[h - 1] - c64i{borrow};
}

void sub_halves2(c64i* D, const c64i* A, bool A_ge, c64i* E, const c64i* B, bool B_ge, upL_t n) {
    sub_halves(D, A, n, A_ge);
    sub_halves(E, B, n, B_ge);
}

}  // namespace znp::ADDv2
