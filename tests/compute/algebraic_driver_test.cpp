#include "compute/drivers/algebraic.hpp"

#include <gtest/gtest.h>

#include "compute/constant.hpp"
#include "compute/drivers/shared_stages.hpp"
#include "driver_test_support.hpp"

namespace znp {
namespace {

using testing::DriverRun;
using testing::Reference;

// floor(sqrt(n) 2^(64 words))
void set_sqrt(Reference& reference, u64_t n) {
    mpz_set_ui(reference.z, n);
    mpz_mul_2exp(reference.z, reference.z, 128 * reference.words);
    mpz_sqrt(reference.z, reference.z);
}

// The formula alone, in a block that is what its stage needs.
upL_t formula_bytes(upL_t p, u64_t threads) {
    return inv_sqrt_bytes(p, threads, 3);
}

void check_sqrt(u64_t n, u64_t dec, u64_t threads) {
    SCOPED_TRACE(std::to_string(n) + " " + std::to_string(dec) + " digits " + std::to_string(threads) +
                 " threads");
    const upL_t p = testing::precision_of_digits(dec);
    DriverRun driver(dec, threads, formula_bytes(p, threads));
    driver.compute([n](HeapFloat& out, RunTimeParameters& run) { sqrt_B(out, run, n); });
    Reference reference(p + testing::reference_guard);
    set_sqrt(reference, n);
    EXPECT_LT(reference.error_log2(driver.number, p), 4);
    EXPECT_LE(driver.number.get_mag(), 1);
    EXPECT_LE(formula_bytes(p, threads) - driver.peak_bytes(), 64u);
    EXPECT_EQ(driver.run.heap.active, 1u);
}

TEST(SqrtDriver, ValuesInABlockOfThePromisedSize) {
    for (const u64_t dec : testing::digits_to_test) {
        for (const u64_t threads : testing::threads_to_test) check_sqrt(2, dec, threads);
    }
}

TEST(SqrtDriver, RadicandsAbove2To32) {
    for (const u64_t n :
         {u64_t{3}, u64_t{4294967297}, u64_t{1} << 63, u64_t{1000000007} * 1000000009, ~u64_t{0}}) {
        for (const u64_t dec : {u64_t{100}, u64_t{333}, u64_t{10000}}) check_sqrt(n, dec, 2);
    }
}

TEST(SqrtDriver, EachPrecisionOfTheSmallestRuns) {
    for (u64_t dec = 100; dec <= 400; dec++) check_sqrt(2, dec, 1);
}

TEST(SqrtDriver, TextsAndEvents) {
    DriverRun driver(1000, 1, formula_bytes(testing::precision_of_digits(1000), 1));
    driver.compute([](HeapFloat& out, RunTimeParameters& run) { sqrt_B(out, run, 2); });
    EXPECT_EQ(driver.events(), std::vector<std::string>{"InvSqrt"});
    EXPECT_EQ(driver.printed.find("InvSqrt...\n"), 0u) << driver.printed;
    EXPECT_NE(driver.printed.find("Iterating: "), std::string::npos) << driver.printed;
    EXPECT_NE(driver.printed.find("Time:    "), std::string::npos) << driver.printed;
}

// Twiddle factors of the wrong sign give wrong products, which the iteration notices.
TEST(SqrtDriver, AnIterationThatFailsIsFatal) {
    constexpr u64_t dec = 20000;
    const upL_t p = testing::precision_of_digits(dec);
    const testing::WrongTables tables(2 * p);
    DriverRun driver(dec, 1, formula_bytes(p, 1));
    driver.run.tables = tables.holder;
    EXPECT_EXIT(testing::dying([&] {
                    HeapFloat out;
                    sqrt_B(out, driver.run, 2);
                }),
                ::testing::ExitedWithCode(1), "Computation Failed");
}

TEST(GoldenRatioDriver, ValuesInABlockOfThePromisedSize) {
    for (const u64_t dec : testing::digits_to_test) {
        for (const u64_t threads : testing::threads_to_test) {
            SCOPED_TRACE(std::to_string(dec) + " digits " + std::to_string(threads) + " threads");
            const upL_t p = testing::precision_of_digits(dec);
            DriverRun driver(dec, threads, formula_bytes(p, threads));
            driver.compute([](HeapFloat& out, RunTimeParameters& run) { golden_ratio_B(out, run); });
            Reference reference(p + testing::reference_guard);
            set_sqrt(reference, 5);
            mpz_t one;
            mpz_init_set_ui(one, 1);
            mpz_mul_2exp(one, one, 64 * reference.words);
            mpz_add(reference.z, reference.z, one);
            mpz_fdiv_q_2exp(reference.z, reference.z, 1);
            mpz_clear(one);
            EXPECT_LT(reference.error_log2(driver.number, p), 3);
            EXPECT_EQ(driver.number.get_mag(), 1);
        }
    }
}

TEST(GoldenRatioDriver, TextsAndEvents) {
    DriverRun driver(100, 1, formula_bytes(testing::precision_of_digits(100), 1));
    driver.compute([](HeapFloat& out, RunTimeParameters& run) { golden_ratio_B(out, run); });
    EXPECT_EQ(driver.events(), (std::vector<std::string>{"InvSqrt", "Shifting"}));
}

}  // namespace
}  // namespace znp
