// What the shell prints on many occasions, written out once for the tests.
#pragma once

#include <string>

#include "console_capture.hpp"

namespace znp::testing::sent {

inline const std::string P = "\033[01;35m";
inline const std::string B = "\033[01;34m";
inline const std::string g = "\033[22;32m";
inline const std::string t = "\033[22;36m";

inline std::string error_line(const std::string& text) {
    return W + "Error: " + Y + text + W + "\n\n";
}
inline std::string skip_line(const std::string& word) {
    return "Skipping unrecognized command: " + word + "\n";
}
inline std::string clip_line(const std::string& threads) {
    return Y + "Warning: Clipping threads to " + threads + ".\n" + W;
}

inline const std::string required_features =
    "\nChecking processor/OS features...\n\n"
    "Required Features:\n" +
    T + "    x64, SSE, SSE2, SSE3, SSSE3, SSE4.1, SSE4.2, AVX, ABM, FMA3, AVX2, BMI2\n" + "\n";
// What the program prints before anything else, where the machine has all features.
inline const std::string start_of_program = "\n" + required_features + W + "\n";

}  // namespace znp::testing::sent
