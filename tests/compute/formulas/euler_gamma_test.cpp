#include "compute/formulas/euler_gamma.hpp"

#include <gtest/gtest.h>

#include "compute/constants/table_constant.hpp"
#include "compute/engine/engine_run.hpp"
#include "compute/run/computed_run.hpp"
#include "golden.hpp"
#include "sha256.hpp"

namespace znp {
namespace {

using namespace testing::sent;
using testing::EngineRun;

testing::Stages stages(u32_t k, bool refined) {
    return testing::stages_of([=](MemoryEngine& engine) { return euler_gamma(engine, k, refined); });
}

// The least k with which both forms reach the digits.
u32_t exponent_for(u64_t dec) {
    u32_t k = 2;
    while (std::ldexp(4 * digits_per_nat, static_cast<int>(k)) < 1.2 * static_cast<double>(dec) + 40) k++;
    return k;
}

// In blocks of exactly what the stages promise, without any margin.
u64_t residue_by(u32_t k, bool refined, u64_t dec, u64_t threads) {
    EngineRun driver(dec, threads, stages(k, refined));
    driver.carry_out();
    EXPECT_EQ(driver.run.heap.active, 1u);
    testing::expect_not_wasteful(driver.bytes, driver.peak_bytes());
    return testing::digit_residue(driver.number, dec);
}

TEST(EulerGamma, BothFormsGiveTheGoldenDigits) {
    for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
        if (golden.constant != "gamma" || golden.dec > 10000) continue;
        const u32_t k = exponent_for(golden.dec);
        for (const u64_t threads : testing::threads_to_test) {
            EXPECT_EQ(residue_by(k, false, golden.dec, threads), golden.residue) << golden.dec;
            EXPECT_EQ(residue_by(k, true, golden.dec, threads), golden.residue) << golden.dec;
        }
    }
}

TEST(EulerGamma, TheSmallestRunsAgree) {
    for (u64_t dec = 100; dec <= 300; dec++) {
        const u32_t k = exponent_for(dec);
        EXPECT_EQ(residue_by(k, false, dec, 1), residue_by(k, true, dec, 1)) << dec;
    }
}

// The larger n is, the fewer words of the correction matter, down to none.
TEST(EulerGamma, ACorrectionOfFewWordsOrNone) {
    constexpr u64_t dec = 1000;
    const upL_t p = testing::precision_of_digits(dec);
    const u64_t expected = residue_by(exponent_for(dec), false, dec, 1);
    upL_t last = p;
    for (u32_t m = exponent_for(dec) - 1; last != 0; m++) {
        const upL_t w = euler_gamma_c_words(m, p);
        EXPECT_LT(w, last);
        EXPECT_EQ(residue_by(m + 1, true, dec, 2), expected) << m << ": " << w << " words";
        last = w;
    }
    // Words around the smallest ones, where x = 4 * 2^m / (64 ln 2) lies next to p.
    for (u64_t few = 100; few <= 900; few++) {
        const upL_t words = testing::precision_of_digits(few);
        const u32_t m = exponent_for(few);
        const upL_t w = euler_gamma_c_words(m, words);
        if (w == 0 || w > 3) continue;
        EXPECT_EQ(residue_by(m + 1, true, few, 1), residue_by(m + 1, false, few, 1)) << few << ": " << w;
    }
}

// x words stand in front of the correction, p behind them: the lesser of x and p - x, cut, and one more.
TEST(EulerGamma, WordsOfTheCorrection) {
    EXPECT_EQ(euler_gamma_c_words(10, 200), 93u);  // x = 92.3...
    EXPECT_EQ(euler_gamma_c_words(10, 150), 58u);  // p - x = 57.6...
    EXPECT_EQ(euler_gamma_c_words(10, 93), 1u);    // 0.6...
    EXPECT_EQ(euler_gamma_c_words(10, 92), 1u);    // -0.3...: still a word
    EXPECT_EQ(euler_gamma_c_words(10, 91), 1u);    // -1.3...
    EXPECT_EQ(euler_gamma_c_words(10, 90), 0u);    // -2.3...: below 0
    EXPECT_EQ(euler_gamma_c_words(62, 90), 0u);
}

std::vector<std::string> events_of(u32_t k, bool refined) {
    EngineRun driver(1000, 1, stages(k, refined));
    driver.carry_out();
    return driver.events();
}

// With the terms of log 2 = 18 ArcCoth(26) - 2 ArcCoth(4801) + 8 ArcCoth(8749), times -m.
std::vector<std::string> with_log_2(std::vector<std::string> events, s64_t m) {
    const std::pair<s64_t, const char*> terms[] = {
        {-18 * m, " ArcCoth( 26 )"}, {2 * m, " ArcCoth( 4801 )"}, {-8 * m, " ArcCoth( 8749 )"}};
    for (const auto& [coefficient, name] : terms) {
        events.push_back(std::to_string(coefficient) + name);
        for (const char* event : {"Summing Series", "Finishing Series", "Division"}) events.push_back(event);
    }
    return events;
}

TEST(EulerGamma, EventsInOrder) {
    const u32_t k = exponent_for(1000);
    const std::vector<std::string> plain{"Summing Series A and B", "Finishing Series", "Division"};
    std::vector<std::string> refined = plain;
    refined.insert(refined.end(), {"Summing Series C", "Division"});
    EXPECT_EQ(events_of(k, false), with_log_2(plain, k));
    EXPECT_EQ(events_of(k, true), with_log_2(refined, s64_t{k} - 1));
    EXPECT_EQ(events_of(k + 3, true), with_log_2(plain, s64_t{k} + 2));  // without the correction
}

std::string printed_by(u64_t dec, u32_t k, bool refined) {
    EngineRun driver(dec, 1, stages(k, refined));
    driver.carry_out();
    return driver.printed;
}

TEST(EulerGamma, LinesAndLabelsInOrder) {
    const std::string printed = printed_by(1000, 10, true);
    EXPECT_EQ(printed.find("Summing Series A and B...  " + G), 0u) << printed;
    EXPECT_TRUE(testing::texts_in_order(printed, {W + " terms #S\n",
                                                  "Summing: ",
                                                  "Finalizing: Q^2: ",
                                                  "Finalizing: R + S: ",
                                                  "Finalizing: Q * (R + S): ",
                                                  "Time:    ",
                                                  "Division...\n",
                                                  "Iterating: ",
                                                  "Time:    ",
                                                  "\n\nSumming Series C...  " + G,
                                                  W + " terms\n",
                                                  "Summing: ",
                                                  "Time:    ",
                                                  "Division...\n",
                                                  "Iterating: ",
                                                  "Time:    ",
                                                  "\n\n-162 ArcCoth( 26 )\nSumming Series...  ",
                                                  "Summing: ",
                                                  "Division...\n",
                                                  "Iterating: ",
                                                  "\n\n18 ArcCoth( 4801 )\nSumming Series...  ",
                                                  "Division...\n",
                                                  "\n\n-72 ArcCoth( 8749 )\nSumming Series...  ",
                                                  "Division...\n"}))
        << printed;
}

TEST(EulerGamma, SeriesCIsSkippedWhereNIsLarge) {
    const std::string skipped = "\n\nSumming Series C...  skipped\n\n-216 ArcCoth( 26 )\n";
    EXPECT_TRUE(testing::texts_in_order(printed_by(1000, 13, true), {"Division...\n", "Time:    ", skipped}));
    EXPECT_EQ(printed_by(1000, 10, true).find("skipped"), std::string::npos);
    EXPECT_EQ(printed_by(1000, 13, false).find("Series C"), std::string::npos);
}

// ---- Faults

// Twiddle tables that stay wrong: the section of A and B fails, and fails again.
TEST(EulerGammaDeathTest, SumsThatFailTwiceAreFatal) {
    constexpr u64_t dec = 20'000;
    const testing::WrongTables tables(longest_product(testing::precision_of_digits(dec)));
    for (const bool refined : {false, true}) {
        const testing::Stages sums = stages(exponent_for(dec), refined);
        EngineRun driver(dec, 1, sums);
        driver.run.tables = tables.holder;
        EXPECT_EXIT(testing::dying([&] { sums(driver.memory); }), ::testing::ExitedWithCode(1),
                    "Computation Failed");
    }
}

TEST(EulerGamma, ASectionIsSummedOnceMore) {
    constexpr u64_t dec = 20'000;
    EngineRun right(dec, 1, stages(exponent_for(dec), true));
    right.carry_out();
    const testing::WrongTables tables(longest_product(testing::precision_of_digits(dec)), false);
    EngineRun driver(dec, 1, stages(exponent_for(dec), true));
    driver.run.tables = tables.holder;
    driver.carry_out();
    EXPECT_NE(driver.printed.find("Multiplication Failure Re-attempting current block..."), std::string::npos)
        << driver.printed;
    EXPECT_EQ(testing::digit_residue(driver.number, dec), testing::digit_residue(right.number, dec));
}

// ---- The parameter's check

std::string warning(const std::string& target, const std::string& limit) {
    return R + "Warning:\n" + "The current parameter is too small to meet the target precision.\n" +
           "Target:   " + Y + target + " digits" + W + "\n" + "Limit:    " + Y + limit + " digits" + W +
           "\n\n";
}

// 4 * 2^9 log10(e) = 889.4...
TEST(EulerGammaParameter, IsCheckedInBothFormsByKItself) {
    for (const bool refined : {false, true}) {
        EXPECT_EQ(printed_by(889, 9, refined).find("Warning:"), std::string::npos);
        EXPECT_EQ(printed_by(890, 9, refined).find(warning("890", "889")), 0u);
        EXPECT_EQ(printed_by(1890, 9, refined).find(warning("1,890", "889")), 0u);
        EXPECT_EQ(printed_by(890, 10, refined).find("Warning:"), std::string::npos);
    }
}

// A run of the class that keeps its k, which no command reaches.
testing::ComputedRun run_with(u64_t k, s32_t algorithm, u64_t dec, u64_t threads) {
    ComputeParameters settings;
    settings.set_threads(threads);
    const ConstantRow& row = constant_rows()[constant_id::euler_gamma_override];
    testing::SettingsAccess::set_constant(settings, row.make(row, k, settings.p()));
    EXPECT_EQ(settings.set_dec(dec), nullptr);
    testing::SettingsAccess::set_algorithm(settings, algorithm);
    return testing::compute(settings);
}

TEST(EulerGammaParameter, TheOverrideKeepsKAndWarns) {
    for (const s32_t algorithm : {0, 1}) {
        const testing::ComputedRun result = run_with(9, algorithm, 1000, 2);
        EXPECT_EQ(result.state->settings.name, "Euler-Mascheroni Constant (parameter override)");
        EXPECT_TRUE(testing::texts_in_order(
            result.output,
            {"Begin Computation:\n\n" + warning("1,000", "889") + "Summing Series A and B...  ",
             "Last Digits:  Euler-Mascheroni Constant (parameter override)\n"}))
            << result.output;
    }
}

// The run goes on, and has the digits that its n serves; one that serves more warns of nothing.
TEST(EulerGammaParameter, TheOverrideGivesTheDigitsThatItsNServes) {
    const std::string digits = run_with(11, 1, 1000, 1).decimal;
    for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
        if (golden.constant == "gamma" && golden.dec == 1000) {
            EXPECT_EQ(testing::sha256(digits), golden.sha256);
        }
    }
    for (const s32_t algorithm : {0, 1}) {
        const std::string few = run_with(9, algorithm, 1000, 3).decimal;
        EXPECT_EQ(few.size(), digits.size());
        EXPECT_EQ(few.substr(0, 880), digits.substr(0, 880));
        EXPECT_NE(few, digits);
        for (u64_t k = 11; k <= 14; k++) {
            const testing::ComputedRun enough = run_with(k, algorithm, 1000, 2);
            EXPECT_EQ(enough.decimal, digits) << k;
            EXPECT_EQ(enough.output.find("Warning:"), std::string::npos);
        }
    }
}

TEST(EulerGammaParameter, TheConstantsOwnKNeverWarns) {
    for (u64_t dec = 100; dec <= 2000; dec += 7) {
        const upL_t p = testing::precision_of_digits(dec);
        const auto constant = make_constant(constant_id::euler_gamma, 0, p);
        const std::string name = constant->get_algorithm_name(1, p);
        const u32_t k = static_cast<u32_t>(std::stoul(name.substr(name.find('^') + 1)));
        EXPECT_LE(static_cast<double>(dec), std::ldexp(4 * digits_per_nat, static_cast<int>(k))) << dec;
    }
}

}  // namespace
}  // namespace znp
