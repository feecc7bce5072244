// What an array takes beyond its payload, of the general allocator and of a heap, in bytes: for plans that
// must hold exactly. Where the room lies: foundation/guarded_alloc.hpp, foundation/basic_heap.hpp.
#pragma once

#include <algorithm>

#include "foundation/heap_words.hpp"

namespace znp {

inline constexpr upL_t guarded_overhead_bytes = 5 * word_bytes;  // owner, back-pointer, size, two guards
inline constexpr upL_t heap_entry_bytes = 2 * word_bytes;        // of a heap's table, for each allocation
inline constexpr upL_t array_alignment = 32;                     // where nothing else is asked for

// The size of an array; a product beyond the range gives the largest value, which no allocation can serve.
constexpr upL_t array_bytes(upL_t count, upL_t element_bytes) {
    return count > ~upL_t{0} / element_bytes ? ~upL_t{0} : count * element_bytes;
}

// The raw block of a guarded allocation.
constexpr upL_t guarded_bytes(upL_t bytes, upL_t alignment = array_alignment) {
    return round_up_to_word(bytes) + std::max(alignment, word_bytes) + guarded_overhead_bytes;
}

// A guarded allocation in a heap, with its entry of the table.
constexpr upL_t heap_bytes(upL_t bytes, upL_t alignment = array_alignment) {
    return guarded_bytes(bytes, alignment) + heap_entry_bytes;
}

constexpr upL_t heap_array_bytes(upL_t count, upL_t element_bytes) {
    return heap_bytes(array_bytes(count, element_bytes));
}

// What heap_shift_down leaves of a gap, at most: it moves by multiples of the alignment.
constexpr upL_t heap_shift_rest(upL_t alignment = array_alignment) {
    return std::max(alignment, word_bytes) - word_bytes;
}

}  // namespace znp
