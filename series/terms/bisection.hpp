// Where a growing function of the term index reaches a value: how series count their terms.
#pragma once

#include "foundation/types.hpp"

namespace znp::terms {

// The smallest x in [low, high] with f(x) >= target; high if there is none. f grows over the range.
template <class F>
u64_t first_at_least(u64_t low, u64_t high, double target, F f) {
    while (low < high) {
        const u64_t x = low + (high - low) / 2;
        if (f(x) >= target) {
            high = x;
        } else {
            low = x + 1;
        }
    }
    return high;
}

// An upper end for that search: low doubled until f reaches the target.
template <class F>
u64_t doubling_bound(u64_t low, double target, F f) {
    u64_t x = low;
    while (f(x) < target) x *= 2;
    return x;
}

}  // namespace znp::terms
