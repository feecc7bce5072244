// One stress test: one component at full load on all threads, until its time is up or it fails.
#pragma once

#include "multiply/multiplier.hpp"
#include "tools/stress_buffer.hpp"

namespace znp {

// Seconds of a clock that never goes back. Called from all threads.
using StressClock = double (*)();
double steady_seconds();

struct StressLimits {
    u64_t threads;
    u64_t seconds;  // counted from the end of the preparation
    StressClock clock;
};

struct StressResult {
    enum class Verdict {
        passed,
        failed,
        stopped,  // by a stop request, with no error up to then
        skipped,  // does not fit into the buffer
    };
    Verdict verdict;
    u64_t multiplications;  // of all threads
};

// Squares one operand, as a product, again and again in each thread, and compares the residue of every result
// with the square of the operand's. A zn_exception of the component counts as an error; other exceptions in a
// thread end the program. A thread with an error ends there, the others run on to the time limit. Reports on
// the console, on the calling thread.
StressResult run_stress_component(const multiplier<c64i>& component, StressBuffer& buffer,
                                  const StressLimits& limits);

}  // namespace znp
