// Peak resident memory of a whole run against what the settings promise.
#pragma once

#include <gtest/gtest.h>

#include "compute/run/computed_run.hpp"
#include "sanitizer.hpp"
#include "shell/program.hpp"
#include "temporary_folder.hpp"

namespace znp::testing {

// The program itself, its stacks, and the margin of the block.
inline constexpr u64_t resident_allowance = u64_t{32} << 20;

inline void expect_peak_below_promise(const ConstantRow& constant, u64_t dec, u64_t threads) {
#ifdef ZNP_SANITIZER
    GTEST_SKIP() << "a sanitizer takes memory of its own";
#endif
    SCOPED_TRACE(std::string(constant.name) + ", " + std::to_string(dec) +
                 " digits, threads: " + std::to_string(threads));
    const ComputeParameters settings = settings_for({constant, 0}, dec, threads);
    const TemporaryFolder folder;
    const ProgramResult result =
        run_program({"custom", constant.name, "-dec:" + std::to_string(dec), "-T:" + std::to_string(threads)},
                    "", folder.path(), std::chrono::seconds(300));
    ASSERT_EQ(result.exit_code, 0) << result.output;
    const u64_t promise = settings.ML() + settings.Osize();
    const u64_t peak = static_cast<u64_t>(result.peak_resident_kib) * 1024;
    EXPECT_LT(peak, promise + resident_allowance);
    EXPECT_GE(peak, promise);  // all of it is touched
}

}  // namespace znp::testing
