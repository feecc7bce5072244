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

// Loops over the selected tests until the last of them fails (stop_on_error) or until SIGINT or SIGTERM, and
// ends with a line that says what was run. Prints on the calling thread only. Returns the exit code: 1 if any
// error was seen, otherwise 0. A run that tests nothing, because no test is selected or none fits into the
// memory, says so and ends with 1. Throws std::bad_alloc when the working buffer cannot be had; ends the
// program if a selected component is not part of this version.
int run_stress_test(const stress_settings& settings);

}  // namespace znp
