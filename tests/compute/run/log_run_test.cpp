#include "compute/run/log_run.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

TEST(LogRuns, TwoFormulasOfLog2AgreeToTheLastDigit) {
    for (const u64_t threads : {1u, 2u, 7u}) {
        testing::expect_formulas_agree(2, 1000, threads);
        testing::expect_formulas_agree(2, 54'321, threads);
    }
}

// Every size of small runs, where estimates and words are tight.
TEST(LogRuns, SmallSizesOfAnyNumber) {
    auto rng = testing::make_rng(31);
    for (u64_t dec = 100; dec <= 500; dec += 1 + rng() % 12) {
        testing::expect_formulas_agree(2 + rng() % 2147483646, dec, 1 + rng() % 4);
    }
}

// Digits are cut, not rounded: those of a smaller run begin those of a larger one.
TEST(LogRuns, EverySmallSizeIsThePartOfALargerOne) {
    auto rng = testing::make_rng(34);
    const auto digits = [](u64_t n, s32_t algorithm, u64_t dec, u64_t threads) {
        ComputeParameters settings =
            testing::settings_for({{"log", constant_id::log, n, 2}, algorithm}, dec, threads);
        const testing::ComputedRun result = testing::compute(settings);
        return std::pair(result.decimal, result.hexadecimal);
    };
    for (const u64_t n : {u64_t{2}, u64_t{3}, 2 + rng() % 100'000}) {
        const auto expected = digits(n, 0, 700, 1);
        for (u64_t dec = 100; dec <= 450; dec++) {
            const auto found = digits(n, static_cast<s32_t>(dec % 2), dec, 1 + dec % 3);
            EXPECT_EQ(found.first, expected.first.substr(0, found.first.size())) << n;
            EXPECT_EQ(found.second, expected.second.substr(0, found.second.size())) << n;
        }
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
          "\n\n8 ArcCoth( 8749 )\n", "Log"}) {
        at = output.find(text, at);
        ASSERT_NE(at, std::string::npos) << text << "\n" << output;
    }
}

}  // namespace
}  // namespace znp
