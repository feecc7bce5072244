#include "multiply/bkt/karatsuba.hpp"

#include <cstring>
#include <type_traits>
#include <utility>

#include "multiply/bkt/basecase.hpp"
#include "multiply/bkt/karatsuba_combine.hpp"
#include "multiply/kernels/carry_chains.hpp"
#include "multiply/kernels/word_arrays.hpp"

namespace znp::bkt {

constinit upL_t kar_sqr_c32i = 22;
constinit upL_t kar_mul_c32i = 14;
constinit upL_t kar_sqr_c64i = 13;
constinit upL_t kar_mul_c64i = 10;

namespace {

template <class word>
ZNP_INLINE upL_t kar_sqr() {
    return std::is_same_v<word, c32i> ? kar_sqr_c32i : kar_sqr_c64i;
}
template <class word>
ZNP_INLINE upL_t kar_mul() {
    return std::is_same_v<word, c32i> ? kar_mul_c32i : kar_mul_c64i;
}

// Scratch words of all levels of a split operation: a level of n words keeps the product of the differences,
// 2 ceil(n / 2) words, while its three products run, one after the other, in what follows.
upL_t scratch_words(upL_t threshold, upL_t n) {
    upL_t total = 0;
    while (n >= threshold) {
        n += n & 1;
        total += n;
        n /= 2;
    }
    return total;
}

template <class word>
void elm_split(const word* A, const word* B, upL_t n, word* T, word* S);

template <class word>
ZNP_INLINE void elm_inline(const word* A, const word* B, upL_t n, word* T, word* S) {
    if (n < kar_mul<word>()) {
        elmB(T, A, B, n);
    } else {
        elm_split(A, B, n, T, S);
    }
}

// The differences lie in T, which the lower product overwrites once the middle one has consumed them.
template <class word>
void elm_split(const word* A, const word* B, upL_t n, word* T, word* S) {
    const upL_t h = (n + 1) / 2;
    const upL_t u = n - h;
    const bool A_ge = ADDv2::cmp_halves(A, h, A + h, u);
    const bool B_ge = ADDv2::cmp_halves(B, h, B + h, u);
    ADDv2::sub_halves2(T, A, A_ge, T + h, B, B_ge, n);
    word* const rest = S + 2 * h;
    elm_inline(T, T + h, h, S, rest);
    elm_inline(A, B, h, T, rest);
    elm_inline(A + h, B + h, u, T + 2 * h, rest);
    combine(T, S, n, A_ge == B_ge);
}

template <class word>
void sqr_any(const word* A, upL_t n, word* T, word* S);

template <class word>
void sqr_split(const word* A, upL_t n, word* T, word* S) {
    const upL_t h = (n + 1) / 2;
    const upL_t u = n - h;
    ADDv2::sub_halves(T, A, n, ADDv2::cmp_halves(A, h, A + h, u));
    word* const rest = S + 2 * h;
    // 32-bit words: each square decides for itself. 64-bit words: one decision for all three; their basecase
    // is the general product, so its threshold counts.
    if (std::is_same_v<word, c32i> || u >= kar_mul<word>()) {
        sqr_any(T, h, S, rest);
        sqr_any(A, h, T, rest);
        sqr_any(A + h, u, T + 2 * h, rest);
    } else {
        sqrB(S, T, h);
        sqrB(T, A, h);
        sqrB(T + 2 * h, A + h, u);
    }
    combine(T, S, n, true);
}

template <class word>
void sqr_any(const word* A, upL_t n, word* T, word* S) {
    if (n < kar_sqr<word>()) {
        sqrB(T, A, n);
    } else {
        sqr_split(A, n, T, S);
    }
}

template <class word>
void copy_words(word* T, const word* A, upL_t L) {
    std::memcpy(T, A, L * sizeof(word));
}

// T[0..2 Lb) += S[0..2 Lb), with `above` words of T over that.
template <class word>
void add_product(word* T, const word* S, upL_t Lb, upL_t above) {
    const bool carry = add_words(T, T, S, 2 * Lb);
    ADDv2::add_ripple(T + 2 * Lb, above, carry);
}

// The same where only T[0..Lb) has been written so far.
template <class word>
void add_last_product(word* T, const word* S, upL_t Lb) {
    const bool carry = add_words(T, T, S, Lb);
    copy_words(T + Lb, S + Lb, Lb);
    ADDv2::add_ripple(T + Lb, Lb, carry);
}

template <class word>
void mul_any(const word* A, upL_t La, const word* B, upL_t Lb, word* T, word* S);

// La > 2 Lb, Lb at or above the threshold: pieces of Lb words. T[0..done + Lb) holds the product of the first
// `done` words. Products that land in T come first, so that all of S is free for them.
template <class word>
void mul_long(const word* A, upL_t La, const word* B, upL_t Lb, word* T, word* S) {
    word* const rest = S + 2 * Lb;
    elm_inline(A, B, Lb, T, S);
    upL_t done = Lb;
    while (La - done >= 3 * Lb) {
        elm_inline(A + done + Lb, B, Lb, T + done + Lb, S);
        elm_inline(A + done, B, Lb, S, rest);
        add_product(T + done, S, Lb, Lb);
        done += 2 * Lb;
    }
    if (La - done > 2 * Lb) {
        elm_inline(A + done, B, Lb, S, rest);
        add_last_product(T + done, S, Lb);
        done += Lb;
    }
    const upL_t top = La - done - Lb;
    if (top == 0) {
        elm_inline(A + done, B, Lb, S, rest);
        add_last_product(T + done, S, Lb);
        return;
    }
    mul_any(B, Lb, A + done + Lb, top, T + done + Lb, S);
    elm_inline(A + done, B, Lb, S, rest);
    add_product(T + done, S, Lb, top);
}

template <class word>
void mul_any(const word* A, upL_t La, const word* B, upL_t Lb, word* T, word* S) {
    if (La < Lb) std::swap(A, B), std::swap(La, Lb);
    if (La == Lb) {
        elm_inline(A, B, La, T, S);
    } else if (Lb < kar_mul<word>()) {
        mulB(T, A, La, B, Lb);
    } else if (La <= 2 * Lb) {
        // The upper part first: it may then use all of S, and 2 Lb words beside the levels of one product of
        // Lb words are enough.
        mul_any(B, Lb, A + Lb, La - Lb, T + Lb, S);
        elm_inline(A, B, Lb, S, S + 2 * Lb);
        copy_words(T, S, Lb);
        const bool carry = add_words(T + Lb, T + Lb, S + Lb, Lb);
        ADDv2::add_ripple(T + 2 * Lb, La - Lb, carry);
    } else {
        mul_long(A, La, B, Lb, T, S);
    }
}

}  // namespace

void sqr(const c32i* A, upL_t n, c32i* T, c32i* S) {
    sqr_any(A, n, T, S);
}
void sqr(const c64i* A, upL_t n, c64i* T, c64i* S) {
    sqr_any(A, n, T, S);
}
void elm(const c32i* A, const c32i* B, upL_t n, c32i* T, c32i* S) {
    elm_inline(A, B, n, T, S);
}
void elm(const c64i* A, const c64i* B, upL_t n, c64i* T, c64i* S) {
    elm_inline(A, B, n, T, S);
}
void mul(const c32i* A, upL_t La, const c32i* B, upL_t Lb, c32i* T, c32i* S) {
    mul_any(A, La, B, Lb, T, S);
}
void mul(const c64i* A, upL_t La, const c64i* B, upL_t Lb, c64i* T, c64i* S) {
    mul_any(A, La, B, Lb, T, S);
}

template <class word>
upL_t sqr_bytes(upL_t n) {
    return sizeof(word) * scratch_words(kar_sqr<word>(), n);
}
template <class word>
upL_t elm_bytes(upL_t n) {
    return sizeof(word) * scratch_words(kar_mul<word>(), n);
}
template <class word>
upL_t mul_bytes(upL_t La, upL_t Lb) {
    const upL_t m = La < Lb ? La : Lb;
    return m < kar_mul<word>() ? 0 : sizeof(word) * (scratch_words(kar_mul<word>(), m) + 2 * m);
}

template upL_t sqr_bytes<c32i>(upL_t);
template upL_t sqr_bytes<c64i>(upL_t);
template upL_t elm_bytes<c32i>(upL_t);
template upL_t elm_bytes<c64i>(upL_t);
template upL_t mul_bytes<c32i>(upL_t, upL_t);
template upL_t mul_bytes<c64i>(upL_t, upL_t);

}  // namespace znp::bkt
