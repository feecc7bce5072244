#include "compute/formulas/e.hpp"

#include <gtest/gtest.h>

#include "compute/engine/engine_run.hpp"
#include "series/catalogue.hpp"

namespace znp {
namespace {

using testing::EngineRun;
using testing::Reference;

// The sum of 1 / k! in fixed point, each term truncated.
void set_e(Reference& reference) {
    mpz_t term;
    mpz_init_set_ui(term, 1);
    mpz_mul_2exp(term, term, 64 * reference.words);
    mpz_set(reference.z, term);
    for (unsigned long k = 1; mpz_sgn(term) != 0; k++) {
        mpz_fdiv_q_ui(term, term, k);
        mpz_add(reference.z, reference.z, term);
    }
    mpz_clear(term);
}

testing::Stages stages(s32_t algorithm) {
    return testing::stages_of([=](MemoryEngine& engine) { return e(engine, algorithm == 1); });
}

void check_e(const Reference& reference, s32_t algorithm, u64_t dec, u64_t threads) {
    SCOPED_TRACE(std::to_string(algorithm) + ": " + std::to_string(dec) + " digits " +
                 std::to_string(threads) + " threads");
    const upL_t p = testing::precision_of_digits(dec);
    EngineRun driver(dec, threads, stages(algorithm));
    driver.carry_out();
    EXPECT_LT(reference.error_log2(driver.number, p), 4);
    EXPECT_EQ(driver.number.get_mag(), 1);
    EXPECT_EQ(driver.run.heap.active, 1u);
    testing::expect_not_wasteful(driver.bytes, driver.peak_bytes());
}

TEST(E, ValuesInABlockOfThePromisedSize) {
    Reference reference(testing::precision_of_digits(50000) + testing::reference_guard);
    set_e(reference);
    for (const s32_t algorithm : {0, 1}) {
        for (const u64_t dec : testing::digits_to_test) {
            for (const u64_t threads : testing::threads_to_test) check_e(reference, algorithm, dec, threads);
        }
    }
}

TEST(E, EachPrecisionOfTheSmallestRuns) {
    Reference reference(testing::precision_of_digits(400) + testing::reference_guard);
    set_e(reference);
    for (u64_t dec = 100; dec <= 400; dec++) {
        check_e(reference, 0, dec, 1);
        check_e(reference, 1, dec, 1);
    }
}

TEST(E, BothAlgorithmsGiveTheSameDigits) {
    constexpr u64_t dec = 3000;
    const upL_t p = testing::precision_of_digits(dec);
    std::vector<cdi> words[2];
    for (const s32_t algorithm : {0, 1}) {
        EngineRun driver(dec, 2, stages(algorithm));
        driver.carry_out();
        for (s64_t position = 0; position > -static_cast<s64_t>(p); position--) {
            words[algorithm].push_back(driver.number.word_at(position));
        }
    }
    EXPECT_EQ(words[0], words[1]);
}

TEST(E, TextsAndEventsInOrder) {
    constexpr u64_t dec = 1000;
    const upL_t p = testing::precision_of_digits(dec);
    EngineRun driver(dec, 1, stages(0));
    driver.carry_out();
    EXPECT_EQ(driver.events(), (std::vector<std::string>{"Summing Series", "Division"}));
    const std::string terms = std::to_string(Series_E_Taylor(false).terms(p) - 1);
    const std::vector<std::string> in_order = {"Summing Series...  ", terms,       " terms\n",
                                               "Summing: ",           "Time:    ", "Division...\n",
                                               "Iterating: ",         "Time:    "};
    EXPECT_TRUE(testing::texts_in_order(driver.printed, in_order)) << driver.printed;
}

}  // namespace
}  // namespace znp
