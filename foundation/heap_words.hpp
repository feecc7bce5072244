// Words of raw memory, by address. The heap and the guarded allocation keep their bookkeeping beside the data
// that they hand out, and both know word 0 of a raw block: its owner.
#pragma once

#include "foundation/types.hpp"

namespace znp {

struct BasicHeap;

// Reference to the object of type T at an address; the address must be aligned for T.
template <class T>
ZNP_INLINE T& object_at(void* address) {
    return *static_cast<T*>(address);
}

ZNP_INLINE BasicHeap*& block_owner(void* block) {
    return object_at<BasicHeap*>(block);
}

inline constexpr upL_t word_bytes = 8;

// Up to the next multiple of 8; the caller keeps clear of the top of the range.
constexpr upL_t round_up_to_word(upL_t bytes) {
    return (bytes + (word_bytes - 1)) & ~(word_bytes - 1);
}

inline std::uintptr_t address_of(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

constexpr bool is_power_of_two(upL_t value) {
    return value != 0 && (value & (value - 1)) == 0;
}

}  // namespace znp
