#include "compute/run/golden_run.hpp"
#include "compute/run/log_run.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

// The other numbers with golden digits stand among all constants.
class LongLogRun : public testing::GoldenRun {};

TEST_P(LongLogRun, AMillionGoldenDigits) {
    check_sizes(1'000'000, 1'000'000, {1, 2, 3, 7});
}

INSTANTIATE_TEST_SUITE_P(Log, LongLogRun,
                         ::testing::Values(testing::ComputedAlgorithm{{"log:10", constant_id::log, 10, 2}, 0},
                                           testing::ComputedAlgorithm{{"log:10", constant_id::log, 10, 2},
                                                                      1}),
                         testing::algorithm_name);

TEST(LongLogRuns, TwoFormulasOfLog2AgreeAtAMillionDigits) {
    for (const u64_t threads : {1u, 2u, 7u}) testing::expect_formulas_agree(2, 1'000'000, threads);
}

TEST(LongLogRuns, RandomNumbersAndSizes) {
    auto rng = testing::make_rng(33);
    for (int i = 0; i < 30; i++) {
        testing::expect_formulas_agree(2 + rng() % 2147483646, 50'000 + rng() % 400'000, 1 + rng() % 8);
    }
}

}  // namespace
}  // namespace znp
