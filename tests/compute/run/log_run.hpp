// Whole runs of Log(n) in blocks of exactly the estimate, besides those that all constants have.
#pragma once

#include "compute/run/computed_run.hpp"

namespace znp::testing {

// Both formulas give the same digits.
inline void expect_formulas_agree(u64_t n, u64_t dec, u64_t threads) {
    const ConstantRow constant{"log", constant_id::log, n, 2};
    const auto digits = [&](s32_t algorithm) {
        ComputeParameters settings = settings_for({constant, algorithm}, dec, threads);
        const ComputedRun result = compute(settings);
        return std::pair(result.decimal, result.hexadecimal);
    };
    const auto primary = digits(0);
    EXPECT_GE(primary.first.size(), dec + 2);
    // Not EXPECT_EQ: it would print millions of digits.
    EXPECT_TRUE(primary == digits(1)) << n << " " << dec << " digits";
}

}  // namespace znp::testing
