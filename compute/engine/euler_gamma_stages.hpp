// The stages that only the Brent-McMillan formula has, with n = 2^m: the series A and B to the quotient A/B,
// and the asymptotic series C to the correction C/B^2. Precisions in words.
#pragma once

#include "compute/engine/stage_memory.hpp"

namespace znp {

// Warns where the digits of the run are more than n = 2^k serves, about 4 n log10(e). The run goes on.
void check_parameter(StageMemory& memory, u32_t k);

// A/B = T/D, and B = R/S. In the heap in this order; S and R only where w is not 0.
struct EulerGammaSums {
    HeapFloat S, R;  // to w words
    HeapFloat T, D;
};
// A sum that fails its checks twice is the fatal error "Computation Failed".
EulerGammaSums euler_gamma_ab_B(StageMemory& memory, u32_t m, upL_t w);

// C/B^2 to w words, w at least 1; the line of one that is left out.
HeapFloat euler_gamma_c_B(StageMemory& memory, u32_t m, upL_t w, const BigFloat& S, const BigFloat& R);
void skip_euler_gamma_c_B(StageMemory& memory);

}  // namespace znp
