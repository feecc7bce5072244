// Component stress tester: keeps the multipliers at full load on all threads and checks every product by its
// residue, to find hardware faults.
#pragma once

#include "foundation/types.hpp"

namespace znp {

// What a run does. Everything is on by default; the command line clears the tests first and turns on those
// that it names (clear_stress_tests).
struct stress_settings {
    u64_t memory;   // bytes of the working buffer
    u64_t threads;  // 1 to max_threads
    u64_t seconds;  // time of one test
    bool stop_on_error;
    bool test_BKT;
    bool test_FFT;
    bool test_HNT;
    bool test_VST;
    bool test_spare;  // switched along with the others; selects nothing
};

// 31/32 of the physical memory, all logical cores, 120 seconds, every test.
stress_settings default_stress_settings();

// All five test flags off, or on.
void clear_stress_tests(stress_settings& settings);
void select_all_stress_tests(stress_settings& settings);

// The interactive screen, again and again until its option 0 starts the run; returns when the run has ended,
// with its exit code.
int stress_menu(stress_settings& settings);

// Loops over the selected tests until an error (stop_on_error) or until SIGINT or SIGTERM. Prints on the
// calling thread only. Returns the exit code: 1 if any error was seen, otherwise 0. A run with no test
// selected says so and ends at once with 0. Throws std::bad_alloc when the working buffer cannot be had.
int run_stress_test(const stress_settings& settings);

}  // namespace znp
