// Residues modulo the Mersenne prime p = 2^61 - 1.
//
// Every exact number carries its value modulo p, updated by these operations and compared with a residue
// computed afresh from the words: a wrong word passes with probability 2^-61. All residues are canonical,
// 0 to p - 1. Serial; the hashes cost one pass over the words.
#pragma once

#include "foundation/types.hpp"

namespace znp::residue {

inline constexpr u64_t p = (u64_t{1} << 61) - 1;

ZNP_INLINE constexpr u64_t add(u64_t a, u64_t b) {
    const u64_t s = a + b;
    return s > p - 1 ? s - p : s;
}
ZNP_INLINE constexpr u64_t sub(u64_t a, u64_t b) {
    return a >= b ? a - b : a + p - b;
}
ZNP_INLINE constexpr u64_t mul(u64_t a, u64_t b) {
    const u128_t P = static_cast<u128_t>(a) * b;
    const u64_t s = (static_cast<u64_t>(P) & p) + static_cast<u64_t>(P >> 61);
    return s >= p ? s - p : s;
}

// x mod p of any 64-bit value: x & p plus x >> 61 is at most p + 7, so one subtraction is enough.
ZNP_INLINE constexpr u64_t reduce(u64_t x) {
    const u64_t s = (x & p) + (x >> 61);
    return s >= p ? s - p : s;
}

// a 2^k mod p for a canonical a and k from 0 to 60: a rotation of 61 bits, because 2^61 = 1 mod p.
ZNP_INLINE constexpr u64_t mul_power_of_2(u64_t a, unsigned k) {
    return ((a << k) & p) | (a >> (61 - k));
}

// h = (h B + word) mod p from the top word down, starting at seed (any 64-bit value). L may be 0. The words
// need no more alignment than their type. About 20 bytes a cycle; references in residue_reference.hpp.
u64_t hash_words32(const c32i* T, upL_t L, u64_t seed);
u64_t hash_words64(const c64i* T, upL_t L, u64_t seed);
inline u64_t hash_words(const c32i* T, upL_t L, u64_t seed = 0) {
    return hash_words32(T, L, seed);
}
inline u64_t hash_words(const c64i* T, upL_t L, u64_t seed = 0) {
    return hash_words64(T, L, seed);
}

// The same for a number in another radix, such as 10^19. Radix and words may be any value.
u64_t hash_radix32(const c32i* T, upL_t L, c32i radix, u64_t seed);
u64_t hash_radix64(const c64i* T, upL_t L, c64i radix, u64_t seed);

u64_t word_power32(s64_t e);      // (2^32)^e mod p, also for negative e
u64_t word_power64(s64_t e);      // (2^64)^e mod p, also for negative e
u64_t pow(u64_t radix, u64_t e);  // radix^e mod p; 1 for e = 0

}  // namespace znp::residue
