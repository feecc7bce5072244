// The machine's memory: how much there is, the warning when it is too little, and its first touch.
#pragma once

#include "foundation/types.hpp"

namespace znp {

// Sizes that the system reports are clipped here, so that sums of a few of them cannot overflow.
inline constexpr u64_t max_memory_bytes = 0x77fffffffffffff1;

u64_t available_memory();  // bytes of free pages now; 0 when the system does not say
u64_t physical_memory();   // bytes in the machine; 0 when the system does not say

// What the system's counts stand for: pages times page size, clipped; 0 when either is not known (negative).
u64_t memory_of_pages(s64_t pages, s64_t page_bytes);

// Warns and waits for ENTER when less than needed is available; never refuses. An available size of 0 means
// that it is not known.
void check_available_memory(u64_t needed_bytes);
void check_available_memory(u64_t needed_bytes, u64_t available_bytes);

inline constexpr upL_t huge_page_bytes = upL_t{1} << 21;

// Asks the system for huge pages in the page-aligned inside of a block, if the block is large enough to gain
// from them: at least two huge pages. Contents and failures: untouched and none, it is advice only.
void advise_huge_pages(void* block, upL_t size_bytes);

// Makes fresh memory real: advises huge pages, then stores zeros into the whole block on at most `threads`
// threads. The block has any alignment and size. A thread gets at least
// first_touch_min_share, and the shares meet at addresses that are multiples of a huge page, so that no page
// is touched by two threads. The first touch of memory by 4 KiB pages can be the slowest thing on a machine
// (bench/first_touch_bench.cpp).
inline constexpr upL_t first_touch_min_share = 4 * huge_page_bytes;
void first_touch(void* block, upL_t size_bytes, u64_t threads);

}  // namespace znp
