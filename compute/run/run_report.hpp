// What a run tells about itself on the console, at its start and at its end.
#pragma once

#include "compute/run/run_time_parameters.hpp"
#include "compute/settings/compute_parameters.hpp"

namespace znp {

// The constant, the algorithm, digits, threads and mode.
void print_run_heading(const ComputeParameters& settings);

// The line that closes a formula: a blank line, the name, and the time since start.
void print_stage(const std::string& name, const Time& start);

void print_start_time(const RunTimeParameters& run);

// Start and end, the times, and how well the processor was used. total_seconds: from the start of the run,
// with output and verification; a resumed run does not know it ("N/A").
void print_run_times(const RunTimeParameters& run, double total_seconds, bool resumed);

// The last digits in groups of ten, fifty on a line, with the index of the line's last digit.
void print_last_digits(const RunTimeParameters& run);

}  // namespace znp
