// Words at any address.
#pragma once

#include <cstring>

#include "foundation/types.hpp"

namespace znp::vst {

inline u64_t load_word(const std::byte* x) {
    u64_t word;
    std::memcpy(&word, x, sizeof word);
    return word;
}
inline void store_word(std::byte* x, u64_t word) {
    std::memcpy(x, &word, sizeof word);
}

}  // namespace znp::vst
