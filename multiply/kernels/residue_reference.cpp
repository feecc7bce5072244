#include "multiply/kernels/residue_reference.hpp"

#include "multiply/kernels/guard_residue.hpp"
#include "multiply/kernels/residue.hpp"

namespace znp::residue {

namespace {

// (h 2^32 + word) mod p for a canonical h. Bits 61 and up of the 93-bit sum are bits 29 and up of h; they
// are at most 2^32 - 1, so the sum below stays under 2 p.
u64_t append_word32(u64_t h, c32i word) {
    const u64_t s = (((h << 32) | word) & p) + ((h >> 32) << 3) + ((h >> 29) & 7);
    return s >= p ? s - p : s;
}

}  // namespace

u64_t hash_words32_reference(const c32i* T, upL_t L, u64_t seed) {
    u64_t h = reduce(seed);
    while (L-- != 0) h = append_word32(h, T[L]);
    return h;
}

u64_t hash_words64_reference(const c64i* T, upL_t L, u64_t seed) {
    u64_t h = reduce(seed);
    while (L-- != 0) {
        h = append_word32(h, static_cast<c32i>(T[L] >> 32));
        h = append_word32(h, static_cast<c32i>(T[L]));
    }
    return h;
}

}  // namespace znp::residue

namespace znp::guard {

u64_t hash_words_reference(const c64i* T, upL_t L, u64_t seed) {
    u64_t h = seed % q;
    while (L-- != 0) h = static_cast<u64_t>(((static_cast<u128_t>(h) << 64) | T[L]) % q);
    return h;
}

}  // namespace znp::guard
