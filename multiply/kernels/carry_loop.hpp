// One add-with-carry or subtract-with-borrow chain over two arrays of 64-bit words.
//
// T[0..L) = A + B + carry or A - B - carry; returns the carry out of the top. T may be A or B and otherwise
// overlaps neither. Baseline instructions; about 1.5 cycles a word. The memory is read and written as bytes
// are: the arrays may be of any type and at any address.
//
// Assembly, because the compilers' intrinsics hand a 64-bit sum over through memory, and put the carry into a
// register and back between two steps.
#pragma once

#include "foundation/types.hpp"

namespace znp {

// The odd words first, then four a turn. Adding 255 to a carry of 1 sets the flag, and everything between two
// steps leaves it alone: LEA, DEC, MOV and JRCXZ.
// clang-format off
#define ZNP_CARRY_STEP(step, k)                \
    "mov 8*" #k "(%[A],%[i],8), %[t]\n\t"      \
    step " 8*" #k "(%[B],%[i],8), %[t]\n\t"    \
    "mov %[t], 8*" #k "(%[T],%[i],8)\n\t"
#define ZNP_CARRY_LOOP(name, step)                                                                             \
    ZNP_INLINE bool name(void* T, const void* A, const void* B, upL_t L, bool carry_in) {                      \
        unsigned char carry = carry_in;                                                                        \
        upL_t i = 0;                                                                                           \
        upL_t count = L % 4;                                                                                   \
        u64_t t;                                                                                               \
        asm volatile(                                                                                          \
            "add $-1, %[carry]\n\t"                                                                            \
            "jrcxz 2f\n"                                                                                       \
            "1:\n\t"                                                                                           \
            ZNP_CARRY_STEP(step, 0)                                                                            \
            "lea 1(%[i]), %[i]\n\t"                                                                            \
            "dec %[count]\n\t"                                                                                 \
            "jnz 1b\n"                                                                                         \
            "2:\n\t"                                                                                           \
            "mov %[fours], %[count]\n\t"                                                                       \
            "jrcxz 4f\n"                                                                                       \
            "3:\n\t"                                                                                           \
            ZNP_CARRY_STEP(step, 0) ZNP_CARRY_STEP(step, 1) ZNP_CARRY_STEP(step, 2) ZNP_CARRY_STEP(step, 3)    \
            "lea 4(%[i]), %[i]\n\t"                                                                            \
            "dec %[count]\n\t"                                                                                 \
            "jnz 3b\n"                                                                                         \
            "4:\n\t"                                                                                           \
            "setc %[carry]\n\t"                                                                                \
            : [carry] "+&q"(carry), [i] "+&r"(i), [count] "+&c"(count), [t] "=&r"(t)                           \
            : [T] "r"(T), [A] "r"(A), [B] "r"(B), [fours] "r"(L / 4)                                           \
            : "cc", "memory");                                                                                 \
        return carry != 0;                                                                                     \
    }
ZNP_CARRY_LOOP(add_loop, "adc")
ZNP_CARRY_LOOP(sub_loop, "sbb")
#undef ZNP_CARRY_LOOP
#undef ZNP_CARRY_STEP
// clang-format on

}  // namespace znp
