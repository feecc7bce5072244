#include "multiply/kernels/word_multiply.hpp"

namespace znp {

template <class word>
void Mul1_reference(word* T, const word* A, upL_t L, word w) {
    using wide = typename WordTraits<word>::wide;
    wide acc = 0;
    for (upL_t i = 0; i < L; i++) {
        acc = (acc >> WordTraits<word>::bits) + static_cast<wide>(A[i]) * w;
        T[i] = static_cast<word>(acc);
    }
    T[L] = static_cast<word>(acc >> WordTraits<word>::bits);
}

template <class word>
word MulW_reference(word* T, upL_t L, word w, word carry) {
    using wide = typename WordTraits<word>::wide;
    wide acc = carry;
    for (upL_t i = 0; i < L; i++) {
        acc += static_cast<wide>(T[i]) * w;
        T[i] = static_cast<word>(acc);
        acc >>= WordTraits<word>::bits;
    }
    return static_cast<word>(acc);
}

template void Mul1_reference(c32i*, const c32i*, upL_t, c32i);
template void Mul1_reference(c64i*, const c64i*, upL_t, c64i);
template c32i MulW_reference(c32i*, upL_t, c32i, c32i);
template c64i MulW_reference(c64i*, upL_t, c64i, c64i);

void Mul1(c32i* T, const c32i* A, upL_t L, c32i w) {
    Mul1_reference(T, A, L, w);
}

c32i MulW(c32i* T, upL_t L, c32i w, c32i carry) {
    return MulW_reference(T, L, w, carry);
}

}  // namespace znp
