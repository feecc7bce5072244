// The recombination of 64-bit words by add-with-carry chains.
//
// Names as in the plain form: L = L1 B^h + L0 and U = U1 B^h + U0 are the outer products, M = M1 B^h + M0 the
// middle one. A subtraction of M is the addition of its complement and one, less one above M's top; so one
// code serves both signs, and no branch depends on them.

#include <immintrin.h>

#include "multiply/bkt/karatsuba_combine.hpp"
#include "multiply/kernels/carry_chains.hpp"

namespace znp::bkt {

namespace {

// Carries between blocks, 0 or 1: of L1 + U0, which goes to both sums; of the outer words L0 and U1; of M.
struct Carries {
    unsigned char common;
    unsigned char outer;
    unsigned char middle;
};

// M[0..L) = ~M if the flag is set; L is even.
ZNP_INLINE void complement_if(c64i* M, upL_t L, bool flag) {
    const __m256i mask = _mm256_set1_epi64x(flag ? -1 : 0);
    upL_t i = 0;
    for (; i + 4 <= L; i += 4) {
        auto* const at = reinterpret_cast<__m256i*>(M + i);
        _mm256_storeu_si256(at, _mm256_xor_si256(_mm256_loadu_si256(at), mask));
    }
    if (i < L) {
        auto* const at = reinterpret_cast<__m128i*>(M + i);
        _mm_storeu_si128(at, _mm_xor_si128(_mm_loadu_si128(at), _mm256_castsi256_si128(mask)));
    }
}

// clang-format off

// Blocks of one to eight words, word i in its own register.
#define ZNP_WORDS_1(F) F(0, r8)
#define ZNP_WORDS_2(F) ZNP_WORDS_1(F) F(1, r9)
#define ZNP_WORDS_3(F) ZNP_WORDS_2(F) F(2, r10)
#define ZNP_WORDS_4(F) ZNP_WORDS_3(F) F(3, r11)
#define ZNP_WORDS_5(F) ZNP_WORDS_4(F) F(4, r12)
#define ZNP_WORDS_6(F) ZNP_WORDS_5(F) F(5, r13)
#define ZNP_WORDS_7(F) ZNP_WORDS_6(F) F(6, r14)
#define ZNP_WORDS_8(F) ZNP_WORDS_7(F) F(7, r15)

// T in rdi, 8 h in rdx, M in rsi. A carry byte of 1 becomes the carry flag when 255 is added to it.
#define ZNP_AT_0(i)  "8*" #i "(%%rdi)"
#define ZNP_AT_H(i)  "8*" #i "(%%rdi,%%rdx)"
#define ZNP_AT_2H(i) "8*" #i "(%%rdi,%%rdx,2)"
#define ZNP_AT_M(i)  "8*" #i "(%%rsi)"
#define ZNP_RESTORE(carry) "add $-1, " carry "\n\t"
#define ZNP_SAVE(carry)    "setc " carry "\n\t"

#define ZNP_LOAD_0(i, r)    "mov " ZNP_AT_0(i) ", %%" #r "\n\t"
#define ZNP_LOAD_H(i, r)    "mov " ZNP_AT_H(i) ", %%" #r "\n\t"
#define ZNP_ADC_0(i, r)     "adc " ZNP_AT_0(i) ", %%" #r "\n\t"
#define ZNP_ADC_H(i, r)     "adc " ZNP_AT_H(i) ", %%" #r "\n\t"
#define ZNP_ADC_2H(i, r)    "adc " ZNP_AT_2H(i) ", %%" #r "\n\t"
#define ZNP_ADC_M(i, r)     "adc " ZNP_AT_M(i) ", %%" #r "\n\t"
#define ZNP_ADC_ZERO(i, r)  "adc $0, %%" #r "\n\t"
#define ZNP_STORE_0(i, r)   "mov %%" #r ", " ZNP_AT_0(i) "\n\t"
#define ZNP_STORE_H(i, r)   "mov %%" #r ", " ZNP_AT_H(i) "\n\t"
#define ZNP_STORE_2H(i, r)  "mov %%" #r ", " ZNP_AT_2H(i) "\n\t"

// Words of the sum at h: L1 + U0, which is also left at 2h, then L0 and M0.
#define ZNP_LOWER_BLOCK(k)                                                                   \
    asm volatile(ZNP_RESTORE("%%al") ZNP_WORDS_##k(ZNP_LOAD_H_ADC_2H) ZNP_SAVE("%%al")       \
                 ZNP_WORDS_##k(ZNP_STORE_2H)                                                 \
                 ZNP_RESTORE("%%cl") ZNP_WORDS_##k(ZNP_ADC_0) ZNP_SAVE("%%cl")               \
                 ZNP_RESTORE("%%bl") ZNP_WORDS_##k(ZNP_ADC_M) ZNP_SAVE("%%bl")               \
                 ZNP_WORDS_##k(ZNP_STORE_H)                                                  \
                 : "+a"(c.common), "+c"(c.outer), "+b"(c.middle)                             \
                 : "D"(T), "d"(8 * h), "S"(M)                                                \
                 : "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15", "cc", "memory")
#define ZNP_LOAD_H_ADC_2H(i, r) ZNP_LOAD_H(i, r) ZNP_ADC_2H(i, r)

// Words of the sum at 2h: L1 + U0 as left there, then U1 and M1. Where U1 has ended, only its carry.
#define ZNP_UPPER_BLOCK(k, add_U1)                                                           \
    asm volatile(ZNP_RESTORE("%%cl") ZNP_WORDS_##k(add_U1) ZNP_SAVE("%%cl")                  \
                 ZNP_RESTORE("%%bl") ZNP_WORDS_##k(ZNP_ADC_M) ZNP_SAVE("%%bl")               \
                 ZNP_WORDS_##k(ZNP_STORE_0)                                                  \
                 : "+c"(c.outer), "+b"(c.middle)                                             \
                 : "D"(T), "d"(8 * h), "S"(M)                                                \
                 : "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15", "cc", "memory")
#define ZNP_LOAD_ADC_U1(i, r) ZNP_LOAD_0(i, r) ZNP_ADC_H(i, r)
#define ZNP_LOAD_ADC_ZERO(i, r) ZNP_LOAD_0(i, r) ZNP_ADC_ZERO(i, r)

// clang-format on

ZNP_INLINE void lower_block(c64i* T, const c64i* M, upL_t h, upL_t words, Carries& c) {
    switch (words) {
        case 1:
            ZNP_LOWER_BLOCK(1);
            break;
        case 2:
            ZNP_LOWER_BLOCK(2);
            break;
        case 3:
            ZNP_LOWER_BLOCK(3);
            break;
        case 4:
            ZNP_LOWER_BLOCK(4);
            break;
        case 5:
            ZNP_LOWER_BLOCK(5);
            break;
        case 6:
            ZNP_LOWER_BLOCK(6);
            break;
        case 7:
            ZNP_LOWER_BLOCK(7);
            break;
        default:
            ZNP_LOWER_BLOCK(8);
            break;
    }
}

// T and M at 2h and h.
ZNP_INLINE void upper_block(c64i* T, const c64i* M, upL_t h, upL_t words, Carries& c) {
    switch (words) {
        case 1:
            ZNP_UPPER_BLOCK(1, ZNP_LOAD_ADC_U1);
            break;
        case 2:
            ZNP_UPPER_BLOCK(2, ZNP_LOAD_ADC_U1);
            break;
        case 3:
            ZNP_UPPER_BLOCK(3, ZNP_LOAD_ADC_U1);
            break;
        case 4:
            ZNP_UPPER_BLOCK(4, ZNP_LOAD_ADC_U1);
            break;
        case 5:
            ZNP_UPPER_BLOCK(5, ZNP_LOAD_ADC_U1);
            break;
        case 6:
            ZNP_UPPER_BLOCK(6, ZNP_LOAD_ADC_U1);
            break;
        case 7:
            ZNP_UPPER_BLOCK(7, ZNP_LOAD_ADC_U1);
            break;
        default:
            ZNP_UPPER_BLOCK(8, ZNP_LOAD_ADC_U1);
            break;
    }
}

// The last two words of the sum at 2h for odd n.
ZNP_INLINE void upper_tail(c64i* T, const c64i* M, upL_t h, Carries& c) {
    ZNP_UPPER_BLOCK(2, ZNP_LOAD_ADC_ZERO);
}

// T[0..L) += carry, L >= 1; returns what leaves the top. The first step has no branch on the carry itself,
// which is as good as random; that it goes further is rare.
ZNP_INLINE s64_t add_small(c64i* T, upL_t L, s64_t carry) {
    const c64i before = T[0];
    T[0] = before + static_cast<c64i>(carry);
    const s64_t out = (T[0] < before ? 1 : 0) + (carry >> 63);
    if (__builtin_expect(out == 0, 1)) return 0;
    return ADDv2::add_ripple(T + 1, L - 1, out);
}

}  // namespace

void combine(c64i* T, c64i* M, upL_t n, bool subtract) {
    constexpr upL_t block = 8;
    const upL_t h = (n + 1) / 2;
    const upL_t U1_length = 2 * n - 3 * h;  // h, or h - 2 if n is odd
    complement_if(M, 2 * h, subtract);

    Carries c{0, 0, subtract};
    upL_t i = 0;
    for (; h - i > block; i += block) lower_block(T + i, M + i, h, block, c);
    lower_block(T + i, M + i, h, h - i, c);

    // The carry of L1 + U0 belongs to 2h and, with what remains of it, to 3h. It must not run into U1 itself,
    // which is still to be added at 2h.
    c64i* const T2 = T + 2 * h;
    const s64_t common = c.common;
    const s64_t through = add_small(T2, h, common);

    c64i* const M1 = M + h;
    for (i = 0; U1_length - i > block; i += block) upper_block(T2 + i, M1 + i, h, block, c);
    if (U1_length > i) upper_block(T2 + i, M1 + i, h, U1_length - i, c);
    if (U1_length < h) upper_tail(T2 + U1_length, M1 + U1_length, h, c);
    if (U1_length == 0) return;  // n = 3: nothing lies above
    add_small(T + 3 * h, U1_length, common + through + c.outer + c.middle - subtract);
}

}  // namespace znp::bkt
