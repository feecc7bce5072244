// The end of a product whose algorithm has found it wrong by a check of its own.
#pragma once

#include <string>

namespace znp {

// Says so on the console, in red, with what was found and its bound, and raises an ArithmeticFailure with
// code 1.
[[noreturn]] void redundancy_failure(const char* algorithm, const std::string& found,
                                     const std::string& bound);

}  // namespace znp
