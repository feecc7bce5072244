// BasicHeap: first-fit heap inside one block of memory, its table of allocations at the block's end.
//
// Allocations grow upward from base, the table (16 bytes an entry, sorted by address, lowest address highest)
// grows downward from end; the heap is full when they meet. Every allocation starts with one word that holds
// its owner. Sizes in bytes, multiples of 8. Not thread-safe: a heap belongs to one thread at a time, and
// parallel phases use a pair (heap_split). Allocation costs a scan of the table.
#pragma once

#include "foundation/types.hpp"

namespace znp {

struct BasicHeap {
    BasicHeap* parent;
    std::byte* base;
    std::byte* end;
    std::byte* top;          // end of the highest allocation, or base
    std::byte* table_limit;  // lowest byte of the table
    BasicHeap* child_pair;
    std::byte* child_mark;  // top when the pair was made
    u64_t active;
    u64_t peak_active;
    std::byte* peak_top;
};

void heap_init(BasicHeap& heap, void* block, upL_t size_bytes);

// From a parent heap, or (parent null) from the system: then every page is touched before this returns, on
// all processors, with huge pages advised. Failure ends the program.
void heap_create(BasicHeap& heap, BasicHeap* parent, upL_t size_bytes);

[[nodiscard]] void* heap_alloc(BasicHeap& heap, upL_t size_bytes);  // null when there is no room
void heap_free(void* block);
void heap_destroy(BasicHeap& heap);

// Moves a guarded allocation down into the gap before it, by a multiple of alignment; returns the new
// payload.
[[nodiscard]] void* heap_shift_down(void* payload, upL_t alignment);

// Carves two equal heaps, heap.child_pair[0] and [1], leaving room for table_entries further entries.
void heap_split(BasicHeap& heap, u64_t table_entries);
void heap_join(BasicHeap& heap);

void heap_dump(const BasicHeap& heap);

}  // namespace znp
