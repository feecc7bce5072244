// The byte sizes that users give, at a prompt and on the command line: "768", "768MB", "2.5 g".
//
// Digits, an optional "." and further digits, blanks, and one unit letter of either case: K 2^10, M 2^20, G
// 2^30, T 2^40, P 2^50, E 2^60; what follows is ignored. Nothing is an error, and all wraps on overflow.
#pragma once

#include <string_view>

#include "foundation/types.hpp"

namespace znp {

// The size is the sum; how the second part becomes an integer is the caller's matter.
struct ByteSize {
    u64_t whole;      // bytes of the digits before the point
    double fraction;  // bytes of those behind it, 0 to 2^60; 0 without a unit letter
};
ByteSize scan_byte_size(std::string_view text);

}  // namespace znp
