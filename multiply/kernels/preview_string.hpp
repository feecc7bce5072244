// The first digits of a number as text, without converting the number: for status lines and file headers.
#pragma once

#include <string>

#include "foundation/types.hpp"

namespace znp::CVN {

inline constexpr upL_t preview_digits = 50;  // of the fraction, at most

// The integer word without leading zeros and a point ("0." for a zero), then the first min(n, 50) digits of
// the fraction. The fraction is the L words that end at `end`, its first digits in end[-1]; if they hold
// fewer digits than asked for, what is there. At most the top four words are read in hexadecimal, three in
// decimal. Decimal fraction words are below 10^19.
std::string preview_string_hex(upL_t n, const cdi* end, upL_t L, u64_t integer);
std::string preview_string_dec(upL_t n, const cdi* end, upL_t L, u64_t integer);

}  // namespace znp::CVN
