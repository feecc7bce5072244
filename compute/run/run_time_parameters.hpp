// The state of one run, handed to the formulas and the stages.
//
// The run owns all of it: one block of working memory that the stages carve with the heap, the twiddle
// tables, the stopwatch, the event log, and what the closing report needs. Belongs to the main thread.
#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "compute/run/run_settings.hpp"
#include "foundation/basic_heap.hpp"
#include "foundation/event_log.hpp"
#include "foundation/repeat_once.hpp"
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
    explicit RunTimeParameters(RunSettings settings_) : settings(std::move(settings_)) {}

    const RunSettings settings;

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
    BasicParameters arithmetic(std::byte* M, upL_t bytes) const { return {&tables, M, bytes, settings.tds}; }
    // Faults that were noticed and repaired by a repetition.
    u64_t recovered_errors() const { return RecoveredErrors::count() - recovered_before_; }
    void take_snapshot() { snapshots.push_back({Time::now(), rdtsc()}); }

  private:
    const u64_t recovered_before_ = RecoveredErrors::count();
};

}  // namespace znp
