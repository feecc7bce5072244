#include "compute/run/log_run.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

class LogRun : public testing::GoldenRun {};

TEST_P(LogRun, GoldenDigitsTo10000) {
    check_sizes(100, 10'000, {1, 2, 3, 8});
}

TEST_P(LogRun, HundredThousandGoldenDigits) {
    check_sizes(100'000, 100'000, {1, 3});
}

INSTANTIATE_TEST_SUITE_P(Log, LogRun, ::testing::ValuesIn(testing::log_algorithms()),
                         testing::algorithm_name);

TEST(LogRuns, TwoFormulasOfLog2AgreeToTheLastDigit) {
    for (const u64_t threads : {1u, 2u, 7u}) {
        testing::expect_formulas_agree(2, 1000, threads);
        testing::expect_formulas_agree(2, 54'321, threads);
    }
}

// Every size of small runs, where estimates and words are tight.
TEST(LogRuns, SmallSizesOfAnyNumber) {
    auto rng = testing::make_rng(31);
    for (u64_t dec = 100; dec <= 500; dec += 1 + rng() % 3) {
        testing::expect_formulas_agree(2 + rng() % 2147483646, dec, 1 + rng() % 4);
    }
}

TEST(LogRuns, RandomNumbersAndSizes) {
    auto rng = testing::make_rng(32);
    for (int i = 0; i < 12; i++) {
        testing::expect_formulas_agree(2 + rng() % 1000, 1'000 + rng() % 30'000, 1 + rng() % 8);
        testing::expect_formulas_agree(2 + rng() % 2147483646, 1'000 + rng() % 30'000, 1 + rng() % 8);
    }
}

TEST(LogRuns, TheLinesOfARun) {
    ComputeParameters settings = testing::settings_for({{"log:2", constant_id::log, 2, 2}, 0}, 1000, 1);
    const std::string output = testing::compute(settings).output;
    std::size_t at = 0;
    for (const char* text :
         {"Primary Machin-like Formula (3 terms)", "Begin Computation:\n\n18 ArcCoth( 26 )\n",
          "Summing Series...", "Division...", "\n\n-2 ArcCoth( 4801 )\n", "Summing Series...",
          "\n\n8 ArcCoth( 8749 )\n", "\nLog"}) {
        at = output.find(text, at);
        ASSERT_NE(at, std::string::npos) << text << "\n" << output;
    }
}

}  // namespace
}  // namespace znp
