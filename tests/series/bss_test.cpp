// How a series is divided and sized, by the functions that all series share.
#include "series/bss.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "series/series_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::SmallSeries;

double size(const zl_BSS& series, u64_t x) {
    return series.size_at(static_cast<double>(x));
}

TEST(Series, LogFactorialIsThatOfTheProduct) {
    EXPECT_EQ(log_factorial(0), 0);
    EXPECT_EQ(log_factorial(1), 0);
    EXPECT_EQ(log_factorial(0.5), 0);
    for (const double x : {2.0, 5.0, 10.0, 100.0, 1e6, 1e13}) {
        EXPECT_NEAR(log_factorial(x), std::lgamma(x + 1), 0.1 / x + 1e-15 * std::lgamma(x + 1)) << x;
    }
}

TEST(Series, SplitIsTheFirstIndexAtHalfTheSize) {
    auto rng = testing::make_rng(311);
    const Pi_Chudnovsky pi;
    const Catalan_Huvent huvent;
    for (const zl_BSS* series : {static_cast<const zl_BSS*>(&pi), static_cast<const zl_BSS*>(&huvent)}) {
        for (int round = 0; round < 200; round++) {
            const u64_t a = rng() >> (24 + rng() % 40);
            const u64_t b = a + 101 + (rng() >> (30 + rng() % 34));
            const u64_t m = series->split(a, b);
            const double half = (size(*series, a) + size(*series, b)) / 2;
            ASSERT_TRUE(a < m && m < b);
            EXPECT_TRUE(size(*series, m) >= half || m == b - 1) << a << ' ' << b;
            EXPECT_TRUE(m == a + 1 || size(*series, m - 1) < half) << a << ' ' << b;
        }
    }
}

TEST(Series, ARangeOf100TermsIsDividedAtTheMiddleAndOneOf101BySize) {
    const Pi_Chudnovsky series;
    EXPECT_EQ(series.divide(0, 100), 50u);
    EXPECT_EQ(series.divide(7, 107), 57u);
    EXPECT_EQ(series.divide(7, 10), 8u);
    EXPECT_EQ(series.divide(0, 101), series.split(0, 101));
    EXPECT_GT(series.divide(0, 101), 50u);
}

TEST(Series, WordsAndDigitsOfARangeAreThoseOfItsDenominator) {
    const Pi_Chudnovsky series;
    for (const auto& [a, b] : {std::pair<u64_t, u64_t>{0, 1}, {0, 10}, {3, 200}, {1000, 1100}, {0, 3000}}) {
        const testing::ExactSum sum = testing::exact_sum(series, a, b);
        const double words = sum.Q.log2() / 64;
        EXPECT_GE(static_cast<double>(series.words_of(a, b)), words);
        EXPECT_LE(static_cast<double>(series.words_of(a, b)), words + 2.1);
        EXPECT_NEAR(static_cast<double>(series.digits_of(a, b)), sum.Q.log2() * std::log10(2), 1.1);
    }
    EXPECT_EQ(series.words_of(5, 5), 2u);
    EXPECT_EQ(series.digits_of(5, 5), 1u);
}

TEST(Series, SectionsEndWhereTheTailNeedsNoMoreThanTheirOwnSize) {
    const Pi_Chudnovsky pi;
    const SmallSeries small(false);
    for (const zl_BSS* series : {static_cast<const zl_BSS*>(&pi), static_cast<const zl_BSS*>(&small)}) {
        for (const auto& [a, b] : {std::pair<u64_t, u64_t>{0, 2}, {0, 50}, {10, 300}, {0, 700}}) {
            for (const double target : {10.0, 500.0, 4000.0, 1e9}) {
                u64_t x = a + 1;
                while (x < b &&
                       std::min(target, series->precision_of(x, b)) > size(*series, x) - size(*series, a))
                    x++;
                EXPECT_EQ(series->section_end(a, b, target), x) << a << ' ' << b << ' ' << target;

                x = a + 1;
                while (x < b && size(*series, x) - size(*series, a) < target) x++;
                EXPECT_EQ(series->section_end_asr(a, b, target), x) << a << ' ' << b << ' ' << target;
            }
        }
    }
}

TEST(Series, PrecisionAtAnIndexIsRequiredToUseTruncatedProducts) {
    const Pi_Chudnovsky series;
    EXPECT_FALSE(series.can_be_truncated());
    const std::string printed = testing::console_output([&] {
        const auto e = testing::caught<zn_exception>([&] { series.PrecisionAtIndex(1, 10); });
        EXPECT_STREQ(e.message, "zl_BSS::PrecisionAtIndex() is required to use ASR.");
    });
    EXPECT_NE(printed.find("zl_BSS::PrecisionAtIndex() is required to use ASR."), std::string::npos);
}

TEST(Series, NoPrecisionAtAllGivesAPlanOfAFewTerms) {
    const Pi_Chudnovsky chudnovsky;
    const Pi_Ramanujan ramanujan;
    const Zeta3_AZ1 zeta_1;
    const Zeta3_AZ2 zeta_2;
    const Catalan_Lupas lupas;
    const Catalan_Huvent huvent;
    const ArcCoth arc_coth(3);
    const ArcSinlemn arc_sinlemn(7, 23);
    const Series_E_Taylor e(false);
    for (const zl_BSS* series : std::initializer_list<const zl_BSS*>{
             &chudnovsky, &ramanujan, &zeta_1, &zeta_2, &lupas, &huvent, &arc_coth, &arc_sinlemn, &e}) {
        EXPECT_GE(series->terms(0), 2u);
        EXPECT_LE(series->terms(0), 10u);
        const PSRPlan plan = make_psr_plan(*series, 0, 1.0);
        EXPECT_EQ(plan.back().b, series->terms(0));
    }
}

}  // namespace
}  // namespace znp
