// The passes of a leaf as straight code: one for each count of words, entered where the leaf's length begins.
//
// All passes end at the same word, so that every offset is a constant, and there is no loop control. A pass
// is one chain of MULX and ADC; its words go through memory to the next one, which starts as soon as the
// first of them are there: the processor overlaps the passes by itself.

#include "numbers/radix_leaf.hpp"

namespace znp::radix {

namespace {

// Word k from the top: its product with the radix, plus the high half of the word below and the carry. The
// high halves alternate between two registers by the parity of k.
// clang-format off
#define ZNP_STEP(k, below, high)                    \
    "mulx -8*" #k "(%[end]), %[low], " high "\n\t"  \
    "adc " below ", %[low]\n\t"                     \
    "mov %[low], -8*" #k "(%[end])\n\t"
#define ZNP_ODD(k) ZNP_STEP(k, "%[even]", "%[odd]")
#define ZNP_EVEN(k) ZNP_STEP(k, "%[odd]", "%[even]")
#define ZNP_TAIL_1 ZNP_ODD(1)
#define ZNP_TAIL_2 ZNP_EVEN(2) ZNP_TAIL_1
#define ZNP_TAIL_3 ZNP_ODD(3) ZNP_TAIL_2
#define ZNP_TAIL_4 ZNP_EVEN(4) ZNP_TAIL_3
#define ZNP_TAIL_5 ZNP_ODD(5) ZNP_TAIL_4
#define ZNP_TAIL_6 ZNP_EVEN(6) ZNP_TAIL_5
#define ZNP_TAIL_7 ZNP_ODD(7) ZNP_TAIL_6
#define ZNP_TAIL_8 ZNP_EVEN(8) ZNP_TAIL_7
#define ZNP_TAIL_9 ZNP_ODD(9) ZNP_TAIL_8
#define ZNP_TAIL_10 ZNP_EVEN(10) ZNP_TAIL_9
#define ZNP_TAIL_11 ZNP_ODD(11) ZNP_TAIL_10
#define ZNP_TAIL_12 ZNP_EVEN(12) ZNP_TAIL_11
#define ZNP_TAIL_13 ZNP_ODD(13) ZNP_TAIL_12
#define ZNP_TAIL_14 ZNP_EVEN(14) ZNP_TAIL_13
#define ZNP_TAIL_15 ZNP_ODD(15) ZNP_TAIL_14
#define ZNP_TAIL_16 ZNP_EVEN(16) ZNP_TAIL_15

// The pass over w words, of which the lowest is not needed again: only its high half counts. TEST clears the
// carry. The carry out of the top word ends in `odd`.
#define ZNP_PASS(w, high, tail)                           \
    asm volatile("mulx -8*" #w "(%[end]), %[low], " high "\n\t" \
                 "test %[end], %[end]\n\t"                \
                 tail                                     \
                 "adc $0, %[odd]\n\t"                     \
                 : [low] "=&r"(low), [odd] "=&r"(odd), [even] "=&r"(even) \
                 : [end] "r"(end), "d"(radix)             \
                 : "cc", "memory")
#define ZNP_PASS_ODD(w, tail) ZNP_PASS(w, "%[odd]", tail)
#define ZNP_PASS_EVEN(w, tail) ZNP_PASS(w, "%[even]", tail)
// clang-format on

}  // namespace

cdi convert_leaf(cdi* out, upL_t n, cdi* end, cdi radix) {
    cdi low;
    cdi odd;
    cdi even;
    switch (n) {
        case 15:
            ZNP_PASS_ODD(17, ZNP_TAIL_16);
            out[14] = odd;
            [[fallthrough]];
        case 14:
            ZNP_PASS_EVEN(16, ZNP_TAIL_15);
            out[13] = odd;
            [[fallthrough]];
        case 13:
            ZNP_PASS_ODD(15, ZNP_TAIL_14);
            out[12] = odd;
            [[fallthrough]];
        case 12:
            ZNP_PASS_EVEN(14, ZNP_TAIL_13);
            out[11] = odd;
            [[fallthrough]];
        case 11:
            ZNP_PASS_ODD(13, ZNP_TAIL_12);
            out[10] = odd;
            [[fallthrough]];
        case 10:
            ZNP_PASS_EVEN(12, ZNP_TAIL_11);
            out[9] = odd;
            [[fallthrough]];
        case 9:
            ZNP_PASS_ODD(11, ZNP_TAIL_10);
            out[8] = odd;
            [[fallthrough]];
        case 8:
            ZNP_PASS_EVEN(10, ZNP_TAIL_9);
            out[7] = odd;
            [[fallthrough]];
        case 7:
            ZNP_PASS_ODD(9, ZNP_TAIL_8);
            out[6] = odd;
            [[fallthrough]];
        case 6:
            ZNP_PASS_EVEN(8, ZNP_TAIL_7);
            out[5] = odd;
            [[fallthrough]];
        case 5:
            ZNP_PASS_ODD(7, ZNP_TAIL_6);
            out[4] = odd;
            [[fallthrough]];
        case 4:
            ZNP_PASS_EVEN(6, ZNP_TAIL_5);
            out[3] = odd;
            [[fallthrough]];
        case 3:
            ZNP_PASS_ODD(5, ZNP_TAIL_4);
            out[2] = odd;
            [[fallthrough]];
        case 2:
            ZNP_PASS_EVEN(4, ZNP_TAIL_3);
            out[1] = odd;
            [[fallthrough]];
        case 1:
            ZNP_PASS_ODD(3, ZNP_TAIL_2);
            out[0] = odd;
            [[fallthrough]];
        default:
            ZNP_PASS_EVEN(2, ZNP_TAIL_1);
            return odd;
    }
}

}  // namespace znp::radix
