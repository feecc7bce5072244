// The run: from a settings record to digits on disk.
//
// Reserves one block of working memory of the size that the settings promise (and a fixed margin), builds the
// twiddle tables, lets the constant's formula compute, convert and write, and reports. Nothing asks for more
// memory on the way, so that a run fails at its start or not at all.
//
// Failures are exceptions or fatal errors; a run that returns is right. All memory is released on the way
// out of both. Belongs to the main thread.
#pragma once

#include "compute/run/run_time_parameters.hpp"
#include "compute/settings/compute_parameters.hpp"

namespace znp {

// Bytes of the block beyond the estimate of working memory.
inline constexpr upL_t working_memory_margin = 0x100020;

// Bytes that the run hands its last digits out in, the closing zero included.
inline constexpr upL_t last_digits_bytes = 104;

// last_digits_out, if not null: last_digits_bytes that receive the last digits (up to 100) as text. Gives the
// number of faults that the run has noticed and repaired, wherever they were: its digits are right, but the
// machine is not.
u64_t run(const ComputeParameters& settings, char* last_digits_out = nullptr);

// The same in a block of working_bytes, for tests of the memory plan. Gives back the state at the end of the
// run, whose heap and tables are released.
RunTimeParameters run_in_block(const ComputeParameters& settings, upL_t working_bytes);

// What keeps this version from running the settings; empty if nothing does.
std::string run_refusal(const ComputeParameters& settings);

}  // namespace znp
