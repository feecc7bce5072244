// The number forms of the command line. None of them reports an error, and all wrap on overflow. The plain
// decimal form is parse_u64 of foundation/strings.hpp.
#pragma once

#include <string_view>

#include "foundation/types.hpp"

namespace znp {

// Digits and one letter, in either case: k 10^3, m 10^6, b 10^9, t 10^12. Anything else leaves the number as
// it is; there is no fraction: "2.5b" is 2.
u64_t parse_digit_count(std::string_view text);

// A size in bytes (foundation/byte_size.hpp); the scaled fraction is truncated, unlike at a prompt.
u64_t parse_byte_size(std::string_view text);

}  // namespace znp
