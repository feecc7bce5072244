// The command "stress": the options of the component stress tester, and its run.
#pragma once

#include "shell/command_line.hpp"
#include "tools/stress_test.hpp"

namespace znp {

// The options up to the end of the command line. All tests are off but those that are named.
void apply_stress_options(stress_settings& settings, CommandLine& line);

int stress_command(CommandLine& line);

}  // namespace znp
