// Pi by the series of Chudnovsky or Ramanujan: b Q / ((a Q -+ P) sqrt(n)).
//
// Numbers 0 and 1 are the plain forms; 2 and 3 the same in less memory, with a series cut into smaller
// sections and the last product by two half-length convolutions. Sources: D. V. and G. V. Chudnovsky,
// "Approximations and complex multiplication according to Ramanujan", 1988; S. Ramanujan, "Modular equations
// and approximations to pi", 1914.
#pragma once

#include "compute/drivers/heap_float.hpp"
#include "compute/run_time_parameters.hpp"

namespace znp {

inline constexpr s32_t pi_algorithms = 4;

void pi_B(HeapFloat& out, RunTimeParameters& run, s32_t algorithm);

// Bytes of the heap, output included.
upL_t pi_memory_B(s32_t algorithm, upL_t p, u64_t dec, u64_t threads);

}  // namespace znp
