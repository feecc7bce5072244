// Faults that a run repairs by doing something again.
#pragma once

#include <string>

#include "compute/run/run_time_parameters.hpp"

namespace znp {

// Says on the console (on a line of its own, in red) and in the event log that something failed and is done
// again, and counts it among the run's recovered errors. The text is a whole sentence, "... Failed -
// Reattempting...". Main thread.
void tell_reattempt(RunTimeParameters& run, const std::string& text);

}  // namespace znp
