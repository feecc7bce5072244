#include "multiply/kernels/word_arrays.hpp"

#include <algorithm>

#include "multiply/kernels/carry_loop.hpp"

namespace znp {

bool add_words(c64i* T, const c64i* A, const c64i* B, upL_t L, bool carry) {
    return add_loop(T, A, B, L, carry);
}
bool sub_words(c64i* T, const c64i* A, const c64i* B, upL_t L, bool borrow) {
    return sub_loop(T, A, B, L, borrow);
}

// Two little-endian 32-bit words are one of 64 bits; an odd word is the top.
bool add_words(c32i* T, const c32i* A, const c32i* B, upL_t L, bool carry) {
    carry = add_loop(T, A, B, L / 2, carry);
    if (L % 2 == 0) return carry;
    const u64_t sum = u64_t{A[L - 1]} + B[L - 1] + u64_t{carry};
    T[L - 1] = static_cast<c32i>(sum);
    return sum >> 32 != 0;
}
bool sub_words(c32i* T, const c32i* A, const c32i* B, upL_t L, bool borrow) {
    borrow = sub_loop(T, A, B, L / 2, borrow);
    if (L % 2 == 0) return borrow;
    const u64_t difference = u64_t{A[L - 1]} - B[L - 1] - u64_t{borrow};
    T[L - 1] = static_cast<c32i>(difference);
    return difference >> 32 != 0;
}

template <class word>
bool copy_add_carry(word* T, const word* A, upL_t L, bool carry) {
    upL_t i = 0;
    for (; carry && i < L; i++) {
        T[i] = A[i] + 1;
        carry = T[i] == 0;
    }
    if (T != A) std::copy(A + i, A + L, T + i);
    return carry;
}

template <class word>
bool copy_sub_borrow(word* T, const word* A, upL_t L, bool borrow) {
    upL_t i = 0;
    for (; borrow && i < L; i++) {
        borrow = A[i] == 0;
        T[i] = A[i] - 1;
    }
    if (T != A) std::copy(A + i, A + L, T + i);
    return borrow;
}

template <class word>
bool negate_words(word* T, const word* A, upL_t L, bool borrow) {
    for (upL_t i = 0; i < L; i++) {
        const word a = A[i];
        T[i] = static_cast<word>(word{0} - a - (borrow ? 1 : 0));
        borrow = borrow || a != 0;
    }
    return borrow;
}

template bool copy_add_carry(c32i*, const c32i*, upL_t, bool);
template bool copy_add_carry(c64i*, const c64i*, upL_t, bool);
template bool copy_sub_borrow(c32i*, const c32i*, upL_t, bool);
template bool copy_sub_borrow(c64i*, const c64i*, upL_t, bool);
template bool negate_words(c32i*, const c32i*, upL_t, bool);
template bool negate_words(c64i*, const c64i*, upL_t, bool);

}  // namespace znp
