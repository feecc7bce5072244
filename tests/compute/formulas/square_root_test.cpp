#include "compute/formulas/square_root.hpp"

#include <gtest/gtest.h>

#include "compute/engine/engine_run.hpp"

namespace znp {
namespace {

using testing::EngineRun;
using testing::Reference;

// floor(sqrt(n) 2^(64 words))
void set_sqrt(Reference& reference, u64_t n) {
    mpz_set_ui(reference.z, n);
    mpz_mul_2exp(reference.z, reference.z, 128 * reference.words);
    mpz_sqrt(reference.z, reference.z);
}

testing::Stages sqrt_stages(u64_t n) {
    return testing::stages_of([n](MemoryEngine& engine) { return square_root(engine, n); });
}
testing::Stages golden_ratio_stages() {
    return testing::stages_of([](MemoryEngine& engine) { return golden_ratio(engine); });
}

void check_sqrt(u64_t n, u64_t dec, u64_t threads) {
    SCOPED_TRACE(std::to_string(n) + " " + std::to_string(dec) + " digits " + std::to_string(threads) +
                 " threads");
    const upL_t p = testing::precision_of_digits(dec);
    EngineRun driver(dec, threads, sqrt_stages(n));
    driver.carry_out();
    Reference reference(p + testing::reference_guard);
    set_sqrt(reference, n);
    EXPECT_LT(reference.error_log2(driver.number, p), 4);
    EXPECT_LE(driver.number.get_mag(), 1);
    EXPECT_LE(driver.bytes - driver.peak_bytes(), 64u);
    EXPECT_EQ(driver.run.heap.active, 1u);
}

TEST(SquareRoot, ValuesInABlockOfThePromisedSize) {
    for (const u64_t dec : testing::digits_to_test) {
        for (const u64_t threads : testing::threads_to_test) check_sqrt(2, dec, threads);
    }
}

TEST(SquareRoot, RadicandsAbove2To32) {
    for (const u64_t n :
         {u64_t{3}, u64_t{4294967297}, u64_t{1} << 63, u64_t{1000000007} * 1000000009, ~u64_t{0}}) {
        for (const u64_t dec : {u64_t{100}, u64_t{333}, u64_t{10000}}) check_sqrt(n, dec, 2);
    }
}

TEST(SquareRoot, EachPrecisionOfTheSmallestRuns) {
    for (u64_t dec = 100; dec <= 400; dec++) check_sqrt(2, dec, 1);
}

TEST(SquareRoot, TextsAndEvents) {
    EngineRun driver(1000, 1, sqrt_stages(2));
    driver.carry_out();
    EXPECT_EQ(driver.events(), std::vector<std::string>{"InvSqrt"});
    EXPECT_EQ(driver.printed.find("InvSqrt...\n"), 0u) << driver.printed;
    EXPECT_NE(driver.printed.find("Iterating: "), std::string::npos) << driver.printed;
    EXPECT_NE(driver.printed.find("Time:    "), std::string::npos) << driver.printed;
}

// Twiddle factors of the wrong sign give wrong products, which the iteration notices.
TEST(SquareRoot, AnIterationThatFailsIsFatal) {
    constexpr u64_t dec = 20000;
    const upL_t p = testing::precision_of_digits(dec);
    const testing::WrongTables tables(2 * p);
    EngineRun driver(dec, 1, sqrt_stages(2));
    driver.run.tables = tables.holder;
    EXPECT_EXIT(testing::dying([&] { sqrt_stages(2)(driver.memory); }), ::testing::ExitedWithCode(1),
                "Computation Failed");
}

TEST(GoldenRatio, ValuesInABlockOfThePromisedSize) {
    for (const u64_t dec : testing::digits_to_test) {
        for (const u64_t threads : testing::threads_to_test) {
            SCOPED_TRACE(std::to_string(dec) + " digits " + std::to_string(threads) + " threads");
            const upL_t p = testing::precision_of_digits(dec);
            EngineRun driver(dec, threads, golden_ratio_stages());
            driver.carry_out();
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

TEST(GoldenRatio, TextsAndEvents) {
    EngineRun driver(100, 1, golden_ratio_stages());
    driver.carry_out();
    EXPECT_EQ(driver.events(), (std::vector<std::string>{"InvSqrt", "Shifting"}));
}

}  // namespace
}  // namespace znp
