// In blocks of exactly what the stages promise, without any margin, against golden digits and one another.
#include "compute/formulas/log.hpp"

#include <gtest/gtest.h>

#include "compute/engine/engine_run.hpp"
#include "golden.hpp"
#include "series/log_formula/log_formula.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::EngineRun;
using testing::Integer;

MachinFormula formula_for(u64_t n, FormulaKind which, u64_t dec) {
    MachinFormula formula;
    const double D = log_formula_precision(testing::precision_of_digits(dec));
    EXPECT_LT(get_log_formula(formula, n, which, D, Announce::no), cost_of_failure);
    return formula;
}

testing::Stages stages(const MachinFormula& formula) {
    return testing::stages_of([=](MemoryEngine& engine) { return log_by_machin(engine, formula); });
}

// Log(n) in units of 2^(-64 (p - 2)), p the words of the precision; the last of the coefficients' bits are
// gone.
struct Value {
    Integer units;
    u64_t residue;  // of its digits
};

Value value_by(u64_t n, FormulaKind which, u64_t dec, u64_t threads) {
    EngineRun driver(dec, threads, stages(formula_for(n, which, dec)));
    driver.carry_out();
    EXPECT_EQ(driver.run.heap.active, 1u);
    testing::expect_not_wasteful(driver.bytes, driver.peak_bytes());
    const s64_t low = 2 - static_cast<s64_t>(testing::precision_of_digits(dec));
    return {testing::value(driver.number, driver.number.get_exp()) >>
                static_cast<u64_t>(64 * (low - driver.number.get_exp())),
            testing::digit_residue(driver.number, dec)};
}

void expect_close(const Integer& a, const Integer& b, s64_t units) {
    EXPECT_TRUE(a - b < Integer(units + 1));
    EXPECT_TRUE(b - a < Integer(units + 1));
}

constexpr FormulaKind kinds[] = {FormulaKind::primary, FormulaKind::secondary};

TEST(LogByMachin, GoldenDigits) {
    int checked = 0;
    for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
        if (golden.constant.rfind("log:", 0) != 0 || golden.dec > 10'000) continue;
        const u64_t n = std::stoull(golden.constant.substr(4));
        for (const FormulaKind which : kinds) {
            for (const u64_t threads : testing::threads_to_test) {
                EXPECT_EQ(value_by(n, which, golden.dec, threads).residue, golden.residue)
                    << n << " " << golden.dec << " digits";
                checked++;
            }
        }
    }
    EXPECT_EQ(checked, 3 * 3 * 2 * 5);
}

TEST(LogByMachin, BothFormulasAgreeForManyNumbers) {
    auto rng = testing::make_rng(21);
    std::vector<u64_t> numbers{3,   5,   7,     11,    13,      61,         97,        101,
                               127, 997, 65521, 65537, 1000003, 2147483629, 2147483646};
    for (int i = 0; i < 60; i++) numbers.push_back(2 + rng() % 2147483646);
    for (int i = 0; i < 60; i++) numbers.push_back(2 + rng() % 1000);
    for (const u64_t n : numbers) {
        const u64_t dec = 100 + rng() % 1500;
        const Value primary = value_by(n, FormulaKind::primary, dec, 1);
        const Value secondary = value_by(n, FormulaKind::secondary, dec, 2);
        EXPECT_EQ(primary.residue, secondary.residue) << n << " " << dec << " digits";
        expect_close(primary.units, secondary.units, 1);
    }
}

TEST(LogByMachin, PowersOf2AreMultiplesOfLog2) {
    constexpr u64_t dec = 1000;
    const Value two = value_by(2, FormulaKind::primary, dec, 1);
    for (s64_t k = 2; k <= 30; k++) {
        for (const FormulaKind which : kinds) {
            expect_close(value_by(u64_t{1} << k, which, dec, 1).units, two.units * Integer(k), k);
        }
    }
}

TEST(LogByMachin, OfAProductIsTheSum) {
    auto rng = testing::make_rng(22);
    for (int i = 0; i < 20; i++) {
        const u64_t a = 2 + rng() % 40'000;
        const u64_t b = 2 + rng() % 40'000;
        constexpr u64_t dec = 500;
        const Integer sum = value_by(a, FormulaKind::primary, dec, 1).units +
                            value_by(b, FormulaKind::secondary, dec, 1).units;
        expect_close(value_by(a * b, FormulaKind::primary, dec, 1).units, sum, 2);
    }
}

// One term at least: the first one is not added to anything.
TEST(LogByMachin, ASumOfOneTerm) {
    MachinFormula one;
    ASSERT_TRUE(formula_add(one, {3, 2}, 16));  // 2 ArcCoth(3) = Log(2)
    EngineRun driver(1000, 1, stages(one));
    driver.carry_out();
    for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
        if (golden.constant != "log:2" || golden.dec != 1000) continue;
        EXPECT_EQ(testing::digit_residue(driver.number, 1000), golden.residue);
    }
    EXPECT_EQ(driver.events(),
              (std::vector<std::string>{"2 ArcCoth( 3 )", "Summing Series", "Finishing Series", "Division"}));
}

// - Log(2) + 2 Log(2): the first sums are negative.
TEST(LogByMachin, TermsOfAnySign) {
    MachinFormula formula;
    for (const FormulaPair& pair : {FormulaPair{3, -2}, {26, 36}, {4801, -4}, {8749, 16}}) {
        ASSERT_TRUE(formula_add(formula, pair, 16));
    }
    EngineRun driver(1000, 2, stages(formula));
    driver.carry_out();
    for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
        if (golden.constant != "log:2" || golden.dec != 1000) continue;
        EXPECT_EQ(testing::digit_residue(driver.number, 1000), golden.residue);
    }
}

}  // namespace
}  // namespace znp
