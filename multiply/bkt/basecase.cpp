#include "multiply/bkt/basecase.hpp"

#include "multiply/bkt/basecase_kernel.hpp"
#include "multiply/bkt/basecase_reference.hpp"
#include "multiply/kernels/word_multiply.hpp"

namespace znp::bkt {

namespace {

// T[0..L) += A * w; the carry is stored as the new top word T[L].
template <class word>
void add_row(word* T, const word* A, upL_t L, word w) {
    using wide = typename WordTraits<word>::wide;
    wide acc = 0;
    for (upL_t i = 0; i < L; i++) {
        acc = (acc >> WordTraits<word>::bits) + static_cast<wide>(A[i]) * w + T[i];
        T[i] = static_cast<word>(acc);
    }
    T[L] = static_cast<word>(acc >> WordTraits<word>::bits);
}

}  // namespace

template <class word>
void mulB_reference(word* T, const word* A, upL_t La, const word* B, upL_t Lb) {
    if (La < Lb) {
        const word* X = A;
        A = B, B = X;
        const upL_t Lx = La;
        La = Lb, Lb = Lx;
    }
    Mul1_reference(T, A, La, B[0]);
    for (upL_t i = 1; i < Lb; i++) add_row(T + i, A, La, B[i]);
}

template <class word>
void sqrB_reference(word* T, const word* A, upL_t n) {
    using wide = typename WordTraits<word>::wide;
    constexpr unsigned bits = WordTraits<word>::bits;
    if (n == 1) {
        Mul1_reference(T, A, 1, A[0]);
        return;
    }
    Mul1_reference(T + 1, A + 1, n - 1, A[0]);
    for (upL_t i = 1; i + 1 < n; i++) add_row(T + 2 * i + 1, A + i + 1, n - i - 1, A[i]);
    T[0] = 0;
    T[2 * n - 1] = 0;
    word doubled_out = 0;  // top bit of the word below
    wide acc = 0;
    for (upL_t i = 0; i < n; i++) {
        const wide square = static_cast<wide>(A[i]) * A[i];
        const word low = T[2 * i];
        const word high = T[2 * i + 1];
        acc += static_cast<wide>(static_cast<word>((low << 1) | doubled_out)) + static_cast<word>(square);
        T[2 * i] = static_cast<word>(acc);
        acc = (acc >> bits) + static_cast<word>((high << 1) | (low >> (bits - 1))) + (square >> bits);
        T[2 * i + 1] = static_cast<word>(acc);
        acc >>= bits;
        doubled_out = high >> (bits - 1);
    }
}

template void mulB_reference(c32i*, const c32i*, upL_t, const c32i*, upL_t);
template void mulB_reference(c64i*, const c64i*, upL_t, const c64i*, upL_t);
template void sqrB_reference(c32i*, const c32i*, upL_t);
template void sqrB_reference(c64i*, const c64i*, upL_t);

namespace {

// 32-bit words in pairs: since the least significant word comes first, two of them are one 64-bit word of the
// same memory. The 64-bit routine makes the product of all whole pairs, the odd top words add a row each.
void mul_pairs(c32i* T, const c32i* A, upL_t La, const c32i* B, upL_t Lb) {
    const upL_t A_even = La & ~upL_t{1};
    const upL_t B_even = Lb & ~upL_t{1};
    mulB_unaligned(T, A, A_even / 2, B, B_even / 2);
    if (La != A_even) add_row(T + A_even, B, B_even, A[A_even]);
    if (Lb != B_even) add_row(T + B_even, A, La, B[B_even]);
}

}  // namespace

void sqrB(c32i* T, const c32i* A, upL_t n) {
    elmB(T, A, A, n);
}
void sqrB(c64i* T, const c64i* A, upL_t n) {
    elmB(T, A, A, n);
}
void elmB(c32i* T, const c32i* A, const c32i* B, upL_t n) {
    mulB(T, A, n, B, n);
}
void mulB(c32i* T, const c32i* A, upL_t La, const c32i* B, upL_t Lb) {
    if (La == 1) {
        Mul1(T, B, Lb, A[0]);
    } else if (Lb == 1) {
        Mul1(T, A, La, B[0]);
    } else {
        mul_pairs(T, A, La, B, Lb);
    }
}

}  // namespace znp::bkt
