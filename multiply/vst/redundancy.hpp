// The redundancy check of the VST, which comes free with the slack of the primes.
#pragma once

#include "foundation/types.hpp"
#include "multiply/vst/geometry.hpp"

namespace znp::vst {

// A coefficient is a sum of b 2^c products of two points, so its part above 2 input_bits is below this.
constexpr u64_t redundancy_bound(const Geometry& g) {
    return u64_t{1} << g.log2_points();
}

// H is the OR of these parts of all coefficients of an inverse. At or above the bound a transform, a multiply
// or memory has gone wrong: says so on the console and raises the generic exception with code 1.
void check_redundancy(u64_t H, u64_t bound);

}  // namespace znp::vst
