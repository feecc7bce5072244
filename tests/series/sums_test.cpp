// Every series summed by its plan, closed by its formula in integers, against the digits of the constant.
#include <gtest/gtest.h>

#include <cmath>

#include "series/closed_sums.hpp"

namespace znp {
namespace {

using namespace testing::closed_sums;
using testing::Integer;

class SeriesSums : public ::testing::TestWithParam<u64_t> {};

TEST_P(SeriesSums, AgainstTheDigitsOfTheConstant) {
    expect_golden_digits(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Digits, SeriesSums, ::testing::Values(100, 1000, 10000));

// What is left out of a sum to p words is smaller than its p words.
TEST(SeriesPrecision, TermsGiveTheWordsThatTheyPromise) {
    for (const Constant& constant : constants()) {
        for (const upL_t p : {2u, 3u, 4u, 7u, 20u, 53u}) {
            SCOPED_TRACE(constant.name + " to " + std::to_string(p) + " words");
            const u64_t digits = static_cast<u64_t>(static_cast<double>(p) * WordTraits<cdi>::decimal_digits);
            const Integer x = constant.digits(digits, p);
            const Integer more = constant.digits(digits, p + 10);
            const Integer difference = x - more;
            EXPECT_LT(difference * difference, 100) << difference;
        }
    }
}

// ---- Euler's constant

TEST(SeriesGamma, ThreadsAndSections) {
    const u64_t digits = 1000;
    const upL_t p = words_for(digits);
    const u32_t k = brent_mcmillan_exponent(p);
    const Integer expected = gamma(k, digits, p, SeriesC::without);
    for (const u64_t threads : {2u, 3u, 8u}) {
        for (const double ratio : {1.0, 0.3}) {
            EXPECT_EQ(gamma(k, digits, p, SeriesC::without, ratio, threads), expected);
            EXPECT_EQ(gamma(k - 1, digits, p, SeriesC::truncated, ratio, threads), expected);
        }
    }
}

// The refined formula gives e^(-8n), for which series C goes to its smallest term.
TEST(SeriesGamma, RefinedAtTheLimitOfItsParameter) {
    for (u32_t m = 3; m < 11; m++) {
        SCOPED_TRACE(m);
        const double x = std::ldexp(4, static_cast<int>(m)) * words_per_nat;
        const auto p = static_cast<upL_t>(2 * x) - 1;
        EXPECT_EQ(EulerGamma_BM_C(m).terms(static_cast<upL_t>(x) + 1), u64_t{2} << m);
        const u64_t digits = static_cast<u64_t>(static_cast<double>(p) * WordTraits<cdi>::decimal_digits) - 1;
        const Integer expected = gamma(m + 2, digits, p + 2, SeriesC::without);
        for (const SeriesC with_C : {SeriesC::truncated, SeriesC::exact}) {
            const Integer difference = gamma(m, digits, p, with_C) - expected;
            EXPECT_LT(difference * difference, 100) << difference;
        }
    }
}

// Q of series C drops so many low zero words that the two products of P and Q take different transforms.
TEST(SeriesGamma, LongExactSectionOfCInItsPromisedBuffers) {
    const EulerGamma_BM_C series(19);
    const PSRPlan plan = make_single_section(series, 8046, 11945);
    for (const u64_t threads : {1u, 2u}) {
        const testing::GuardedSum sum(series, plan, threads);
        EXPECT_GT(sum.Q().get_exp(), 1000);
        EXPECT_LE(sum.P().get_L(), plan[0].length + series.memory_overhead);
    }
}

}  // namespace
}  // namespace znp
