// The common summation. The constants that it makes: compute/formulas/one_series_test.cpp.
#include "compute/engine/series_stage.hpp"

#include <gtest/gtest.h>

#include "compute/engine/engine_run.hpp"
#include "series/catalogue.hpp"

namespace znp {
namespace {

using testing::EngineRun;

// A coefficient below 0 reaches the sum as c.
TEST(SumSeries, ANegativeFactorFlipsTheSignAndMultipliesTheMagnitude) {
    const ArcCoth series(26);
    constexpr u64_t dec = 500;
    const upL_t p = testing::precision_of_digits(dec);
    const auto multiple = [&](s64_t c) {
        EngineRun driver(dec, 1, [&](StageMemory& memory) { return sum_series_B(memory, series, 1, 26, c); });
        driver.carry_out();
        EXPECT_EQ(driver.number.raw_sign(), c > 0);
        return testing::value(driver.number, -static_cast<s64_t>(p) - 8);
    };
    const testing::Integer one = multiple(1);
    EXPECT_TRUE(multiple(-1) + one == testing::Integer(0));
    EXPECT_TRUE(multiple(-18) + one * testing::Integer(18) == testing::Integer(0));
    EXPECT_TRUE(multiple(7) == one * testing::Integer(7));
}

TEST(SumSeries, TextsAndEventsInOrder) {
    const Zeta3_AZ2 series;
    constexpr u64_t dec = 1000;
    const upL_t p = testing::precision_of_digits(dec);
    EngineRun driver(dec, 1,
                     [&](StageMemory& memory) { return sum_series_B(memory, series, 12463, 10368, 1); });
    driver.carry_out();
    EXPECT_EQ(driver.events(), (std::vector<std::string>{"Summing Series", "Finishing Series", "Division"}));
    EXPECT_TRUE(testing::texts_in_order(
        driver.printed, {"Summing Series...  ", std::to_string(series.terms(p)), " terms\n",
                         "Summing: ", "Time:    ", "Division...\n", "Iterating: ", "Time:    "}))
        << driver.printed;
}

}  // namespace
}  // namespace znp
