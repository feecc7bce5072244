#include "multiply/kernels/carry_chains.hpp"

namespace znp::ADDv2 {

// Carries and borrows travel in a signed accumulator of twice the word's width: each step shifts it down by
// a word, arithmetically, and adds the step's terms.
template <class word>
using accumulator = typename WordTraits<word>::accumulator;

template <class word>
bool cmp_halves_reference(const word* A, upL_t La, const word* B, upL_t Lb) {
    if (La > Lb && A[La - 1] != 0) return true;
    upL_t i = Lb - 1;
    while (i > 0 && A[i] == B[i]) i--;
    return A[i] >= B[i];
}

template <class word>
void sub_halves_reference(word* D, const word* A, upL_t n, bool lower_ge) {
    const upL_t h = (n + 1) / 2;
    const word* large = lower_ge ? A : A + h;
    const word* small = lower_ge ? A + h : A;
    accumulator<word> acc = 0;
    for (upL_t i = 0; i < n - h; i++) {
        acc = (acc >> WordTraits<word>::bits) + large[i] - small[i];
        D[i] = static_cast<word>(acc);
    }
    // A longer lower half: if it is the smaller one, its top word is zero and there is no borrow.
    if (n - h < h) D[h - 1] = static_cast<word>(A[h - 1] + (acc >> WordTraits<word>::bits));
}

template <class word>
s64_t add_ripple_reference(word* T, upL_t L, s64_t carry) {
    for (upL_t i = 0; i < L && carry != 0; i++) {
        const accumulator<word> acc = static_cast<accumulator<word>>(T[i]) + carry;
        T[i] = static_cast<word>(acc);
        carry = static_cast<s64_t>(acc >> WordTraits<word>::bits);
    }
    return carry;
}

template bool cmp_halves_reference(const c32i*, upL_t, const c32i*, upL_t);
template bool cmp_halves_reference(const c64i*, upL_t, const c64i*, upL_t);
template void sub_halves_reference(c32i*, const c32i*, upL_t, bool);
template void sub_halves_reference(c64i*, const c64i*, upL_t, bool);
template s64_t add_ripple_reference(c32i*, upL_t, s64_t);
template s64_t add_ripple_reference(c64i*, upL_t, s64_t);

bool cmp_halves(const c32i* A, upL_t La, const c32i* B, upL_t Lb) {
    return cmp_halves_reference(A, La, B, Lb);
}
bool cmp_halves(const c64i* A, upL_t La, const c64i* B, upL_t Lb) {
    return cmp_halves_reference(A, La, B, Lb);
}

void sub_halves(c32i* D, const c32i* A, upL_t n, bool lower_ge) {
    sub_halves_reference(D, A, n, lower_ge);
}

void sub_halves2(c32i* D, const c32i* A, bool A_ge, c32i* E, const c32i* B, bool B_ge, upL_t n) {
    const upL_t h = (n + 1) / 2;
    const c32i* A_large = A_ge ? A : A + h;
    const c32i* A_small = A_ge ? A + h : A;
    const c32i* B_large = B_ge ? B : B + h;
    const c32i* B_small = B_ge ? B + h : B;
    s64_t a = 0;
    s64_t b = 0;
    for (upL_t i = 0; i < n - h; i++) {
        a = (a >> 32) + A_large[i] - A_small[i];
        b = (b >> 32) + B_large[i] - B_small[i];
        D[i] = static_cast<c32i>(a);
        E[i] = static_cast<c32i>(b);
    }
    if (n - h < h) {
        D[h - 1] = static_cast<c32i>(A[h - 1] + (a >> 32));
        E[h - 1] = static_cast<c32i>(B[h - 1] + (b >> 32));
    }
}

s64_t add_ripple(c32i* T, upL_t L, s64_t carry) {
    return add_ripple_reference(T, L, carry);
}
s64_t add_ripple(c64i* T, upL_t L, s64_t carry) {
    return add_ripple_reference(T, L, carry);
}

}  // namespace znp::ADDv2
