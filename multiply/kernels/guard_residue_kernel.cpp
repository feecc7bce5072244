// The hash of words modulo q.
//
// Groups of eight words are summed with the powers of 2^64 mod q = 330 as weights: 330^7 is below 2^59, so
// that the sum of eight products, and the residue of what stands above times 330^8 mod q, stay below 2^127
// and are folded once a group. Four parts of a long number go side by side, since one chain waits for its
// fold.
#include "multiply/kernels/guard_residue.hpp"

namespace znp::guard {

namespace {

constexpr unsigned group = 8;
constexpr upL_t chains = 4;
constexpr upL_t chains_pay_from = 16 * group;

constexpr auto weights = [] {
    std::array<u64_t, group> w{1};
    for (unsigned i = 1; i < group; i++) w[i] = w[i - 1] * word_base;
    return w;
}();
constexpr u64_t group_power = pow(word_base, group);
static_assert(weights[group - 1] < u64_t{1} << 59);

// h B^8 + the group, lazily reduced, for an h below 2^63 + 2^17.
ZNP_INLINE u64_t append_group(u64_t h, const c64i* T) {
    u128_t sum = static_cast<u128_t>(h) * group_power;
    for (unsigned i = 0; i < group; i++) sum += static_cast<u128_t>(T[i]) * weights[i];
    return fold(sum);
}

ZNP_INLINE u64_t append_words(u64_t h, const c64i* T, upL_t L) {
    while (L % group != 0) h = fold(static_cast<u128_t>(h) * word_base + T[--L]);
    for (; L != 0; L -= group) h = append_group(h, T + L - group);
    return h;
}

}  // namespace

u64_t hash_words(const c64i* T, upL_t L, u64_t seed) {
    u64_t h = reduce(seed);
    if (L >= chains_pay_from) {
        const upL_t part = L / (chains * group) * group;
        u64_t H[chains] = {};
        for (upL_t i = part; i != 0; i -= group) {
            for (upL_t c = 0; c < chains; c++) H[c] = append_group(H[c], T + c * part + i - group);
        }
        const u64_t scale = word_power(static_cast<s64_t>(part));
        h = append_words(h, T + chains * part, L - chains * part);
        for (upL_t c = chains; c-- != 0;) h = add(mul(reduce(h), scale), reduce(H[c]));
        return h;
    }
    return reduce(append_words(h, T, L));
}

}  // namespace znp::guard
