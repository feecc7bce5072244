// Guarded allocation: one allocation and one release for arrays from a BasicHeap and from the general
// allocator, with guard words on both sides that are tested at the release.
//
// Layout from the raw block upward:
//   word 0             owner heap, or null for the general allocator
//   gap                alignment
//   payload - 24       back-pointer to the raw block
//   payload - 16       payload size in bytes, rounded up to a multiple of 8
//   payload - 8        guard
//   payload            aligned as asked
//   payload + size     guard
//
// No operation here returns null for a failure: running out of memory is fatal. Thread safety is the heap's
// (none) or the general allocator's (full).
#pragma once

#include <memory>

#include "foundation/types.hpp"

namespace znp {

struct BasicHeap;

inline constexpr u64_t guard_word = 0x5451234810025523;

// What guarded_alloc_or_marker gives for a size of 0. Legal argument of guarded_free, like null.
inline void* const all_ones_marker = reinterpret_cast<void*>(~std::uintptr_t{0});

// size in bytes; alignment a power of two, below 8 counts as 8.
[[nodiscard]] void* guarded_alloc(BasicHeap* heap, upL_t size_bytes, upL_t alignment);
[[nodiscard]] void* guarded_alloc_or_marker(BasicHeap* heap, upL_t size_bytes, upL_t alignment);
void guarded_free(void* payload);

// Short tables: alignment at most 128; memory from the general allocator, the raw pointer in the word before
// the result. Release with aligned_free_small.
[[nodiscard]] void* aligned_alloc_small(upL_t size_bytes, upL_t alignment);
void aligned_free_small(void* payload);

// Owner of a guarded array of T.
struct GuardedDelete {
    void operator()(void* payload) const { guarded_free(payload); }
};
template <class T>
using GuardedArray = std::unique_ptr<T[], GuardedDelete>;

template <class T>
[[nodiscard]] GuardedArray<T> make_guarded_array(BasicHeap* heap, upL_t count, upL_t alignment = 32) {
    return GuardedArray<T>(static_cast<T*>(guarded_alloc(heap, count * sizeof(T), alignment)));
}

}  // namespace znp
