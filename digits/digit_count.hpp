// How often each digit occurs.
#pragma once

#include <array>

#include "foundation/types.hpp"

namespace znp {

// Adds to counts[d] the number of digits of the value d. Digits are below 16. Serial; two digits a cycle.
void count_digits(std::array<u64_t, 16>& counts, const char* digits, upL_t count);

}  // namespace znp
