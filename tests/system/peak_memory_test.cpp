#include "peak_memory.hpp"

namespace znp {
namespace {

TEST(PeakMemory, StaysBelowTheEstimateTheTablesAnd32MiB) {
    for (const testing::ConstantRow& constant : testing::computed_constants) {
        for (const u64_t threads : {1u, 2u, 16u}) {
            for (const u64_t dec : {1000u, 50'000u, 1'000'000u}) {
                if (dec == 1'000'000 && !testing::is_fast(constant)) continue;
                testing::expect_peak_below_promise(constant, dec, threads);
            }
        }
    }
}

}  // namespace
}  // namespace znp
