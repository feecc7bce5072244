// One run against its rows of the golden digits.
#pragma once

#include <numeric>

#include "compute/run/computed_run.hpp"
#include "golden.hpp"
#include "sha256.hpp"

namespace znp::testing {

// The computed algorithms of the constants whose golden digits reach a size.
inline std::vector<ComputedAlgorithm> algorithms_with_golden_digits(u64_t dec) {
    std::vector<ComputedAlgorithm> algorithms;
    const std::vector<GoldenDecimal> golden = golden_decimal();
    for (const ComputedAlgorithm& what : computed_algorithms()) {
        for (const GoldenDecimal& row : golden) {
            if (row.constant == what.constant.name && row.dec == dec) algorithms.push_back(what);
        }
    }
    return algorithms;
}

class GoldenRun : public ::testing::TestWithParam<ComputedAlgorithm> {
  protected:
    // Every golden size of [low, high], on so many threads; decimal and, where known, hexadecimal digits.
    void check_sizes(u64_t low, u64_t high, const std::vector<u64_t>& thread_counts) {
        u64_t checked = 0;
        for (const GoldenDecimal& golden : golden_decimal()) {
            if (golden.constant != GetParam().constant.name || golden.dec < low || golden.dec > high)
                continue;
            for (const u64_t threads : thread_counts) {
                ComputeParameters settings = settings_for(GetParam(), golden.dec, threads);
                ASSERT_EQ(run_refusal(settings), "");
                SCOPED_TRACE(std::to_string(golden.dec) + " digits, threads: " + std::to_string(threads));
                check(golden, settings);
                checked++;
            }
        }
        EXPECT_GT(checked, 0u);
    }

  private:
    static void check(const GoldenDecimal& golden, ComputeParameters& settings) {
        const ComputedRun result = compute(settings);
        EXPECT_EQ(sha256(result.decimal), golden.sha256);
        const std::string& last = result.state->last_digits;
        ASSERT_GE(last.size(), golden.last_digits.size());
        EXPECT_EQ(last.substr(last.size() - golden.last_digits.size()), golden.last_digits);
        EXPECT_EQ(std::vector<u64_t>(result.state->decimal_histogram.begin(),
                                     result.state->decimal_histogram.end()),
                  golden.counts);
        EXPECT_EQ(result.state->binary_hash, golden.residue);
        const auto& histogram = result.state->hexadecimal_histogram;
        EXPECT_EQ(std::accumulate(histogram.begin(), histogram.end(), u64_t{0}), settings.hex());

        for (const GoldenHexadecimal& row : golden_hexadecimal()) {
            if (row.constant != golden.constant || row.dec != golden.dec) continue;
            EXPECT_EQ(row.hex, settings.hex());
            EXPECT_EQ(sha256(result.hexadecimal), row.sha256);
            EXPECT_EQ(result.hexadecimal.substr(result.hexadecimal.size() - row.last_digits.size()),
                      row.last_digits);
        }
    }
};

}  // namespace znp::testing
