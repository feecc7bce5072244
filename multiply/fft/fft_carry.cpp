#include "multiply/fft/fft_carry.hpp"

#include <cstring>

namespace znp::fft {

namespace {

u64_t load_word(const std::byte* p) {
    u64_t x;
    std::memcpy(&x, p, 8);
    return x;
}

void store_word(std::byte* p, u64_t x) {
    std::memcpy(p, &x, 8);
}

// Adds value 2^bit to the words; returns the signed carry out of the top.
s64_t add_at(std::byte* words, u64_t bits, u64_t bit, s64_t value) {
    s128_t pending = s128_t{value} * (s128_t{1} << (bit & 63));
    std::byte* const end = words + bits / 8;
    for (std::byte* p = words + bit / 64 * 8; p != end; p += 8) {
        if (pending == 0) return 0;
        pending += load_word(p);
        store_word(p, static_cast<u64_t>(pending));
        pending >>= 64;
    }
    return static_cast<s64_t>(pending);
}

}  // namespace

u32_t resolve_carries(std::byte* words, const s64_t carry[8], u64_t bits) {
    s64_t top = carry[7];
    for (unsigned s = 0; s < 7; ++s) top += add_at(words, bits, (s + 1) * (bits / 8), carry[s]);
    top = add_at(words, bits, 0, -top);
    // The value is X + top 2^bits = X - top with top 0, 1 or -1.
    if (top != 0) top = add_at(words, bits, 0, -top);
    if (top == 0) return 0;
    std::memset(words, 0, bits / 8);
    return 1;
}

}  // namespace znp::fft
