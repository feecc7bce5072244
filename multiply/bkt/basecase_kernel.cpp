// Schoolbook products of 64-bit words with MULX and add-with-carry chains.
//
// The work is cut in strips: up to four words b of one operand against every word a of the other, one row for
// each a. A strip keeps its running sum in registers, so a row stores one finished word and hands the rest
// on. One carry flag serves a row because the row adds its products in two chains,
//
//     sum += low halves            then            sum / B + high halves = next sum,       B = 2^64
//
// MULX leaves the flags alone, and the chains of neighbouring rows overlap. A row of w words costs w MULX and
// 2 w + 1 additions, so with one multiplier port the multiplier is the limit: a cycle a product.
//
// A later strip adds the words that the strips before it left at its place, one at the bottom of each row.
// The sum still fits in w + 1 words: (B^w - 1) + (B^w - 1)(B - 1) + (B - 1) = B^(w + 1) - 1.
//
// Two register sets hold the sum in turn, since the high halves become the next sum; so rows come in pairs.

#include "multiply/bkt/basecase.hpp"

namespace znp::bkt {

namespace {

// T in rdi, the words a through rsi, the strip's words b through rcx, the word a itself in rdx, the count of
// row pairs in rax. Fixed registers, because a build without optimisation has none to spare.
#define ZNP_S0 "%%r8"
#define ZNP_S1 "%%r9"
#define ZNP_S2 "%%r10"
#define ZNP_S3 "%%r11"
#define ZNP_N0 "%%r12"
#define ZNP_N1 "%%r13"
#define ZNP_N2 "%%r14"
#define ZNP_N3 "%%r15"

#define ZNP_MULX_ADD(add, i, sum, high) "mulx 8*" #i "(%%rcx), %%rbx, " high "\n\t" #add " %%rbx, " sum "\n\t"
#define ZNP_ADD(from, to) "add " from ", " to "\n\t"
#define ZNP_ADC(from, to) "adc " from ", " to "\n\t"

#define ZNP_LOW_1(S0, N0) ZNP_MULX_ADD(add, 0, S0, N0)
#define ZNP_LOW_2(S0, S1, N0, N1) ZNP_LOW_1(S0, N0) ZNP_MULX_ADD(adc, 1, S1, N1)
#define ZNP_LOW_3(S0, S1, S2, N0, N1, N2) ZNP_LOW_2(S0, S1, N0, N1) ZNP_MULX_ADD(adc, 2, S2, N2)
#define ZNP_LOW_4(S0, S1, S2, S3, N0, N1, N2, N3) \
    ZNP_LOW_3(S0, S1, S2, N0, N1, N2) ZNP_MULX_ADD(adc, 3, S3, N3)

// The finished word S0 goes to T[j]; a later strip adds T[j] to it first, which starts the second chain. In a
// first strip that chain starts one word further up, and must start afresh: taking over the carry flag (which
// the top high half has left clear) would make it wait for the whole first chain.
#define ZNP_FINISH_first(j, S0) "mov " S0 ", 8*" #j "(%%rdi)\n\t"
#define ZNP_FINISH_later(j, S0) "add 8*" #j "(%%rdi), " S0 "\n\t" ZNP_FINISH_first(j, S0)
#define ZNP_START_first(from, to) "add " from ", " to "\n\t"
#define ZNP_START_later(from, to) "adc " from ", " to "\n\t"

#define ZNP_ROW_1(place, j, S0, N0) \
    "mov 8*" #j "(%%rsi), %%rdx\n\t" ZNP_LOW_1(S0, N0) ZNP_ADC("$0", N0) ZNP_FINISH_##place(j, S0)
#define ZNP_ROW_2(place, j, S0, S1, N0, N1)                                                                \
    "mov 8*" #j "(%%rsi), %%rdx\n\t" ZNP_LOW_2(S0, S1, N0, N1) ZNP_ADC("$0", N1) ZNP_FINISH_##place(j, S0) \
        ZNP_START_##place(S1, N0) ZNP_ADC("$0", N1)
#define ZNP_ROW_3(place, j, S0, S1, S2, N0, N1, N2)                                      \
    "mov 8*" #j "(%%rsi), %%rdx\n\t" ZNP_LOW_3(S0, S1, S2, N0, N1, N2) ZNP_ADC("$0", N2) \
        ZNP_FINISH_##place(j, S0) ZNP_START_##place(S1, N0) ZNP_ADC(S2, N1) ZNP_ADC("$0", N2)
#define ZNP_ROW_4(place, j, S0, S1, S2, S3, N0, N1, N2, N3)                                      \
    "mov 8*" #j "(%%rsi), %%rdx\n\t" ZNP_LOW_4(S0, S1, S2, S3, N0, N1, N2, N3) ZNP_ADC("$0", N3) \
        ZNP_FINISH_##place(j, S0) ZNP_START_##place(S1, N0) ZNP_ADC(S2, N1) ZNP_ADC(S3, N2)      \
            ZNP_ADC("$0", N3)

#define ZNP_PAIR_1(place) \
    "1:\n\t" ZNP_ROW_1(place, 0, ZNP_S0, ZNP_N0) "2:\n\t" ZNP_ROW_1(place, 1, ZNP_N0, ZNP_S0)
#define ZNP_PAIR_2(place)                                                                             \
    "1:\n\t" ZNP_ROW_2(place, 0, ZNP_S0, ZNP_S1, ZNP_N0, ZNP_N1) "2:\n\t" ZNP_ROW_2(place, 1, ZNP_N0, \
                                                                                    ZNP_N1, ZNP_S0, ZNP_S1)
#define ZNP_PAIR_3(place)                                                                            \
    "1:\n\t" ZNP_ROW_3(place, 0, ZNP_S0, ZNP_S1, ZNP_S2, ZNP_N0, ZNP_N1, ZNP_N2) "2:\n\t" ZNP_ROW_3( \
        place, 1, ZNP_N0, ZNP_N1, ZNP_N2, ZNP_S0, ZNP_S1, ZNP_S2)
#define ZNP_PAIR_4(place)                                                                                   \
    "1:\n\t" ZNP_ROW_4(place, 0, ZNP_S0, ZNP_S1, ZNP_S2, ZNP_S3, ZNP_N0, ZNP_N1, ZNP_N2,                    \
                       ZNP_N3) "2:\n\t" ZNP_ROW_4(place, 1, ZNP_N0, ZNP_N1, ZNP_N2, ZNP_N3, ZNP_S0, ZNP_S1, \
                                                  ZNP_S2, ZNP_S3)

#define ZNP_STORE_1 "mov %%r8, (%%rdi)\n\t"
#define ZNP_STORE_2 ZNP_STORE_1 "mov %%r9, 8(%%rdi)\n\t"
#define ZNP_STORE_3 ZNP_STORE_2 "mov %%r10, 16(%%rdi)\n\t"
#define ZNP_STORE_4 ZNP_STORE_3 "mov %%r11, 24(%%rdi)\n\t"

// Both sets start at zero; an odd number of rows enters at the second row of a pair.
#define ZNP_STRIP(w, place)                                                                              \
    void strip_##w##_##place(c64i* T, const c64i* A, upL_t La, const c64i* B) {                          \
        upL_t pairs = (La + 1) / 2;                                                                      \
        upL_t skipped_bytes = 8 * (La & 1);                                                              \
        asm volatile(                                                                                  \
            "xor %%r8d, %%r8d\n\txor %%r9d, %%r9d\n\txor %%r10d, %%r10d\n\txor %%r11d, %%r11d\n\t"     \
            "xor %%r12d, %%r12d\n\txor %%r13d, %%r13d\n\txor %%r14d, %%r14d\n\txor %%r15d, %%r15d\n\t" \
            "sub %%rdx, %%rsi\n\tsub %%rdx, %%rdi\n\ttest %%rdx, %%rdx\n\tjnz 2f\n\t.p2align "         \
            "4\n\t" ZNP_PAIR_##w(                                                                      \
                place) "lea 16(%%rsi), %%rsi\n\tlea 16(%%rdi), %%rdi\n\tdec %%rax\n\tjnz "             \
                       "1b\n\t" ZNP_STORE_##w                                                          \
            : "+D"(T), "+S"(A), "+a"(pairs), "+d"(skipped_bytes)                                       \
            : "c"(B)                                                                                   \
            : "rbx", "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15", "cc", "memory"); \
    }
ZNP_STRIP(1, first)
ZNP_STRIP(2, first)
ZNP_STRIP(3, first)
ZNP_STRIP(4, first)
ZNP_STRIP(4, later)

}  // namespace

void mulB(c64i* T, const c64i* A, upL_t La, const c64i* B, upL_t Lb) {
    if (La < Lb) {
        const c64i* X = A;
        A = B, B = X;
        const upL_t Lx = La;
        La = Lb, Lb = Lx;
    }
    upL_t done = Lb & 3;
    switch (done) {
        case 0:
            strip_4_first(T, A, La, B);
            done = 4;
            break;
        case 1:
            strip_1_first(T, A, La, B);
            break;
        case 2:
            strip_2_first(T, A, La, B);
            break;
        case 3:
            strip_3_first(T, A, La, B);
            break;
    }
    for (; done < Lb; done += 4) strip_4_later(T + done, A, La, B + done);
}

void elmB(c64i* T, const c64i* A, const c64i* B, upL_t n) {
    mulB(T, A, n, B, n);
}

}  // namespace znp::bkt
