#include "compute/formulas/pi.hpp"

#include <gtest/gtest.h>

#include "compute/constants/constant.hpp"
#include "compute/engine/engine_run.hpp"
#include "series/catalogue.hpp"

namespace znp {
namespace {

using testing::EngineRun;
using testing::Reference;

constexpr s32_t all_algorithms[] = {0, 1, 2, 3};

// factor * arctan(1 / x), added in fixed point with each term truncated.
void add_arctan(mpz_t sum, upL_t words, long factor, unsigned long x) {
    mpz_t power, term;
    mpz_init_set_ui(power, x);
    mpz_init(term);
    mpz_set_ui(term, 1);
    mpz_mul_2exp(term, term, 64 * words);
    mpz_mul_ui(term, term, static_cast<unsigned long>(std::labs(factor)));
    mpz_fdiv_q_ui(power, term, x);
    bool positive = factor > 0;
    for (unsigned long k = 1; mpz_sgn(power) != 0; k += 2) {
        mpz_fdiv_q_ui(term, power, k);
        if (positive) {
            mpz_add(sum, sum, term);
        } else {
            mpz_sub(sum, sum, term);
        }
        positive = !positive;
        mpz_fdiv_q_ui(power, power, x * x);
    }
    mpz_clears(power, term, nullptr);
}

// J. Machin: 16 arctan(1/5) - 4 arctan(1/239).
void set_pi(Reference& reference) {
    add_arctan(reference.z, reference.words, 16, 5);
    add_arctan(reference.z, reference.words, -4, 239);
}

// The algorithms in the order of the constant's: 2 and 3 in less memory.
testing::Stages stages(s32_t algorithm) {
    return testing::stages_of([=](MemoryEngine& engine) {
        if (algorithm % 2 == 0) return pi(engine, Pi_Chudnovsky(), chudnovsky, algorithm >= 2);
        return pi(engine, Pi_Ramanujan(), ramanujan, algorithm >= 2);
    });
}

void check_pi(const Reference& reference, s32_t algorithm, u64_t dec, u64_t threads) {
    SCOPED_TRACE(std::to_string(algorithm) + ": " + std::to_string(dec) + " digits " +
                 std::to_string(threads) + " threads");
    const upL_t p = testing::precision_of_digits(dec);
    EngineRun driver(dec, threads, stages(algorithm));
    driver.carry_out();
    EXPECT_LT(reference.error_log2(driver.number, p), 5);
    EXPECT_EQ(driver.number.get_mag(), 1);
    EXPECT_EQ(driver.run.heap.active, 1u);
    testing::expect_not_wasteful(driver.bytes, driver.peak_bytes());
}

TEST(Pi, ValuesInABlockOfThePromisedSize) {
    Reference reference(testing::precision_of_digits(50000) + testing::reference_guard);
    set_pi(reference);
    for (const s32_t algorithm : all_algorithms) {
        for (const u64_t dec : testing::digits_to_test) {
            for (const u64_t threads : testing::threads_to_test) check_pi(reference, algorithm, dec, threads);
        }
    }
}

TEST(Pi, EachPrecisionOfTheSmallestRuns) {
    Reference reference(testing::precision_of_digits(400) + testing::reference_guard);
    set_pi(reference);
    for (u64_t dec = 100; dec <= 400; dec++) {
        for (const s32_t algorithm : all_algorithms) check_pi(reference, algorithm, dec, 1);
    }
}

TEST(Pi, TextsAndEventsInOrder) {
    constexpr u64_t dec = 1000;
    const upL_t p = testing::precision_of_digits(dec);
    for (const s32_t algorithm : all_algorithms) {
        EngineRun driver(dec, 2, stages(algorithm));
        driver.carry_out();
        EXPECT_EQ(driver.events(), (std::vector<std::string>{"Summing Series", "Finishing Series", "Division",
                                                             "InvSqrt", "Final Multiply"}));
        const u64_t terms = algorithm % 2 == 0 ? Pi_Chudnovsky().terms(p) : Pi_Ramanujan().terms(p);
        EXPECT_TRUE(testing::texts_in_order(
            driver.printed,
            {"Summing Series...  ", std::to_string(terms), " terms\n",
             "Summing: ", "Time:    ", "Division...\n", "Iterating: ", "Time:    ", "InvSqrt...\n",
             "Iterating: ", "Time:    ", "Final Multiply...\n", "Multiplying: ", "Time:    "}))
            << driver.printed;
    }
}

TEST(Pi, TheReducedFormsNeedNoMore) {
    for (const u64_t dec : {u64_t{50000}, u64_t{1000000}, u64_t{100000000}}) {
        const upL_t p = testing::precision_of_digits(dec);
        for (const u64_t threads : {u64_t{1}, u64_t{2}}) {
            upL_t bytes[4];
            for (const s32_t algorithm : all_algorithms) {
                make_constant(constant_id::pi, 0, p)
                    ->get_memory_B(algorithm, p, dec, threads, bytes[algorithm]);
            }
            EXPECT_LE(bytes[2], bytes[0]);
            EXPECT_LE(bytes[3], bytes[1]);
        }
    }
}

}  // namespace
}  // namespace znp
