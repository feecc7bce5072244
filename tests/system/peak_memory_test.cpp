// Peak resident memory of whole runs against what the settings promise.
#include <gtest/gtest.h>

#include "compute/run.hpp"
#include "shell/program.hpp"
#include "temporary_folder.hpp"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZNP_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZNP_SANITIZER 1
#endif
#endif

namespace znp {
namespace {

constexpr u64_t allowance = u64_t{32} << 20;  // the program itself, its stacks, and the margin of the block

class PeakMemory : public ::testing::TestWithParam<const char*> {};

TEST_P(PeakMemory, StaysBelowTheEstimateTheTablesAnd32MiB) {
#ifdef ZNP_SANITIZER
    GTEST_SKIP() << "a sanitizer takes memory of its own";
#endif
    for (const u64_t threads : {1u, 2u, 16u}) {
        for (const u64_t dec : {u64_t{1000}, u64_t{50'000}, u64_t{1'000'000}}) {
            ComputeParameters settings;
            settings.set_threads(threads);
            ASSERT_EQ(settings.choose_constant(constant_id::pi, 0), nullptr);
            ASSERT_EQ(settings.set_dec(dec), nullptr);
            if (!run_refusal(settings).empty()) continue;  // a size that this version does not reach
            const testing::TemporaryFolder folder;
            const testing::ProgramResult result = testing::run_program(
                {"custom", GetParam(), "-dec:" + std::to_string(dec), "-T:" + std::to_string(threads)}, "",
                folder.path());
            ASSERT_EQ(result.exit_code, 0) << result.output;
            EXPECT_LT(static_cast<u64_t>(result.peak_resident_kib) * 1024,
                      settings.ML + settings.Osize + allowance)
                << dec << " digits, threads: " << threads;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Constants, PeakMemory, ::testing::Values("pi"));

}  // namespace
}  // namespace znp
