// The command "custom": a constant by keyword, the options of a computation, and the computation.
#pragma once

#include "compute/settings/compute_parameters.hpp"
#include "shell/command_line.hpp"

namespace znp {

// The current argument names the constant, "keyword" or "keyword:parameter". Prints why it is refused and
// returns 1, or 0.
int choose_constant_by_keyword(ComputeParameters& settings, const CommandLine& line);

// The options up to the end of the command line.
void apply_custom_options(ComputeParameters& settings, CommandLine& line);

int custom_command(CommandLine& line);

}  // namespace znp
