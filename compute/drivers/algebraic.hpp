// The formulas of the square roots: sqrt(n) = n / sqrt(n), and the golden ratio = (sqrt(5) + 1) / 2.
#pragma once

#include "compute/drivers/heap_float.hpp"
#include "compute/run_time_parameters.hpp"

namespace znp {

// n at least 1; the value to run.p words.
void sqrt_B(HeapFloat& out, RunTimeParameters& run, u64_t n);
void golden_ratio_B(HeapFloat& out, RunTimeParameters& run);

// Bytes of the heap of either, output included.
upL_t algebraic_memory_B(upL_t p, u64_t dec, u64_t threads);

}  // namespace znp
