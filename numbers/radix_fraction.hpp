// A fraction as the radix conversion and its check take it in.
#pragma once

#include "foundation/types.hpp"

namespace znp::radix {

// The top `words` (at least 2) words of the fraction, with zeros below a shorter one, moved up by 2^8 of the
// second lowest word; a value that would reach 1 is moved to as much below 1 instead.
//
// Truncations and missing carries later on add up to less than one of the second lowest word. Without the
// move, a fraction that ends at a digit, such as a half, would come out as an endless run of nines.
void load_fraction(cdi* T, upL_t words, const cdi* fraction, upL_t L);

}  // namespace znp::radix
