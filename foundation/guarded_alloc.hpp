// Guarded allocation: one allocation and one release for arrays from a BasicHeap and from the general
// allocator, with guard words on both sides that are tested at the release.
//
// Layout from the raw block upward:
//   word 0             owner heap, or null for the general allocator
//   gap                at most alignment bytes
//   payload - 24       back-pointer to the raw block
//   payload - 16       payload size in bytes, rounded up to a multiple of 8
//   payload - 8        guard
//   payload            aligned as asked
//   payload + size     guard
//
// The raw block takes size + alignment + 40 bytes, and payload = alignment + ((raw + 32) & -alignment). With
// raw a multiple of 8 this is raw + 40 at the least, so that the back-pointer is clear of word 0, and
// raw + 32 + alignment at the most, so that the last guard ends where the raw block does.
//
// No operation here returns null for a failure: running out of memory is fatal. Thread safety is the heap's
// (none) or the general allocator's (full).
#pragma once

#include <memory>
#include <type_traits>

#include "foundation/allocation_bytes.hpp"

namespace znp {

struct BasicHeap;

inline constexpr u64_t guard_word = 0x5451234810025523;

// What guarded_alloc_or_marker gives for a size of 0. Legal argument of guarded_free, like null.
inline void* const all_ones_marker = reinterpret_cast<void*>(~std::uintptr_t{0});

// size in bytes; alignment a power of two, below 8 counts as 8. heap null: from the general allocator. The
// payload is not cleared; large blocks of the general allocator are advised to be huge pages.
[[nodiscard]] void* guarded_alloc(BasicHeap* heap, upL_t size_bytes, upL_t alignment);
[[nodiscard]] void* guarded_alloc_or_marker(BasicHeap* heap, upL_t size_bytes, upL_t alignment);

// Tests the guards and releases to the owner. A broken guard ends the program. Null and the marker do
// nothing.
void guarded_free(void* payload);

// Where a payload keeps the address of its raw block.
std::byte*& guarded_back_pointer(void* payload);

// Short tables: alignment a power of two, at most 128; memory from the general allocator, the raw pointer in
// the word before the result. Release with aligned_free_small, which takes null.
[[nodiscard]] void* aligned_alloc_small(upL_t size_bytes, upL_t alignment);
void aligned_free_small(void* payload);

// The same for a count of elements of 8 bytes.
template <class T, upL_t alignment>
requires(sizeof(T) == 8 && (alignment == 1 || alignment == 8 || alignment == 16))
    [[nodiscard]] T* aligned_alloc_small_array(upL_t count) {
    return static_cast<T*>(aligned_alloc_small(array_bytes(count, sizeof(T)), alignment));
}

// Owner of a guarded array of T. The elements are neither constructed nor destroyed.
struct GuardedDelete {
    void operator()(void* payload) const { guarded_free(payload); }
};
template <class T>
using GuardedArray = std::unique_ptr<T[], GuardedDelete>;

template <class T>
[[nodiscard]] GuardedArray<T> make_guarded_array(BasicHeap* heap, upL_t count,
                                                 upL_t alignment = array_alignment) {
    static_assert(std::is_trivially_copyable_v<T>);
    return GuardedArray<T>(static_cast<T*>(guarded_alloc(heap, array_bytes(count, sizeof(T)), alignment)));
}

}  // namespace znp
