#include "compute/drivers/shared_stages.hpp"

#include <gtest/gtest.h>

#include "driver_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::DriverRun;
using testing::Integer;
using testing::random_mantissa;

// Just below the point.
Number below_point(const std::vector<cdi>& words) {
    return Number(words.data(), words.size(), -static_cast<s64_t>(words.size()));
}

void check_final_multiply(upL_t p, u64_t threads, const TableHolder& tables, std::mt19937_64& rng) {
    const std::vector<cdi> a = random_mantissa<cdi>(p + 3, rng), b = random_mantissa<cdi>(p + 2, rng);
    const Integer exact = Integer(a) * Integer(b);
    for (const bool half_length : {false, true}) {
        const upL_t bytes = final_multiply_bytes(p, threads, half_length);
        DriverRun driver(1000, threads, bytes);
        driver.run.tables = tables;
        driver.compute([&](HeapFloat& out, RunTimeParameters& run) {
            final_multiply_B(out, run, below_point(a), below_point(b), p, half_length);
        });
        const s64_t low = -static_cast<s64_t>(2 * p + 5);
        const Integer error = exact - testing::value<cdi>(driver.number, low);
        EXPECT_LT(error.log2(), 64.0 * static_cast<double>(p + 4)) << p << " " << half_length;
        EXPECT_LE(driver.number.get_L(), p + 2);
        EXPECT_GE(driver.peak_bytes() + 64, bytes);
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
    const std::vector<cdi> a = random_mantissa<cdi>(9, rng), b = random_mantissa<cdi>(8, rng);
    for (const bool half_length : {false, true}) {
        DriverRun driver(1000, 1, final_multiply_bytes(p, 1, half_length));
        driver.compute([&](HeapFloat& out, RunTimeParameters& run) {
            final_multiply_B(out, run, below_point(a), below_point(b), p, half_length);
        });
        EXPECT_TRUE(testing::value<cdi>(driver.number, -17) == Integer(a) * Integer(b));
    }
}

TEST(FinalMultiply, AWrongProductIsFatal) {
    std::mt19937_64 rng = testing::make_rng(205);
    constexpr upL_t p = 1000;
    const testing::WrongTables tables(2 * p + 100);
    const std::vector<cdi> a = random_mantissa<cdi>(p + 2, rng), b = random_mantissa<cdi>(p + 2, rng);
    DriverRun driver(1000, 1, final_multiply_bytes(p, 1, false));
    driver.run.tables = tables.holder;
    EXPECT_EXIT(testing::dying([&] {
                    HeapFloat out;
                    final_multiply_B(out, driver.run, below_point(a), below_point(b), p, false);
                }),
                ::testing::ExitedWithCode(1), "Checksum Mismatch. Multiplication Failed.");
}

}  // namespace
}  // namespace znp
