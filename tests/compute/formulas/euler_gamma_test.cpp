#include "compute/formulas/euler_gamma.hpp"

#include <gtest/gtest.h>

#include "compute/engine/engine_run.hpp"
#include "golden.hpp"

namespace znp {
namespace {

using testing::EngineRun;

testing::Stages stages(u32_t m, bool refined) {
    return testing::stages_of([=](MemoryEngine& engine) { return euler_gamma(engine, m, refined); });
}

// The least m with which the plain form reaches the digits; the refined form needs one less.
u32_t exponent_for(u64_t dec) {
    u32_t m = 2;
    while (std::ldexp(4 * digits_per_nat, static_cast<int>(m)) < 1.2 * static_cast<double>(dec) + 40) m++;
    return m;
}

// In blocks of exactly what the stages promise, without any margin.
u64_t residue_by(u32_t m, bool refined, u64_t dec, u64_t threads) {
    EngineRun driver(dec, threads, stages(m, refined));
    driver.carry_out();
    EXPECT_EQ(driver.run.heap.active, 1u);
    testing::expect_not_wasteful(driver.bytes, driver.peak_bytes());
    return testing::digit_residue(driver.number, dec);
}

TEST(EulerGamma, BothFormsGiveTheGoldenDigits) {
    for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
        if (golden.constant != "gamma" || golden.dec > 10000) continue;
        const u32_t m = exponent_for(golden.dec);
        for (const u64_t threads : testing::threads_to_test) {
            EXPECT_EQ(residue_by(m, false, golden.dec, threads), golden.residue) << golden.dec;
            EXPECT_EQ(residue_by(m - 1, true, golden.dec, threads), golden.residue) << golden.dec;
        }
    }
}

TEST(EulerGamma, TheSmallestRunsAgree) {
    for (u64_t dec = 100; dec <= 300; dec++) {
        const u32_t m = exponent_for(dec);
        EXPECT_EQ(residue_by(m, false, dec, 1), residue_by(m - 1, true, dec, 1)) << dec;
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
        EXPECT_EQ(residue_by(m, true, dec, 2), expected) << m << ": " << w << " words";
        last = w;
    }
    // Words around the smallest ones, where x = 4 * 2^m / (64 ln 2) lies next to p.
    for (u64_t few = 100; few <= 900; few++) {
        const upL_t words = testing::precision_of_digits(few);
        const u32_t m = exponent_for(few);
        const upL_t w = euler_gamma_c_words(m, words);
        if (w == 0 || w > 3) continue;
        EXPECT_EQ(residue_by(m, true, few, 1), residue_by(m + 1, false, few, 1)) << few << ": " << w;
    }
}

TEST(EulerGamma, EventsInOrder) {
    EngineRun driver(1000, 1, stages(exponent_for(1000) - 1, true));
    driver.carry_out();
    std::vector<std::string> expected{"Summing Series A and B", "Finishing Series", "Division",
                                      "Summing Series C", "Division"};
    for (int i = 0; i < 3; i++) {
        for (const char* event : {"Summing Series", "Finishing Series", "Division"})
            expected.push_back(event);
    }
    EXPECT_EQ(driver.events(), expected);
}

}  // namespace
}  // namespace znp
