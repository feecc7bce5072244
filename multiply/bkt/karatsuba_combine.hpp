// The last step of a Karatsuba product: one pass that adds the middle term to the two outer products.
#pragma once

#include "foundation/types.hpp"

namespace znp::bkt {

// T[0..2h) holds lower * lower, T[2h..2n) upper * upper, M[0..2h) the product of the differences, with
// h = ceil(n / 2) and n >= 2. Adds, at word h, the sum of the outer two less M (or plus M).
// Consumes M.
void combine(c32i* T, c32i* M, upL_t n, bool subtract);
void combine(c64i* T, c64i* M, upL_t n, bool subtract);

template <class word>
void combine_reference(word* T, const word* M, upL_t n, bool subtract);

}  // namespace znp::bkt
