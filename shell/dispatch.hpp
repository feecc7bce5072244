// From the command line to a command, or to the main menu.
#pragma once

#include "shell/command_line.hpp"

namespace znp {

// Runs the command that the first word names, or one action of the main menu if there is no word. Returns the
// exit code of the process.
int dispatch(CommandLine& line);

}  // namespace znp
