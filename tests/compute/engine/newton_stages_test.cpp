#include "compute/engine/newton_stages.hpp"

#include <gtest/gtest.h>

#include "compute/engine/engine_run.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::EngineRun;
using testing::Integer;
using testing::random_mantissa;

// Just below the point.
BigFloat below_point(const std::vector<cdi>& words) {
    return BigFloat(words.data(), words.size(), -static_cast<s64_t>(words.size()));
}

void check_final_multiply(upL_t p, u64_t threads, const TableHolder& tables, std::mt19937_64& rng) {
    const std::vector<cdi> a = random_mantissa(p + 3, rng), b = random_mantissa(p + 2, rng);
    const Integer exact = Integer(a) * Integer(b);
    for (const bool half_length : {false, true}) {
        EngineRun driver(1000, threads, [&](StageMemory& memory) {
            return final_multiply_B(memory, below_point(a), below_point(b), p, half_length);
        });
        driver.run.tables = tables;
        driver.carry_out();
        const s64_t low = -static_cast<s64_t>(2 * p + 5);
        const Integer error = exact - testing::value(driver.number, low);
        EXPECT_LT(error.log2(), 64.0 * static_cast<double>(p + 4)) << p << " " << half_length;
        EXPECT_LE(driver.number.get_L(), p + 2);
        EXPECT_GE(driver.peak_bytes() + 64, driver.bytes);
    }
}

TEST(FinalMultiply, BothRoutesGiveTheTopOfTheProduct) {
    std::mt19937_64 rng = testing::make_rng(203);
    for (const upL_t p : {upL_t{5}, upL_t{7}, upL_t{8}, upL_t{9}, upL_t{30}, upL_t{300}, upL_t{2600}}) {
        check_final_multiply(p, 1, testing::all_tables(), rng);
    }
}

TEST(FinalMultiply, BothRoutesOfTheLargeTransform) {
    std::mt19937_64 rng = testing::make_rng(206);
    constexpr upL_t p = 12000;
    const testing::Tables tables(2 * (p + 100));
    for (const u64_t threads : testing::threads_to_test) check_final_multiply(p, threads, tables.holder, rng);
}

TEST(FinalMultiply, ShortProductsAreWhole) {
    std::mt19937_64 rng = testing::make_rng(204);
    constexpr upL_t p = 30;
    const std::vector<cdi> a = random_mantissa(9, rng), b = random_mantissa(8, rng);
    for (const bool half_length : {false, true}) {
        EngineRun driver(1000, 1, [&](StageMemory& memory) {
            return final_multiply_B(memory, below_point(a), below_point(b), p, half_length);
        });
        driver.carry_out();
        EXPECT_TRUE(testing::value(driver.number, -17) == Integer(a) * Integer(b));
    }
}

TEST(FinalMultiply, AWrongProductIsFatal) {
    std::mt19937_64 rng = testing::make_rng(205);
    constexpr upL_t p = 1000;
    const testing::WrongTables tables(2 * p + 100);
    const std::vector<cdi> a = random_mantissa(p + 2, rng), b = random_mantissa(p + 2, rng);
    const testing::Stages stages = [&](StageMemory& memory) {
        return final_multiply_B(memory, below_point(a), below_point(b), p, false);
    };
    EngineRun driver(1000, 1, stages);
    driver.run.tables = tables.holder;
    EXPECT_EXIT(testing::dying([&] { stages(driver.memory); }), ::testing::ExitedWithCode(1),
                "Checksum Mismatch. Multiplication Failed.");
}

// A fault that a second attempt does not meet again: told, in the log, counted, and the result is right.
TEST(NewtonStages, AreRepeatedOnceFromWholeOperands) {
    std::mt19937_64 rng = testing::make_rng(206);
    constexpr upL_t p = 1000;
    const std::vector<cdi> a = random_mantissa(p + 2, rng), b = random_mantissa(p + 2, rng);
    struct Case {
        const char* name;
        testing::Stages stages;
    };
    for (const auto& [name, stages] :
         {Case{"Division",
               [&](StageMemory& memory) { return divide_B(memory, below_point(a), below_point(b), p); }},
          Case{"InvSqrt", [&](StageMemory& memory) { return inv_sqrt_B(memory, 10005, p); }},
          Case{"Final Multiply", [&](StageMemory& memory) {
                   return final_multiply_B(memory, below_point(a), below_point(b), p, false);
               }}}) {
        EngineRun right(1000, 1, stages);
        right.carry_out();
        const testing::WrongTables tables(2 * p + 100, false);
        EngineRun driver(1000, 1, stages);
        driver.run.tables = tables.holder;
        driver.carry_out();
        const std::string& text = driver.printed;
        const std::string told = std::string(name) + " Failed - Reattempting...";
        EXPECT_NE(text.find(told), std::string::npos) << text;
        EXPECT_NE(driver.run.events.text().find(told), std::string::npos);
        EXPECT_EQ(driver.run.recovered_errors(), 1u);
        EXPECT_EQ(driver.number.hash_error(), 0u);
        const s64_t low = std::min(driver.number.get_exp(), right.number.get_exp());
        EXPECT_TRUE(testing::value(driver.number, low) == testing::value(right.number, low)) << name;
    }
}

// An operand that has changed since it was made: no second attempt.
TEST(NewtonStages, ADamagedOperandEndsTheStage) {
    std::mt19937_64 rng = testing::make_rng(207);
    constexpr upL_t p = 1000;
    std::vector<cdi> a = random_mantissa(p + 2, rng);
    const std::vector<cdi> b = random_mantissa(p + 2, rng);
    const BigFloat numerator = below_point(a), denominator = below_point(b);
    a[p / 2] ^= 1;
    EngineRun driver(1000, 1,
                     [&](StageMemory& memory) { return divide_B(memory, numerator, denominator, p); });
    const std::string text = testing::console_output(
        [&] { EXPECT_THROW(divide_B(driver.memory, numerator, denominator, p), ArithmeticFailure); });
    EXPECT_EQ(text.find("Reattempting"), std::string::npos) << text;
    EXPECT_EQ(driver.run.recovered_errors(), 0u);
}

}  // namespace
}  // namespace znp
