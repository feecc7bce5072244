// Option values that several commands read.
#pragma once

#include "foundation/types.hpp"
#include "shell/command_line.hpp"
#include "storage/raid_settings.hpp"

namespace znp {

u64_t byte_size_below_2_63(const CommandLine& line);  // limited to 2^63 - 1
u64_t clipped_threads(const CommandLine& line);       // 0 or no digits: 1; above max_threads: max_threads

// Clips in the same way, with a warning in yellow.
u64_t clip_threads_with_warning(u64_t threads);

// "-swap:mode path path ...": takes the rest of the command line, at least one word, as paths.
int set_swap_paths(SwapConfiguration& swap, CommandLine& line);

}  // namespace znp
