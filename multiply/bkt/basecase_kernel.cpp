// Schoolbook products of 64-bit words with MULX and add-with-carry chains.
//
// The work is cut in strips: up to four words b of one operand against every word a of the other, one row for
// each a. A strip keeps its running sum in registers, so a row stores one finished word and hands the rest
// on. One carry flag serves a row because the row adds its products in two chains,
//
//     sum += low halves            then            sum / B + high halves = next sum,       B = 2^64
//
// MULX leaves the flags alone, and the chains of neighbouring rows overlap. A row of w words costs w MULX and
// 2 w + 1 additions.
//
// A later strip adds the words that the strips before it left at its place, one at the bottom of each row.
// The sum still fits in w + 1 words: (B^w - 1) + (B^w - 1)(B - 1) + (B - 1) = B^(w + 1) - 1.
//
// Two register sets, S and N, hold the sum in turn, since the high halves become the next sum. Rows therefore
// come in pairs, in loops for any length and written out for the short equal lengths, which are most of the
// work under Karatsuba's method.

#include "multiply/bkt/basecase_kernel.hpp"

#include "multiply/bkt/basecase.hpp"
#include "multiply/kernels/word_multiply.hpp"

namespace znp::bkt {

namespace {

// clang-format off

// T in rdi, the words a through rsi, the strip's words b through rcx, the word a itself in rdx, low halves in
// rbx. Fixed registers, because a build without optimisation has none to spare.
#define ZNP_S0 "%%r8"
#define ZNP_S1 "%%r9"
#define ZNP_S2 "%%r10"
#define ZNP_S3 "%%r11"
#define ZNP_N0 "%%r12"
#define ZNP_N1 "%%r13"
#define ZNP_N2 "%%r14"
#define ZNP_N3 "%%r15"
#define ZNP_LOW "%%rbx"
#define ZNP_WORK "rbx", "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15", "cc", "memory"

#define ZNP_LOAD(j)           "mov 8*" #j "(%%rsi), %%rdx\n\t"
#define ZNP_STORE(j, word)    "mov " word ", 8*" #j "(%%rdi)\n\t"
#define ZNP_MULX(i, high)     "mulx 8*" #i "(%%rcx), " ZNP_LOW ", " high "\n\t"
#define ZNP_ADD(from, to)     "add " from ", " to "\n\t"
#define ZNP_ADC(from, to)     "adc " from ", " to "\n\t"
#define ZNP_ADC_0(to)         "adc $0, " to "\n\t"

// The finished word of row j goes to T[j]; a later strip adds T[j] to it first, which starts the second chain.
// In a first strip that chain starts one word further up, and must start afresh: taking over the carry flag
// (which the top high half has left clear) would make it wait for the whole first chain.
#define ZNP_FINISH_first(j, word)   ZNP_STORE(j, word)
#define ZNP_FINISH_later(j, word)   "add 8*" #j "(%%rdi), " word "\n\t" ZNP_STORE(j, word)
#define ZNP_START_first             ZNP_ADD
#define ZNP_START_later             ZNP_ADC

// First chain of a row: sum S += low halves, high halves to N.
#define ZNP_LOW_1(S, N) ZNP_MULX(0, ZNP_##N##0) ZNP_ADD(ZNP_LOW, ZNP_##S##0)
#define ZNP_LOW_2(S, N) ZNP_LOW_1(S, N) ZNP_MULX(1, ZNP_##N##1) ZNP_ADC(ZNP_LOW, ZNP_##S##1)
#define ZNP_LOW_3(S, N) ZNP_LOW_2(S, N) ZNP_MULX(2, ZNP_##N##2) ZNP_ADC(ZNP_LOW, ZNP_##S##2)
#define ZNP_LOW_4(S, N) ZNP_LOW_3(S, N) ZNP_MULX(3, ZNP_##N##3) ZNP_ADC(ZNP_LOW, ZNP_##S##3)

// Row j of a strip of w words: the sum moves from S to N.
#define ZNP_ROW_2(place, j, S, N)                                                      \
    ZNP_LOAD(j) ZNP_LOW_2(S, N) ZNP_ADC_0(ZNP_##N##1) ZNP_FINISH_##place(j, ZNP_##S##0) \
    ZNP_START_##place(ZNP_##S##1, ZNP_##N##0) ZNP_ADC_0(ZNP_##N##1)
#define ZNP_ROW_3(place, j, S, N)                                                      \
    ZNP_LOAD(j) ZNP_LOW_3(S, N) ZNP_ADC_0(ZNP_##N##2) ZNP_FINISH_##place(j, ZNP_##S##0) \
    ZNP_START_##place(ZNP_##S##1, ZNP_##N##0) ZNP_ADC(ZNP_##S##2, ZNP_##N##1) ZNP_ADC_0(ZNP_##N##2)
#define ZNP_ROW_4(place, j, S, N)                                                      \
    ZNP_LOAD(j) ZNP_LOW_4(S, N) ZNP_ADC_0(ZNP_##N##3) ZNP_FINISH_##place(j, ZNP_##S##0) \
    ZNP_START_##place(ZNP_##S##1, ZNP_##N##0) ZNP_ADC(ZNP_##S##2, ZNP_##N##1)          \
    ZNP_ADC(ZNP_##S##3, ZNP_##N##2) ZNP_ADC_0(ZNP_##N##3)

// Row 0 where the sum is still zero: a single chain, sum to S.
#define ZNP_OPEN_2(place)                                                              \
    ZNP_LOAD(0) ZNP_MULX(0, ZNP_S0) ZNP_FINISH_##place(0, ZNP_LOW)                     \
    ZNP_MULX(1, ZNP_S1) ZNP_START_##place(ZNP_LOW, ZNP_S0) ZNP_ADC_0(ZNP_S1)
#define ZNP_OPEN_3(place)                                                              \
    ZNP_LOAD(0) ZNP_MULX(0, ZNP_S0) ZNP_FINISH_##place(0, ZNP_LOW)                     \
    ZNP_MULX(1, ZNP_S1) ZNP_START_##place(ZNP_LOW, ZNP_S0)                             \
    ZNP_MULX(2, ZNP_S2) ZNP_ADC(ZNP_LOW, ZNP_S1) ZNP_ADC_0(ZNP_S2)
#define ZNP_OPEN_4(place)                                                              \
    ZNP_LOAD(0) ZNP_MULX(0, ZNP_S0) ZNP_FINISH_##place(0, ZNP_LOW)                     \
    ZNP_MULX(1, ZNP_S1) ZNP_START_##place(ZNP_LOW, ZNP_S0)                             \
    ZNP_MULX(2, ZNP_S2) ZNP_ADC(ZNP_LOW, ZNP_S1)                                       \
    ZNP_MULX(3, ZNP_S3) ZNP_ADC(ZNP_LOW, ZNP_S2) ZNP_ADC_0(ZNP_S3)

// What is left of the sum, to T[j..].
#define ZNP_CLOSE_1(j, X) ZNP_STORE(j, ZNP_##X##0)
#define ZNP_CLOSE_2(j, X) ZNP_CLOSE_1(j, X) ZNP_STORE((j + 1), ZNP_##X##1)
#define ZNP_CLOSE_3(j, X) ZNP_CLOSE_2(j, X) ZNP_STORE((j + 2), ZNP_##X##2)
#define ZNP_CLOSE_4(j, X) ZNP_CLOSE_3(j, X) ZNP_STORE((j + 3), ZNP_##X##3)

// clang-format on

// T[0..La + w) = A * B[0..w), or for a later strip the same plus T[0..La). Both sets start at zero; an odd
// number of rows enters at the second row of a pair.
#define ZNP_STRIP(w, place)                                                                              \
    void strip_##w##_##place(c64i* T, const c64i* A, upL_t La, const c64i* B) {                          \
        upL_t pairs = (La + 1) / 2;                                                                      \
        upL_t skipped_bytes = 8 * (La & 1);                                                              \
        asm volatile(                                                                                  \
            "xor %%r8d, %%r8d\n\txor %%r9d, %%r9d\n\txor %%r10d, %%r10d\n\txor %%r11d, %%r11d\n\t"     \
            "xor %%r12d, %%r12d\n\txor %%r13d, %%r13d\n\txor %%r14d, %%r14d\n\txor %%r15d, %%r15d\n\t" \
            "sub %%rdx, %%rsi\n\tsub %%rdx, %%rdi\n\ttest %%rdx, %%rdx\n\tjnz 2f\n\t.p2align 4\n"      \
            "1:\n\t" ZNP_ROW_##w(place, 0, S, N) "2:\n\t" ZNP_ROW_##w(                                 \
                place, 1,                                                                              \
                N, S) "lea 16(%%rsi), %%rsi\n\tlea 16(%%rdi), %%rdi\n\tdec %%rax\n\tjnz "              \
                      "1b\n\t" ZNP_CLOSE_##w(0, S)                                                     \
            : "+D"(T), "+S"(A), "+a"(pairs), "+d"(skipped_bytes)                                       \
            : "c"(B)                                                                                   \
            : ZNP_WORK); \
    }
ZNP_STRIP(2, first)
ZNP_STRIP(3, first)
ZNP_STRIP(4, first)
ZNP_STRIP(4, later)

// clang-format off

// All rows of a strip of w words, by the number of rows.
#define ZNP_ROWS_2(w, place) ZNP_OPEN_##w(place) ZNP_ROW_##w(place, 1, S, N) ZNP_CLOSE_##w(2, N)
#define ZNP_PAIRS_3(w, place) ZNP_OPEN_##w(place) ZNP_ROW_##w(place, 1, S, N) ZNP_ROW_##w(place, 2, N, S)
#define ZNP_ROWS_3(w, place) ZNP_PAIRS_3(w, place) ZNP_CLOSE_##w(3, S)
#define ZNP_ROWS_4(w, place) ZNP_PAIRS_3(w, place) ZNP_ROW_##w(place, 3, S, N) ZNP_CLOSE_##w(4, N)
#define ZNP_PAIRS_5(w, place) ZNP_PAIRS_3(w, place) ZNP_ROW_##w(place, 3, S, N) ZNP_ROW_##w(place, 4, N, S)
#define ZNP_ROWS_5(w, place) ZNP_PAIRS_5(w, place) ZNP_CLOSE_##w(5, S)
#define ZNP_ROWS_6(w, place) ZNP_PAIRS_5(w, place) ZNP_ROW_##w(place, 5, S, N) ZNP_CLOSE_##w(6, N)
#define ZNP_PAIRS_7(w, place) ZNP_PAIRS_5(w, place) ZNP_ROW_##w(place, 5, S, N) ZNP_ROW_##w(place, 6, N, S)
#define ZNP_ROWS_7(w, place) ZNP_PAIRS_7(w, place) ZNP_CLOSE_##w(7, S)
#define ZNP_ROWS_8(w, place) ZNP_PAIRS_7(w, place) ZNP_ROW_##w(place, 7, S, N) ZNP_CLOSE_##w(8, N)
#define ZNP_PAIRS_9(w, place) ZNP_PAIRS_7(w, place) ZNP_ROW_##w(place, 7, S, N) ZNP_ROW_##w(place, 8, N, S)
#define ZNP_ROWS_9(w, place) ZNP_PAIRS_9(w, place) ZNP_CLOSE_##w(9, S)

// On to the strip w words further up.
#define ZNP_NEXT(w) "lea 8*" #w "(%%rcx), %%rcx\n\tlea 8*" #w "(%%rdi), %%rdi\n\t"

#define ZNP_PRODUCT(n, rows)                                                                     \
    void product_##n(c64i* T, const c64i* A, const c64i* B) {                                    \
        asm volatile(rows : "+D"(T), "+c"(B) : "S"(A) : "rdx", ZNP_WORK);                        \
    }
ZNP_PRODUCT(2, ZNP_ROWS_2(2, first))
ZNP_PRODUCT(3, ZNP_ROWS_3(3, first))
ZNP_PRODUCT(4, ZNP_ROWS_4(4, first))
ZNP_PRODUCT(5, ZNP_ROWS_5(3, first) ZNP_NEXT(3) ZNP_ROWS_5(2, later))
ZNP_PRODUCT(6, ZNP_ROWS_6(3, first) ZNP_NEXT(3) ZNP_ROWS_6(3, later))
ZNP_PRODUCT(7, ZNP_ROWS_7(4, first) ZNP_NEXT(4) ZNP_ROWS_7(3, later))
ZNP_PRODUCT(8, ZNP_ROWS_8(4, first) ZNP_NEXT(4) ZNP_ROWS_8(4, later))
ZNP_PRODUCT(9, ZNP_ROWS_9(3, first) ZNP_NEXT(3) ZNP_ROWS_9(3, later) ZNP_NEXT(3) ZNP_ROWS_9(3, later))

// clang-format on

// The first strip of one word, also where the words are not aligned.
void mul_word(c64i* T, const c64i* A, upL_t La, const c64i* B) {
    c64i b;
    __builtin_memcpy(&b, B, sizeof b);
    Mul1(T, A, La, b);
}

// The strips of B, each against La words of A. For a whole product these are the same words, and the strips
// lie one above the other; for a middle product each strip takes the words of A that bring it to the place of
// the first one.
enum class Strips { whole, middle };

ZNP_INLINE void mul_strips(Strips kind, c64i* T, const c64i* A, upL_t La, const c64i* B, upL_t Lb) {
    upL_t done = Lb & 3;
    switch (done) {
        case 0:
            strip_4_first(T, A, La, B);
            done = 4;
            break;
        case 1:
            mul_word(T, A, La, B);
            break;
        case 2:
            strip_2_first(T, A, La, B);
            break;
        case 3:
            strip_3_first(T, A, La, B);
            break;
    }
    for (; done < Lb; done += 4) {
        if (kind == Strips::whole) {
            strip_4_later(T + done, A, La, B + done);
        } else {
            strip_4_later(T, A - done, La, B + done);
        }
    }
}

}  // namespace

void elmB(c64i* T, const c64i* A, const c64i* B, upL_t n) {
    switch (n) {
        case 1: {
            c64i a, b;
            __builtin_memcpy(&a, A, sizeof a);
            __builtin_memcpy(&b, B, sizeof b);
            const u128_t P = static_cast<u128_t>(a) * b;
            __builtin_memcpy(T, &P, sizeof P);
            return;
        }
        case 2:
            return product_2(T, A, B);
        case 3:
            return product_3(T, A, B);
        case 4:
            return product_4(T, A, B);
        case 5:
            return product_5(T, A, B);
        case 6:
            return product_6(T, A, B);
        case 7:
            return product_7(T, A, B);
        case 8:
            return product_8(T, A, B);
        case 9:
            return product_9(T, A, B);
        default:
            return mul_strips(Strips::whole, T, A, n, B, n);
    }
}

// The longer operand gives the rows.
void mulB(c64i* T, const c64i* A, upL_t La, const c64i* B, upL_t Lb) {
    if (La == Lb) {
        elmB(T, A, B, La);
    } else if (La > Lb) {
        mul_strips(Strips::whole, T, A, La, B, Lb);
    } else {
        mul_strips(Strips::whole, T, B, Lb, A, La);
    }
}

void middleB(c64i* T, const c64i* A, const c64i* B, upL_t Lb, upL_t n) {
    mul_strips(Strips::middle, T, A + (Lb - 4), n + 4, B, Lb);
}

// Nothing above (Mul1 included) reads or writes words but by instructions and copies that take any address.
void mulB_unaligned(void* T, const void* A, upL_t La, const void* B, upL_t Lb) {
    mulB(static_cast<c64i*>(T), static_cast<const c64i*>(A), La, static_cast<const c64i*>(B), Lb);
}

}  // namespace znp::bkt
