// The common summation and the closing formulas that are built on it, against digits from elsewhere.
#include "compute/drivers/series_sum.hpp"

#include <gtest/gtest.h>

#include "compute/series_memory.hpp"
#include "driver_test_support.hpp"
#include "golden.hpp"
#include "multiply/kernels/residue.hpp"
#include "series/catalogue.hpp"

namespace znp {
namespace {

using testing::DriverRun;

constexpr u64_t most_digits = 10000;

// floor(x * 10^dec) modulo 2^61 - 1, x positive.
u64_t digit_residue(const BigFloat<cdi>& x, u64_t dec) {
    mpz_t z, power;
    mpz_init(z);
    mpz_init(power);
    mpz_import(z, x.get_L(), -1, sizeof(cdi), 0, 0, x.get_T());
    mpz_ui_pow_ui(power, 10, dec);
    mpz_mul(z, z, power);
    EXPECT_LT(x.get_exp(), 0);
    mpz_fdiv_q_2exp(z, z, 64 * static_cast<u64_t>(-x.get_exp()));
    mpz_set_ui(power, residue::p);
    mpz_fdiv_r(z, z, power);
    const u64_t result = mpz_get_ui(z);
    mpz_clears(z, power, nullptr);
    return result;
}

// c (a Q + P) / (b Q) for each row of the constant, in a block of the promised size.
void check_sum(const std::string& constant, const zl_BSS& series, cdi a, cdi b) {
    for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
        if (golden.constant != constant || golden.dec > most_digits) continue;
        for (const u64_t threads : {u64_t{1}, u64_t{3}}) {
            SCOPED_TRACE(constant + " " + std::to_string(golden.dec) + " digits " + std::to_string(threads) +
                         " threads");
            const upL_t p = testing::precision_of_digits(golden.dec);
            DriverRun driver(golden.dec, threads, sum_series_bytes(series, a, b, p, threads));
            driver.compute(
                [&](HeapFloat& out, RunTimeParameters& run) { sum_series_B(out, series, run, a, b, 1); });
            EXPECT_EQ(digit_residue(driver.number, golden.dec), golden.residue);
            EXPECT_EQ(driver.run.heap.active, 1u);
        }
    }
}

TEST(SumSeries, Zeta3) {
    check_sum("zeta(3)", Zeta3_AZ2(), 12463, 10368);
    check_sum("zeta(3)", Zeta3_AZ1(), 77, 64);
}

TEST(SumSeries, CatalanByLupas) {
    check_sum("catalan", Catalan_Lupas(), 19, 18);
}

TEST(SumSeries, ArcCoth) {
    check_sum("arccoth:2", ArcCoth(2), 1, 2);
    check_sum("arccoth:4294967295", ArcCoth(4294967295), 1, 4294967295);
}

// The sign of P does not enter here: 469137217 Q + 1334025 P whether the series alternates or not.
TEST(SeriesQuotients, CatalanByHuvent) {
    const Catalan_Huvent series;
    const SeriesQuotient formula{469137217, 1334025, false, 512265600};
    for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
        if (golden.constant != "catalan" || golden.dec > most_digits) continue;
        const upL_t p = testing::precision_of_digits(golden.dec);
        const PSRPlan plan = make_psr_plan(series, p, 1.0);
        DriverRun driver(golden.dec, 1, series_quotient_bytes(series, plan, formula, p, 1));
        driver.compute([&](HeapFloat& out, RunTimeParameters& run) {
            series_quotient_B(out, run, series, plan, formula, p);
        });
        EXPECT_EQ(digit_residue(driver.number, golden.dec), golden.residue) << golden.dec;
    }
}

// 8 ArcSinlemn(1/2) + 4 ArcSinlemn(7/23), the first sum alive while the second is made.
TEST(SumSeries, LemniscateAsASumOfTwoSeries) {
    const ArcSinlemn first(1, 2), second(7, 23);
    const SeriesTerm terms[] = {{&first, common_quotient(first, 1, 2)},
                                {&second, common_quotient(second, 1, 23)}};
    for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
        if (golden.constant != "lemniscate" || golden.dec > most_digits) continue;
        const upL_t p = testing::precision_of_digits(golden.dec);
        DriverRun driver(golden.dec, 2, series_memory(terms, p, golden.dec, 2));
        driver.compute([&](HeapFloat& out, RunTimeParameters& run) {
            HeapFloat a, b;
            sum_series_B(a, first, run, 1, 2, 8);
            sum_series_B(b, second, run, 1, 23, 28);
            out = HeapFloat(run.heap, series_quotient_words(p));
            out.set_add(a, b, p + 2);
        });
        EXPECT_EQ(digit_residue(driver.number, golden.dec), golden.residue) << golden.dec;
    }
}

TEST(SumSeries, ANegativeFactorFlipsTheSignAndMultipliesTheMagnitude) {
    const ArcCoth series(26);
    constexpr u64_t dec = 500;
    const upL_t p = testing::precision_of_digits(dec);
    const auto multiple = [&](s64_t c) {
        DriverRun driver(dec, 1, sum_series_bytes(series, 1, 26, p, 1));
        driver.compute(
            [&](HeapFloat& out, RunTimeParameters& run) { sum_series_B(out, series, run, 1, 26, c); });
        EXPECT_EQ(driver.number.raw_sign(), c > 0);
        return testing::value<cdi>(driver.number, -static_cast<s64_t>(p) - 8);
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
    DriverRun driver(dec, 1, sum_series_bytes(series, 12463, 10368, p, 1));
    driver.compute(
        [&](HeapFloat& out, RunTimeParameters& run) { sum_series_B(out, series, run, 12463, 10368, 1); });
    EXPECT_EQ(driver.events(), (std::vector<std::string>{"Summing Series", "Finishing Series", "Division"}));
    EXPECT_TRUE(testing::texts_in_order(
        driver.printed, {"Summing Series...  ", std::to_string(series.terms(p)), " terms\n",
                         "Summing: ", "Time:    ", "Division...\n", "Iterating: ", "Time:    "}))
        << driver.printed;
}

}  // namespace
}  // namespace znp
