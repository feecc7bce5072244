// How much of a component fits into the working buffer.
//
// The buffer of a test, from its start: the lookup tables, one slice for each thread (the product, then the
// multiplier's work buffer), the operand that all threads share. Bytes; everything aligned to 32.
#pragma once

#include "multiply/multiplier.hpp"

namespace znp {

// The buffer of a test with products of n 64-bit words.
struct StressLayout {
    u64_t operand_words;  // at most n / 2, a multiple of 4
    u64_t tables;
    u64_t per_thread;
    u64_t total;
};
StressLayout stress_layout(const multiplier<c64i>& component, u64_t n, u64_t threads);

// The shortest product that a test runs, in words.
inline constexpr u64_t min_stress_words = 256;

// The largest n, within the component's own limits, whose layout fits into `memory` bytes; 0 if not even
// min_stress_words do. Doubling, then halving: a few dozen queries.
u64_t largest_stress_words(const multiplier<c64i>& component, u64_t memory, u64_t threads);

}  // namespace znp
