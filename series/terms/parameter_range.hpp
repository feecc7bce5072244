// What a series' constructor refuses: parameters whose powers do not fit a word.
#pragma once

#include "foundation/fatal.hpp"

namespace znp::terms {

// The value if it is from low to high. Otherwise a fatal error, of invalid parameters, that names the series.
inline u64_t in_range(u64_t value, u64_t low, u64_t high, const wchar_t* series, const wchar_t* detail) {
    if (value < low || value > high) assert_failure(fatal_category::invalid_parameters, series, detail);
    return value;
}

// m of n = 2^m in the series of Euler's constant, whose terms are counted to 2 n and beyond.
inline u32_t euler_gamma_parameter(u32_t m) {
    return static_cast<u32_t>(in_range(m, 0, 62, L"EulerGamma", L"2^m is too large."));
}

}  // namespace znp::terms
