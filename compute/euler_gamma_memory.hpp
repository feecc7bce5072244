// What the Brent-McMillan formula takes of the run's heap, in bytes, output included. n = 2^m.
#pragma once

#include "foundation/types.hpp"

namespace znp {

// A/B - m ln 2; refined: A/B - C/B^2 - m ln 2.
upL_t euler_gamma_memory_B(u32_t m, bool refined, upL_t p, u64_t digits, u64_t threads);

}  // namespace znp
