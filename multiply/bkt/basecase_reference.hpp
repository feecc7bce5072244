// The plain schoolbook forms, against which the tuned ones are tested. Same rules as
// multiply/bkt/basecase.hpp.
#pragma once

#include "foundation/types.hpp"

namespace znp::bkt {

template <class word>
void mulB_reference(word* T, const word* A, upL_t La, const word* B, upL_t Lb);

// Upper triangle of the products once, then doubling and the squares in one pass.
template <class word>
void sqrB_reference(word* T, const word* A, upL_t n);

}  // namespace znp::bkt
