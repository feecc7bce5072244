// Products of two words and counts of zero bits: single instructions on every target.
#pragma once

#include "foundation/types.hpp"

namespace znp {

// The whole product of two words.
ZNP_INLINE constexpr u64_t Mul32(u32_t a, u32_t b) {
    return static_cast<u64_t>(a) * b;
}
ZNP_INLINE constexpr u128_t Mul64(u64_t a, u64_t b) {
    return static_cast<u128_t>(a) * b;
}

// Zero bits above the highest and below the lowest one bit; 64 for a zero.
ZNP_INLINE constexpr unsigned LeadingZeros(u64_t x) {
    return x == 0 ? 64 : static_cast<unsigned>(__builtin_clzll(x));
}
ZNP_INLINE constexpr unsigned TrailingZeros(u64_t x) {
    return x == 0 ? 64 : static_cast<unsigned>(__builtin_ctzll(x));
}

}  // namespace znp
