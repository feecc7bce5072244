// Whole runs of Log(n) in blocks of exactly the estimate.
#pragma once

#include "compute/run/golden_run.hpp"

namespace znp::testing {

inline std::vector<ComputedAlgorithm> log_algorithms() {
    std::vector<ComputedAlgorithm> algorithms;
    for (const s32_t algorithm : {0, 1}) {
        algorithms.push_back({{"log:2", constant_id::log, 2, 2}, algorithm});
        algorithms.push_back({{"log:10", constant_id::log, 10, 2}, algorithm});
        algorithms.push_back({{"log:2147483647", constant_id::log, 2147483647, 2}, algorithm});
    }
    return algorithms;
}

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
