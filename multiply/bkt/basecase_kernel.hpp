// The 64-bit schoolbook product on memory that need not be aligned to 64-bit words.
#pragma once

#include "foundation/types.hpp"

namespace znp::bkt {

// T[0..La + Lb) = A * B in 64-bit words, least significant byte first. Lengths at least 1; T overlaps
// nothing.
void mulB_unaligned(void* T, const void* A, upL_t La, const void* B, upL_t Lb);

}  // namespace znp::bkt
