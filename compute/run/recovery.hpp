// Faults that a run repairs by doing something again.
#pragma once

#include <string>

#include "compute/run/run_time_parameters.hpp"

namespace znp {

// Before something that failed is done again: says so on the console, on a line of its own in red, and in the
// event log, and builds the twiddle tables anew, for a fault in them would stay and let every further attempt
// fail. The text is a whole sentence, "... Failed - Reattempting...". Belongs to the main thread, with no
// product under way; the tables stay where they are.
void announce_reattempt(RunTimeParameters& run, const std::string& text);

// The same, and counts it among the run's recovered errors.
void begin_reattempt(RunTimeParameters& run, const std::string& text);

}  // namespace znp
