#include "peak_memory.hpp"

namespace znp {
namespace {

TEST(PeakMemory, OfLargeRunsStaysBelowTheEstimateTheTablesAnd32MiB) {
    for (const testing::ConstantRow& constant : testing::computed_constants) {
        for (const u64_t threads : {1u, 2u, 16u}) {
            testing::expect_peak_below_promise(constant, 10'000'000, threads);
        }
    }
    testing::expect_peak_below_promise({"pi", constant_id::pi, 0, 1}, 100'000'000, 2);
}

}  // namespace
}  // namespace znp
