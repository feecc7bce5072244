// The interactive benchmark: on how many threads, and how many digits.
#pragma once

#include "shell/benchmark.hpp"

namespace znp {

// Asks for all that a run needs, and runs it.
void benchmark_menu(BenchmarkParameters& parameters);

// The questions alone. The end of the input ends the program, as at every prompt. physical_memory: bytes in
// the machine, 0 if not known; sizes that need more are dark, and can be chosen.
void choose_benchmark(BenchmarkParameters& parameters, u64_t physical_memory);

}  // namespace znp
