// e by the Taylor series of exp(1), or as the reciprocal of that of exp(-1).
#pragma once

#include "compute/drivers/heap_float.hpp"
#include "compute/run_time_parameters.hpp"

namespace znp {

// Algorithm 0: exp(1); 1: exp(-1).
void e_B(HeapFloat& out, RunTimeParameters& run, s32_t algorithm);

// Bytes of the heap, output included.
upL_t e_memory_B(s32_t algorithm, upL_t p, u64_t dec, u64_t threads);

}  // namespace znp
