// bench_mul1: the rate of the schoolbook product, the innermost work of everything else.
#pragma once

#include "foundation/types.hpp"

namespace znp {

inline constexpr double bench_mul1_seconds = 4;

// Multiplies two equal operands of L words by the schoolbook product for at least `seconds`, on this thread,
// and prints the rate. Gives word products a second: one multiplication counts L^2.
template <class word>
double bench_mul1(upL_t L, double seconds = bench_mul1_seconds);

}  // namespace znp
