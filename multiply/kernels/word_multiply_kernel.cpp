// Products of 64-bit words with a single word by MULX and one add-with-carry chain.

#include "multiply/kernels/word_multiply.hpp"

namespace znp {

namespace {

// T[0..L) = A * w + carry; returns the carry out of the top. The odd words first, then four a turn;
// everything between two ADC leaves the carry flag alone.
ZNP_INLINE c64i mul_chain(c64i* T, const c64i* A, upL_t L, c64i w, c64i carry) {
    upL_t i = 0;
    upL_t count = L & 3;
    upL_t fours = L >> 2;
    c64i high;
    c64i low;
    // clang-format off
#define ZNP_STEP(k, from, to)                          \
        "mulx 8*" #k "(%[A],%[i],8), %[low], " to "\n\t" \
        "adc " from ", %[low]\n\t"                     \
        "mov %[low], 8*" #k "(%[T],%[i],8)\n\t"
    asm volatile(
        "test %[count], %[count]\n\t"
        "jz 2f\n"
        "1:\n\t"
        ZNP_STEP(0, "%[carry]", "%[high]")
        "mov %[high], %[carry]\n\t"
        "lea 1(%[i]), %[i]\n\t"
        "dec %[count]\n\t"
        "jnz 1b\n"
        "2:\n\t"
        "jrcxz 4f\n"
        "3:\n\t"
        ZNP_STEP(0, "%[carry]", "%[high]")
        ZNP_STEP(1, "%[high]", "%[carry]")
        ZNP_STEP(2, "%[carry]", "%[high]")
        ZNP_STEP(3, "%[high]", "%[carry]")
        "lea 4(%[i]), %[i]\n\t"
        "dec %[fours]\n\t"
        "jnz 3b\n"
        "4:\n\t"
        "adc $0, %[carry]\n\t"
        : [i] "+&r"(i), [count] "+&r"(count), [fours] "+&c"(fours), [carry] "+&r"(carry), [high] "=&r"(high),
          [low] "=&r"(low)
        : [T] "r"(T), [A] "r"(A), "d"(w)
        : "cc", "memory");
#undef ZNP_STEP
    // clang-format on
    return carry;
}

}  // namespace

void Mul1(c64i* T, const c64i* A, upL_t L, c64i w) {
    const c64i top = mul_chain(T, A, L, w, 0);
    __builtin_memcpy(T + L, &top, sizeof top);  // the 32-bit basecase comes with pairs of its words
}

c64i MulW(c64i* T, upL_t L, c64i w, c64i carry) {
    return mul_chain(T, T, L, w, carry);
}

}  // namespace znp
