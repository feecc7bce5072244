// The command "benchio": the options of the I/O performance analysis, and its run.
#pragma once

#include "shell/command_line.hpp"
#include "tools/io_analysis.hpp"

namespace znp {

// The options up to the end of the command line.
void apply_io_options(IOAnalysis& settings, CommandLine& line);

int io_command(CommandLine& line);
void io_menu(IOAnalysis& settings);

}  // namespace znp
