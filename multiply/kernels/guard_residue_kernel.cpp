// The hash of words modulo q.
//
// Groups of eight words are summed with the powers of 2^64 mod q = 330 as weights: 330^7 is below 2^59, so
// that the sum of eight products, and the residue of what stands above times 330^8 mod q, stay below 2^127
// and are folded once a group. Words of even and of odd places go in two sums, for shorter chains of carries.
#include "multiply/kernels/guard_residue.hpp"

namespace znp::guard {

namespace {

constexpr unsigned group = 8;

constexpr auto weights = [] {
    std::array<u64_t, group> w{1};
    for (unsigned i = 1; i < group; i++) w[i] = w[i - 1] * word_base;
    return w;
}();
static_assert(weights[group - 1] < u64_t{1} << 59);

// 2^(64 i) mod q
constexpr auto powers = [] {
    std::array<u64_t, group + 1> w{1};
    for (unsigned i = 1; i <= group; i++) w[i] = mul(w[i - 1], word_base);
    return w;
}();

// h B^8 + the group, lazily reduced, for an h below 2^63 + 2^17.
ZNP_INLINE u64_t append_group(u64_t h, const c64i* T) {
    u128_t even = static_cast<u128_t>(h) * powers[group] + T[0];
    u128_t odd = static_cast<u128_t>(T[1]) * weights[1];
    for (unsigned i = 2; i < group; i += 2) {
        even += static_cast<u128_t>(T[i]) * weights[i];
        odd += static_cast<u128_t>(T[i + 1]) * weights[i + 1];
    }
    return fold(even + odd);
}

// The same for fewer words.
ZNP_INLINE u64_t append_part(u64_t h, const c64i* T, unsigned count) {
    u128_t sum = static_cast<u128_t>(h) * powers[count];
    for (unsigned i = 0; i < count; i++) sum += static_cast<u128_t>(T[i]) * weights[i];
    return fold(sum);
}

}  // namespace

u64_t hash_words(const c64i* T, upL_t L, u64_t seed) {
    const unsigned top = L % group;
    u64_t h = append_part(reduce(seed), T + (L - top), top);
    for (L -= top; L != 0; L -= group) h = append_group(h, T + (L - group));
    return h >= q ? h - q : h;
}

}  // namespace znp::guard
