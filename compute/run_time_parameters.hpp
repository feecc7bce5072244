// The state of one run, handed to the formula drivers and the stages.
//
// The run owns all of it: one block of working memory that the drivers carve with the heap, the twiddle
// tables, the stopwatch, the event log, and what the closing report needs. Drivers are single-threaded.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "compute/compute_parameters.hpp"
#include "foundation/basic_heap.hpp"
#include "foundation/event_log.hpp"
#include "foundation/time.hpp"
#include "multiply/basic_parameters.hpp"
#include "multiply/table_holder.hpp"

namespace znp {

// Taken each time a stage begins: wall clock against the time stamp counter.
struct TimerSnapshot {
    Time time;
    u64_t ticks;
};

struct RunTimeParameters {
    // From the settings.
    std::string short_name, name;  // of the constant
    std::string algorithm_short, algorithm_name;
    u64_t param = 0;
    upL_t p = 0;  // precision in words
    u64_t dec = 0, hex = 0;
    ComputeMode mode = ComputeMode::ram_only;
    std::wstring path;
    u64_t digits_per_file = 0;
    u64_t tds = 1;

    BasicHeap heap{};  // over the block of working memory
    TableHolder tables{};
    StopWatch stopwatch;  // the computation without output and verification
    EventLog events;
    std::vector<TimerSnapshot> snapshots;

    // Filled by the output stages.
    std::array<u64_t, 10> decimal_histogram{};
    std::array<u64_t, 16> hexadecimal_histogram{};
    std::string last_digits;      // up to 100 digits as text
    u64_t last_digits_index = 0;  // of the first of them among all digits
    u64_t binary_hash = 0;        // floor(value * 10^dec) modulo 2^61 - 1

    std::string start_time, end_time;
    upL_t peak_working_bytes = 0;  // of the block, known at the end

    // The arguments of arithmetic on a work buffer of bytes at M.
    BasicParameters arithmetic(std::byte* M, upL_t bytes) const { return {&tables, M, bytes, tds}; }
    void take_snapshot() { snapshots.push_back({Time::now(), rdtsc()}); }
};

}  // namespace znp
