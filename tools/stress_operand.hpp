// The operand of the stress tests and of the per-word benchmark.
#pragma once

#include "foundation/types.hpp"

namespace znp {

// Word j is x x c1 x + c0 with x = j + c2, in 64-bit arithmetic; 32-bit words keep the lower half. Fixed data
// without zero words in sight: every run multiplies the same numbers.
template <class word>
void fill_stress_operand(word* A, upL_t L) {
    constexpr u64_t c0 = 2760727302517;
    constexpr u64_t c1 = 2760730175003;
    constexpr u64_t c2 = 2760733047673;
    for (upL_t j = 0; j < L; j++) {
        const u64_t x = j + c2;
        A[j] = static_cast<word>(x * x * c1 * x + c0);
    }
}

}  // namespace znp
