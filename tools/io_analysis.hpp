// I/O performance analysis: what the swap configuration can deliver, against what the processors can consume.
#pragma once

#include "foundation/types.hpp"
#include "storage/raid_settings.hpp"

namespace znp {

// The settings of an analysis.
struct IOAnalysis {
    static constexpr u64_t test_bytes_per_memory = 8;  // the test file must not fit into the buffer

    SwapConfiguration swap;
    u64_t memory = 0;                                  // bytes of the transfer buffer
    u64_t test_bytes = 0;                              // of the test file
    u64_t threads = 1;                                 // 1 to max_threads
    u64_t min_io = SwapConfiguration::default_min_io;  // as the user gave it

    void set_memory(u64_t bytes);  // and the test file of eight times that size, wrapping
    void set_min_io(u64_t bytes);
};

// The swap configuration and minimum I/O size of a computation, all logical cores, and a buffer of 1 GiB, or
// of half the physical memory where that is less.
IOAnalysis default_io_analysis();

}  // namespace znp
