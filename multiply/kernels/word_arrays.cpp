#include "multiply/kernels/word_arrays.hpp"

#include <x86intrin.h>

#include <algorithm>

namespace znp {

namespace {

struct Add {
    static unsigned char step(unsigned char carry, u64_t a, u64_t b, unsigned long long* t) {
        return _addcarry_u64(carry, a, b, t);
    }
    static unsigned char step(unsigned char carry, u32_t a, u32_t b, u32_t* t) {
        return _addcarry_u32(carry, a, b, t);
    }
};

struct Subtract {
    static unsigned char step(unsigned char borrow, u64_t a, u64_t b, unsigned long long* t) {
        return _subborrow_u64(borrow, a, b, t);
    }
    static unsigned char step(unsigned char borrow, u32_t a, u32_t b, u32_t* t) {
        return _subborrow_u32(borrow, a, b, t);
    }
};

template <class Operation, class word>
unsigned char one_word(unsigned char carry, word* T, const word* A, const word* B) {
    if constexpr (sizeof(word) == sizeof(u32_t)) {
        return Operation::step(carry, *A, *B, T);
    } else {
        unsigned long long t;
        carry = Operation::step(carry, *A, *B, &t);
        *T = t;
        return carry;
    }
}

// Four words a turn, so that the carry goes through memory once in four words.
template <class Operation, class word>
bool chain(word* T, const word* A, const word* B, upL_t L, bool carry_in) {
    unsigned char carry = carry_in ? 1 : 0;
    upL_t i = 0;
    for (; i + 4 <= L; i += 4) {
        carry = one_word<Operation>(carry, T + i, A + i, B + i);
        carry = one_word<Operation>(carry, T + i + 1, A + i + 1, B + i + 1);
        carry = one_word<Operation>(carry, T + i + 2, A + i + 2, B + i + 2);
        carry = one_word<Operation>(carry, T + i + 3, A + i + 3, B + i + 3);
    }
    for (; i < L; i++) carry = one_word<Operation>(carry, T + i, A + i, B + i);
    return carry != 0;
}

}  // namespace

bool add_words(c32i* T, const c32i* A, const c32i* B, upL_t L, bool carry) {
    return chain<Add>(T, A, B, L, carry);
}
bool add_words(c64i* T, const c64i* A, const c64i* B, upL_t L, bool carry) {
    return chain<Add>(T, A, B, L, carry);
}
bool sub_words(c32i* T, const c32i* A, const c32i* B, upL_t L, bool borrow) {
    return chain<Subtract>(T, A, B, L, borrow);
}
bool sub_words(c64i* T, const c64i* A, const c64i* B, upL_t L, bool borrow) {
    return chain<Subtract>(T, A, B, L, borrow);
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
