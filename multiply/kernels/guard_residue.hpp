// Guard residues: residues modulo the prime q = 2^63 - 165.
//
// 2 is a primitive root modulo q. Modulo 2^61 - 1 it has order 61, so that two flipped bits of the same
// number cancel there once in 122 times, and an error that repeats itself can vanish; modulo q two bits
// cancel only at a distance of (q - 1) / 2. Numbers that are no longer exact carry this residue alone, exact
// floats both.
//
// All residues are canonical, 0 to q - 1. Serial; the hash costs one pass over the words, some 4 bytes a
// cycle. Reference in residue_reference.hpp; by threads: multiply/hash_by_threads.hpp.
#pragma once

#include <array>

#include "foundation/types.hpp"

namespace znp::guard {

inline constexpr u64_t gap = 165;
inline constexpr u64_t q = (u64_t{1} << 63) - gap;
inline constexpr u64_t word_base = 2 * gap;  // 2^64 mod q

ZNP_INLINE constexpr u64_t add(u64_t a, u64_t b) {
    const u64_t s = a + b;
    return s >= q ? s - q : s;
}
ZNP_INLINE constexpr u64_t sub(u64_t a, u64_t b) {
    return a >= b ? a - b : a + q - b;
}

// x < 2^127 modulo q, below 2^63 + 2^17: two folds by 2^63 = 165, of 2^64 and of 2^9 at most.
ZNP_INLINE constexpr u64_t fold(u128_t x) {
    constexpr u64_t low = ~u64_t{0} >> 1;
    const u128_t s = (static_cast<u64_t>(x) & low) + static_cast<u128_t>(static_cast<u64_t>(x >> 63)) * gap;
    return (static_cast<u64_t>(s) & low) + static_cast<u64_t>(s >> 63) * gap;
}
// x < 2^64
ZNP_INLINE constexpr u64_t reduce(u64_t x) {
    const u64_t s = fold(x);
    return s >= q ? s - q : s;
}
ZNP_INLINE constexpr u64_t mul(u64_t a, u64_t b) {
    const u64_t s = fold(static_cast<u128_t>(a) * b);
    return s >= q ? s - q : s;
}

// h = (h B + word) mod q from the top word down, starting at seed (any 64-bit value). L may be 0.
u64_t hash_words(const c64i* T, upL_t L, u64_t seed = 0);

constexpr u64_t pow(u64_t x, u64_t e) {
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
