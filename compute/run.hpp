// The run: from a settings record to digits on disk.
#pragma once

#include "compute/run_time_parameters.hpp"

namespace znp {

// Computes, converts, writes and checks the digits. last_digits_out, if not null: 104 bytes that receive the
// last digits as printed text. Failures are exceptions or fatal errors; a run that returns is right.
void run(const ComputeParameters& settings, char* last_digits_out = nullptr);

}  // namespace znp
