// Formulas that must agree to the last digit, at sizes that nobody has digits of.
#pragma once

#include "compute/run/computed_run.hpp"
#include "digit_oracle.hpp"
#include "test_seed.hpp"

namespace znp::testing {

// Every formula of a constant gives the same digits, and the roots are the oracle's. All in blocks of exactly
// the estimate.
inline void expect_agreement_at(u64_t dec, u64_t threads, bool of_the_slow_ones = true) {
    SCOPED_TRACE(std::to_string(dec) + " digits, threads: " + std::to_string(threads));
    for (const ConstantRow& constant : computed_constants) {
        if (!of_the_slow_ones && !is_fast(constant)) continue;
        std::string expected_decimal, expected_hexadecimal;
        if (constant.id == constant_id::sqrt || constant.id == constant_id::golden_ratio) {
            DigitOracle oracle(dec);
            constant.id == constant_id::sqrt ? oracle.sqrt(constant.parameter) : oracle.golden_ratio();
            expected_decimal = oracle.text(dec);
            expected_hexadecimal = oracle.text(hex_digits_for(dec), 16);
        }
        for (s32_t algorithm = 0; algorithm < constant.algorithms; algorithm++) {
            ComputeParameters settings = settings_for({constant, algorithm}, dec, threads);
            const ComputedRun result = compute(settings);
            if (expected_decimal.empty()) {
                expected_decimal = result.decimal;
                expected_hexadecimal = result.hexadecimal;
            }
            // Not EXPECT_EQ: it would print millions of digits.
            EXPECT_TRUE(result.decimal == expected_decimal) << constant.name << " " << algorithm;
            EXPECT_TRUE(result.hexadecimal == expected_hexadecimal) << constant.name << " " << algorithm;
        }
    }
}

// At one random size of [low, high] and number of threads.
inline void expect_agreement(std::mt19937_64& rng, u64_t low, u64_t high, bool of_the_slow_ones = true) {
    const u64_t dec = low + rng() % (high - low + 1);
    expect_agreement_at(dec, 1 + rng() % 16, of_the_slow_ones);
}

}  // namespace znp::testing
