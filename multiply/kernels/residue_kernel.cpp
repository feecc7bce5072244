// The word hashes with AVX2.
//
// A step takes 20 words: five vectors ("columns") of four lanes. 2^64 = 8 mod p, so words that lie 20 apart
// differ in weight by 2^1280 = 2^60 = 2^-1 mod p. Read from the bottom up, Horner's rule for a lane is then
//     A = 2 A + word,      the lane's part being A 2^-(steps - 1) at the end,
// without any multiplication or reduction in the loop. For a block of up to 32 steps a lane keeps
//     S = sum of 2^(m-1-k) word_k mod 2^64      and      H = sum of 2^(m-1-k) (word_k >> 32).
// H is at most (2^32 - 1)(2^32 - 1) < 2^64 and so is the same sum over the low halves, which is therefore
// exactly S - (H << 32) mod 2^64. Five vector operations for 32 bytes, and ten independent chains.
#include <immintrin.h>

#include "multiply/kernels/residue.hpp"

namespace znp::residue {

namespace {

using byte = unsigned char;

constexpr unsigned columns = 5;
constexpr upL_t step_words = 4 * columns;
constexpr upL_t step_bytes = 8 * step_words;
constexpr upL_t block_steps = 32;

ZNP_INLINE __m256i load(const byte* source) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(source));
}

// x 2^k mod p in every lane for 0 <= k <= 48; any x. The result is below 2^61 + 2^(3 + k).
ZNP_INLINE __m256i rotate(__m256i x, unsigned k) {
    const __m128i up = _mm_cvtsi32_si128(static_cast<int>(k));
    const __m128i down = _mm_cvtsi32_si128(static_cast<int>(61 - k));
    const __m256i p_lanes = _mm256_set1_epi64x(static_cast<long long>(p));
    return _mm256_add_epi64(_mm256_and_si256(_mm256_sll_epi64(x, up), p_lanes), _mm256_srl_epi64(x, down));
}

// The four lanes' A of one block, congruent mod p and at most p + 7.
ZNP_INLINE __m256i hash_block(const byte* source, upL_t steps) {
    __m256i S[columns];
    __m256i H[columns];
    for (unsigned c = 0; c < columns; c++) S[c] = H[c] = _mm256_setzero_si256();
    for (upL_t k = 0; k < steps; k++) {
        for (unsigned c = 0; c < columns; c++) {
            const __m256i words = load(source + k * step_bytes + 32 * c);
            S[c] = _mm256_add_epi64(_mm256_add_epi64(S[c], S[c]), words);
            H[c] = _mm256_add_epi64(_mm256_add_epi64(H[c], H[c]), _mm256_srli_epi64(words, 32));
        }
    }
    // A column lies 256 bits above the one before it: its weight is 2^(256 mod 61) = 2^12.
    __m256i sum = _mm256_setzero_si256();
    for (unsigned c = 0; c < columns; c++) {
        const __m256i low = _mm256_sub_epi64(S[c], _mm256_slli_epi64(H[c], 32));
        // rotate(low, 0) < 2^61 + 2^3 and rotate(H, 32) < 2^61 + 2^35, together below 2^62 + 2^36; rotated
        // once more below 2^61 + 2^51, and five of them below 2^64.
        const __m256i value = _mm256_add_epi64(rotate(low, 0), rotate(H[c], 32));
        sum = _mm256_add_epi64(sum, rotate(value, 12 * c));
    }
    return rotate(sum, 0);
}

// The low 20 K words, K >= 1: the sum S with S 2^-(K-1) = their hash, canonical.
u64_t hash_steps(const byte* source, upL_t K) {
    __m256i h = _mm256_setzero_si256();
    while (K != 0) {
        const upL_t m = K < block_steps ? K : block_steps;
        // Below 2^61 + 2^35 + 2^61 + 2^3 < 2^64.
        h = _mm256_add_epi64(rotate(h, static_cast<unsigned>(m)), hash_block(source, m));
        source += m * step_bytes;
        K -= m;
    }
    alignas(32) u64_t lanes[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), h);
    u64_t sum = 0;
    for (unsigned l = 0; l < 4; l++) sum = add(sum, mul_power_of_2(reduce(lanes[l]), 3 * l));
    return sum;
}

// The hash of L 64-bit words at any address.
u64_t hash_bytes(const byte* source, upL_t L, u64_t seed) {
    // The top words that do not fill a step, at most 19: below 2^61 2^57 + 2^64 8^19 / 7 < 2^120, so nothing
    // is reduced before the end.
    u128_t top = reduce(seed);
    const upL_t K = L / step_words;
    for (upL_t i = L; i-- != K * step_words;) {
        u64_t word;
        __builtin_memcpy(&word, source + 8 * i, sizeof(word));
        top = (top << 3) + word;
    }
    const u64_t h = reduce((static_cast<u64_t>(top) & p) + static_cast<u64_t>(top >> 61));
    if (K == 0) return h;

    // h 2^(1280 K) + S 2^-(K-1), where 2^1280 = 2^-1.
    const u64_t S = hash_steps(source, K);
    return mul_power_of_2(add(h, mul_power_of_2(S, 1)), static_cast<unsigned>((61 - K % 61) % 61));
}

}  // namespace

u64_t hash_words64(const c64i* T, upL_t L, u64_t seed) {
    return hash_bytes(reinterpret_cast<const byte*>(T), L, seed);
}

u64_t hash_words32(const c32i* T, upL_t L, u64_t seed) {
    // Two little-endian 32-bit words are one of 64 bits; an odd top word goes in front of them.
    u64_t h = reduce(seed);
    if (L % 2 != 0) h = add(mul_power_of_2(h, 32), T[L - 1]);
    return hash_bytes(reinterpret_cast<const byte*>(T), L / 2, h);
}

}  // namespace znp::residue
