#include "series/log_formula/log_formula.hpp"

#include "console_capture.hpp"
#include "series/log_formula/factorization.hpp"
#include "series/log_formula/formula_sweep.hpp"
#include "series/log_formula/formula_test_support.hpp"

namespace znp {
namespace {

using testing::make_formula;
using testing::some_precision;

MachinFormula formula_for(u64_t n, FormulaKind which, double* cost = nullptr) {
    MachinFormula formula;
    const double found = get_log_formula(formula, n, which, some_precision, Announce::no);
    if (cost != nullptr) *cost = found;
    return formula;
}

TEST(GetLogFormula, Of1CostsNothingAndHasNoTerms) {
    for (const FormulaKind which : {FormulaKind::primary, FormulaKind::secondary}) {
        MachinFormula formula = make_formula({{26, 18}});
        EXPECT_EQ(get_log_formula(formula, 1, which, some_precision, Announce::no), 0);
        EXPECT_EQ(formula.count, 0u);
        EXPECT_TRUE(verify_formula(formula, 1));
    }
}

TEST(GetLogFormulaDeathTest, Of0IsFatal) {
    EXPECT_EXIT(testing::dying([] { formula_for(0, FormulaKind::primary); }), ::testing::ExitedWithCode(1),
                "Error: Log\\(0\\)");
}

TEST(GetLogFormula, Of2IsTheKnownOneWithThreeTermsAndWithFour) {
    double cost = 0;
    EXPECT_TRUE(formula_for(2, FormulaKind::primary, &cost) ==
                make_formula({{26, 18}, {4801, -2}, {8749, 8}}));
    EXPECT_DOUBLE_EQ(cost, term_cost(26, some_precision) + term_cost(4801, some_precision) +
                               term_cost(8749, some_precision));
    EXPECT_TRUE(formula_for(2, FormulaKind::secondary) ==
                make_formula({{251, 144}, {449, 54}, {4801, -38}, {8749, 62}}));
}

// The search's formula stands where it costs less, and a known one is never left for a dearer one.
TEST(GetLogFormula, TheTableIsAFloor) {
    for (const FormulaKind which : {FormulaKind::primary, FormulaKind::secondary}) {
        for (const FormulaRow& row : known_formulas(which).subspan(1)) {
            MachinFormula known;
            for (upL_t i = 0; i < row.count; i++) {
                ASSERT_TRUE(formula_add(known, {row.arguments[i], row.coefficients[i]}, 16));
            }
            for (const double D : {1.0, 221.8, some_precision, 1e12}) {
                MachinFormula formula;
                double cost = 0;
                const std::string printed = testing::console_output(
                    [&] { cost = get_log_formula(formula, row.n, which, D, Announce::yes); });
                EXPECT_LE(cost, formula_cost(known, D)) << row.n;
                EXPECT_DOUBLE_EQ(cost, formula_cost(formula, D));
                const bool better =
                    printed.find("The heuristic has found a better formula than the table entry.\n") !=
                    std::string::npos;
                EXPECT_EQ(better, !(formula == known)) << row.n << " " << D;
                EXPECT_EQ(better, cost < formula_cost(known, D)) << row.n << " " << D;
            }
        }
    }
}

TEST(GetLogFormula, APrimeOutsideTheTableIsSearched) {
    for (const u64_t n : {13u, 101u, 1009u, 65537u, 1000003u, 2147483629u}) {
        ASSERT_EQ(find_known_formula(FormulaKind::primary, n), nullptr);
        for (const FormulaKind which : {FormulaKind::primary, FormulaKind::secondary}) {
            const MachinFormula formula = formula_for(n, which);
            EXPECT_TRUE(verify_formula(formula, n)) << n;
            EXPECT_TRUE(testing::is_proper(formula)) << n;
        }
    }
}

TEST(DeriveLogFormulas, ALargePrimeThatDoesNotReachTheRelationsFails) {
    constexpr u64_t prime = 4294967311;  // above 2^32
    LogFormulas found;
    const std::string printed =
        testing::console_output([&] { found = derive_log_formulas(prime, some_precision, Announce::yes); });
    EXPECT_STREQ(found.failure, "Unable to derive formula.");
    EXPECT_TRUE(found.formulas.empty());
    EXPECT_EQ(printed.find("Generating Primary Formula...        "), 0u);
    EXPECT_EQ(printed.find("Secondary"), std::string::npos);
}

TEST(GetLogFormula, ACompositeWithAPrimeOfTheBaseNeedsNoRow) {
    for (const u64_t n : {4u, 6u, 10u, 22u, 34u, 58u, 1000u, 2147483646u}) {
        ASSERT_EQ(find_known_formula(FormulaKind::primary, n), nullptr);
        for (const FormulaKind which : {FormulaKind::primary, FormulaKind::secondary}) {
            EXPECT_TRUE(verify_formula(formula_for(n, which), n)) << n;
        }
    }
}

TEST(GetLogFormula, APowerOf2IsAMultipleOfLog2) {
    for (s64_t k = 2; k <= 30; k++) {
        EXPECT_TRUE(formula_for(u64_t{1} << k, FormulaKind::primary) ==
                    make_formula({{26, 18 * k}, {4801, -2 * k}, {8749, 8 * k}}));
        const MachinFormula secondary = formula_for(u64_t{1} << k, FormulaKind::secondary);
        EXPECT_EQ(secondary.count, 4u);
        EXPECT_TRUE(verify_formula(secondary, u64_t{1} << k));
    }
}

TEST(DeriveLogFormulas, EveryNumberTo1000AndRandomOnesHaveTwoFormulas) {
    testing::FormulaSweep sweep;
    for (u64_t n = 2; n <= 1000; n++) sweep.derive(n, some_precision);
    auto rng = testing::make_rng(5);
    for (int i = 0; i < 300; i++) sweep.derive(2 + rng() % 2147483646, some_precision);
    for (const u64_t n : {2147483647u, 2147483646u, 2147483629u}) sweep.derive(n, some_precision);
    sweep.report();
    EXPECT_EQ(sweep.derived, sweep.tried);
}

TEST(DeriveLogFormulas, SaysWhatItDoesAndHowLongThatTakes) {
    LogFormulas found;
    const std::string printed =
        testing::console_output([&] { found = derive_log_formulas(10, some_precision, Announce::yes); });
    EXPECT_EQ(found.failure, nullptr);
    ASSERT_EQ(found.formulas.size(), 2u);
    const std::size_t second = printed.find("Generating Secondary Formula...      ");
    EXPECT_EQ(printed.find("Generating Primary Formula...        "), 0u);
    ASSERT_NE(second, std::string::npos);
    for (const std::size_t line : {std::size_t{0}, second}) {
        const std::string text = printed.substr(line + 37, printed.find('\n', line) - line - 37);
        EXPECT_EQ(text.substr(text.find(' ')), " seconds") << printed;
    }
    EXPECT_EQ(testing::console_output([] { derive_log_formulas(10, some_precision, Announce::no); }), "");
}

TEST(FormulaTexts, OfTheKnownFormulaFor2) {
    const MachinFormula two = make_formula({{26, 18}, {4801, -2}, {8749, 8}});
    const std::string cost = std::to_string(std::llround(formula_cost(two, some_precision)));
    EXPECT_EQ(formula_text(two, 2, some_precision),
              "Log[2] = \n"
              "                     +18 * ArcCoth[26]\n"
              "                     -2 * ArcCoth[4801]\n"
              "                     +8 * ArcCoth[8749]\n"
              "\n        Cost = " +
                  cost);
    EXPECT_EQ(formula_input_text(two, 2), "\tLog[2] = 18*ArcCoth[26] + -2*ArcCoth[4801] + 8*ArcCoth[8749]");
    EXPECT_EQ(formula_parts_text(two, 2),
              "\tLog[2] = 18 /2*Log[1.0800000] + -2 /2*Log[1.0004167] + 8 /2*Log[1.0002286]");
}

TEST(LogFormulaPrecision, IsInNats) {
    EXPECT_DOUBLE_EQ(log_formula_precision(1), 64 * std::log(2.0));
    EXPECT_DOUBLE_EQ(log_formula_precision(51907), 51907 * 44.3614195558365);
}

}  // namespace
}  // namespace znp
