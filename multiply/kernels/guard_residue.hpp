// Guard residues: residues modulo the prime q = 5934022103656221527, of 63 bits.
//
// The order of 2 modulo q is (q - 1) / 14, above 2^58. Modulo 2^61 - 1 it is 61, so that two flipped bits of
// the same number cancel there once in 122 times, and an error that repeats itself can vanish; modulo q two
// bits of any number that fits into memory never cancel. Numbers that are no longer exact carry this residue
// alone, exact floats both.
//
// q divides 5 2^768 + 1: words that lie twelve apart differ in weight by the factor -1/5, which lets vectors
// sum up words without a reduction (guard_residue_kernel.cpp).
//
// All residues are canonical, 0 to q - 1. Serial; the hash costs one pass over the words. Reference in
// residue_reference.hpp; by threads: multiply/hash_by_threads.hpp.
#pragma once

#include <array>

#include "foundation/types.hpp"

namespace znp::guard {

inline constexpr u64_t q = 5934022103656221527u;
inline constexpr u64_t word_base = static_cast<u64_t>((static_cast<u128_t>(1) << 64) % q);  // B = 2^64

ZNP_INLINE constexpr u64_t add(u64_t a, u64_t b) {
    const u64_t s = a + b;
    return s >= q ? s - q : s;
}
ZNP_INLINE constexpr u64_t sub(u64_t a, u64_t b) {
    return a >= b ? a - b : a + q - b;
}

// x modulo q for any x: 2^64 is above 3 q and below 4 q.
ZNP_INLINE constexpr u64_t reduce(u64_t x) {
    if (x >= 2 * q) x -= 2 * q;
    return x >= q ? x - q : x;
}
// x < 2^126 modulo q, below 3 q: a quotient from the top words that is too small by 2 at most. Source: P.
// Barrett, "Implementing the Rivest Shamir and Adleman public key encryption algorithm on a standard digital
// signal processor", 1986.
ZNP_INLINE constexpr u64_t fold(u128_t x) {
    constexpr u64_t inverse = static_cast<u64_t>((static_cast<u128_t>(1) << 126) / q);
    const u64_t top = static_cast<u64_t>(x >> 62);
    const u64_t quotient = static_cast<u64_t>((static_cast<u128_t>(top) * inverse) >> 64);
    return static_cast<u64_t>(x) - quotient * q;
}
ZNP_INLINE constexpr u64_t mul(u64_t a, u64_t b) {
    return reduce(fold(static_cast<u128_t>(a) * b));
}

// h = (h B + word) mod q from the top word down, starting at seed (any 64-bit value). L may be 0.
u64_t hash_words(const c64i* T, upL_t L, u64_t seed = 0);

ZNP_INLINE constexpr u64_t pow(u64_t x, u64_t e) {
    u64_t h = 1;
    for (; e != 0; e >>= 1, x = mul(x, x)) {
        if ((e & 1) != 0) h = mul(h, x);
    }
    return h;
}

// Powers B^(2^i) and their inverses.
inline constexpr auto word_powers = [] {
    std::array<std::array<u64_t, 64>, 2> powers{};
    u64_t up = word_base, down = pow(word_base, q - 2);
    for (unsigned i = 0; i < 64; i++, up = mul(up, up), down = mul(down, down)) {
        powers[0][i] = up;
        powers[1][i] = down;
    }
    return powers;
}();

// (2^64)^e mod q, also for negative e: a product for each binary digit of e that is one.
constexpr u64_t word_power(s64_t e) {
    const auto& powers = word_powers[e < 0 ? 1 : 0];
    u64_t h = 1;
    u64_t n = e < 0 ? u64_t{0} - static_cast<u64_t>(e) : static_cast<u64_t>(e);
    for (unsigned i = 0; n != 0; n >>= 1, i++) {
        if ((n & 1) != 0) h = mul(h, powers[i]);
    }
    return h;
}
// x (2^64)^e
constexpr u64_t shift_words(u64_t x, s64_t e) {
    return e == 0 ? x : mul(x, word_power(e));
}

}  // namespace znp::guard
