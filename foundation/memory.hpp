// The machine's memory: how much there is, the warning when it is too little, and its first touch.
#pragma once

#include "foundation/types.hpp"

namespace znp {

// Sizes that the system reports are clipped here, so that sums of a few of them cannot overflow.
inline constexpr u64_t max_memory_bytes = 0x77fffffffffffff1;

u64_t available_memory();  // bytes of free pages now
u64_t physical_memory();   // bytes in the machine

// Warns and waits for ENTER when less than needed is available; never refuses.
void check_available_memory(u64_t needed_bytes);

// Makes fresh memory real: advises huge pages for the page-aligned inside of the block, then stores zeros
// into all of it on `threads` threads. The first touch of memory by 4 KiB pages can be the slowest thing on a
// machine.
void first_touch(void* block, upL_t size_bytes, u64_t threads);

}  // namespace znp
