#include "multiply/kernels/residue.hpp"

namespace znp::residue {

namespace {

// (h radix + word) mod p, almost: the result is at most p + 2.
// With h <= p + 2 and radix < p the product plus a word is below 2^122 + 2^65, so the first sum is below
// 2^62 + 16 and the second at most p + 2.
ZNP_INLINE u64_t append_lazily(u64_t h, u64_t radix, u64_t word) {
    const u128_t P = static_cast<u128_t>(h) * radix + word;
    const u64_t s = (static_cast<u64_t>(P) & p) + static_cast<u64_t>(P >> 61);
    return (s & p) + (s >> 61);
}

// One chain of dependent products waits some ten cycles for each word. Four parts of the number are
// therefore hashed side by side and joined at the end.
constexpr upL_t chains = 4;
constexpr upL_t chains_pay_from = 128;  // words: below, the power for joining costs more than it saves

template <class word>
u64_t hash_radix(const word* T, upL_t L, u64_t radix, u64_t seed) {
    const u64_t r = reduce(radix);
    u64_t h = reduce(seed);
    if (L >= chains_pay_from) {
        const upL_t part = L / chains;
        u64_t H[chains] = {};
        for (upL_t i = part; i-- != 0;) {
            for (upL_t c = 0; c < chains; c++) H[c] = append_lazily(H[c], r, T[L - (c + 1) * part + i]);
        }
        const u64_t scale = pow(r, part);
        for (const u64_t chain : H) h = add(mul(h, scale), reduce(chain));
        L -= chains * part;
    }
    while (L-- != 0) h = append_lazily(h, r, T[L]);
    return reduce(h);
}

// 2^(bits e) mod p. The order of 2 modulo p is 61, so only the exponent modulo 61 matters.
u64_t power_of_2(u64_t bits, s64_t e) {
    const s64_t remainder = e % 61;
    const u64_t e61 = static_cast<u64_t>(remainder < 0 ? remainder + 61 : remainder);
    return u64_t{1} << (bits * e61 % 61);
}

}  // namespace

u64_t hash_radix32(const c32i* T, upL_t L, c32i radix, u64_t seed) {
    return hash_radix(T, L, radix, seed);
}

u64_t hash_radix64(const c64i* T, upL_t L, c64i radix, u64_t seed) {
    return hash_radix(T, L, radix, seed);
}

u64_t word_power32(s64_t e) {
    return power_of_2(32, e);
}

u64_t word_power64(s64_t e) {
    return power_of_2(64, e);
}

u64_t pow(u64_t radix, u64_t e) {
    u64_t square = reduce(radix);
    u64_t h = 1;
    for (; e != 0; e >>= 1) {
        if ((e & 1) != 0) h = mul(h, square);
        square = mul(square, square);
    }
    return h;
}

}  // namespace znp::residue
