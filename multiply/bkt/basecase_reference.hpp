// The plain schoolbook forms: the 32-bit routines of production use them, and the tuned kernels are tested
// against them. Same rules as multiply/bkt/basecase.hpp.
#pragma once

#include "foundation/types.hpp"

namespace znp::bkt {

template <class word>
void mulB_reference(word* T, const word* A, upL_t La, const word* B, upL_t Lb);

// Upper triangle of the products once, then doubling and the squares in one pass.
template <class word>
void sqrB_reference(word* T, const word* A, upL_t n);

}  // namespace znp::bkt
