// BasicHeap: first-fit heap inside one block of memory, its table of allocations at the block's end.
//
//   base                                top           table_limit                    end
//   | block | gap | block | ... | block |    free     | entry n-1 | ... | entry 0 |
//
// Allocations grow upward from base, the table (16 bytes an entry, sorted by address, lowest address highest)
// grows downward from end; the heap is full when they meet. Every allocation starts with one word that holds
// its owner.
//
// Sizes in bytes, multiples of 8. Not thread-safe: a heap belongs to one thread at a time, and parallel
// phases use a pair (heap_split). An allocation costs a scan of the table, a release a binary search and a
// move of the entries behind it. Nothing here throws; what cannot go on ends the program.
#pragma once

#include "foundation/types.hpp"

namespace znp {

struct BasicHeap {
    BasicHeap* parent;       // the heap that the block was carved from; null for a block from the system
    std::byte* base;         // first byte, 8-byte aligned
    std::byte* end;          // the byte after the last one
    std::byte* top;          // end of the highest allocation, or base
    std::byte* table_limit;  // lowest byte of the table
    BasicHeap* child_pair;   // two heaps carved from this one, or null
    std::byte* child_mark;   // top when the pair was made
    u64_t active;            // entries in the table
    u64_t peak_active;
    std::byte* peak_top;
};

// An empty heap over a block of the caller's. A block that is not 8-byte aligned ends the program. Such a
// heap is not destroyed, unless the block came from malloc and shall go with it.
void heap_init(BasicHeap& heap, void* block, upL_t size_bytes);

// From a parent heap, or (parent null) from the system: then every page is touched before this returns, on
// all processors, with huge pages advised. Failure ends the program.
void heap_create(BasicHeap& heap, BasicHeap* parent, upL_t size_bytes);

// Null when there is no room: a block at the end needs 16 bytes more than its size, for its entry, and with
// less than 16 bytes free at the end nothing is given, not even from a gap. At least 8 bytes.
[[nodiscard]] void* heap_alloc(BasicHeap& heap, upL_t size_bytes);

// The owner is found in the block's first word. A block that its owner does not know ends the program.
void heap_free(void* block);

// Gives the block back. Allocations that are still active pass to the parent, in place; without a parent they
// are reported and lost, and the block goes to free(). The heap must have no pair.
void heap_destroy(BasicHeap& heap);

// Moves a guarded allocation down into the gap before it, by a multiple of alignment (a power of two, below 8
// counts as 8); returns the new payload. Allocations from the general allocator stay where they are. A heap
// with a pair must not be shifted.
[[nodiscard]] void* heap_shift_down(void* payload, upL_t alignment);

// Carves two equal heaps, heap.child_pair[0] and [1], from the room at the end, and leaves table entries for
// table_entries survivors of each. Too little room ends the program.
void heap_split(BasicHeap& heap, u64_t table_entries);

// Destroys the pair; what is still active in it passes to this heap. peak_top then counts the pair as twice
// the larger use, which is what the two halves needed, and not as the room that they were given.
void heap_join(BasicHeap& heap);

// The table on the console, for debugging.
void heap_dump(const BasicHeap& heap);

}  // namespace znp
