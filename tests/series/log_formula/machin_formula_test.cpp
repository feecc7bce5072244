#include "series/log_formula/machin_formula.hpp"

#include "series/log_formula/formula_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::make_formula;

std::vector<FormulaPair> pairs_of(const MachinFormula& formula) {
    return {formula.begin(), formula.end()};
}

TEST(FormulaAdd, KeepsThePairsSortedAndAddsCoefficients) {
    MachinFormula formula;
    for (const FormulaPair& pair :
         {FormulaPair{26, 18}, {8749, 5}, {4801, -2}, {2, 1}, {8749, 3}, {26, -1}}) {
        EXPECT_TRUE(formula_add(formula, pair, 16));
    }
    EXPECT_EQ(pairs_of(formula), (std::vector<FormulaPair>{{2, 1}, {26, 17}, {4801, -2}, {8749, 8}}));
}

TEST(FormulaAdd, RefusesANewPairBeyondTheCapacityAndChangesNothing) {
    MachinFormula formula;
    for (u64_t x = 2; x < 18; x++) EXPECT_TRUE(formula_add(formula, {2 * x, 1}, 16));
    const MachinFormula before = formula;
    EXPECT_FALSE(formula_add(formula, {7, 1}, 16));
    EXPECT_FALSE(formula_add(formula, {1000, 1}, 16));
    EXPECT_TRUE(formula == before);
    EXPECT_TRUE(formula_add(formula, {8, 4}, 16));
    EXPECT_EQ(formula.count, 16u);
    EXPECT_TRUE(formula_add(formula, {7, 1}, 17));
}

TEST(FormulaAdd, HoldsAsManyPairsAsItPromises) {
    auto rng = testing::make_rng(1);
    MachinFormula formula;
    std::vector<u64_t> xs;
    while (formula.count < MachinFormula::max_pairs) {
        const u64_t x = rng() % 1000;
        ASSERT_TRUE(formula_add(formula, {x, 1}, MachinFormula::max_pairs));
    }
    EXPECT_FALSE(formula_add(formula, {1000, 1}, MachinFormula::max_pairs));
    for (upL_t i = 1; i < formula.count; i++) EXPECT_LT(formula.pairs[i - 1].x, formula.pairs[i].x);
}

TEST(FormulaAdd, ACoefficientThatBecomes0StaysUntilTheCompaction) {
    MachinFormula formula = make_formula({{3, 5}, {4, 1}, {5, 2}});
    EXPECT_TRUE(formula_add(formula, {3, -5}, 3));
    EXPECT_TRUE(formula_add(formula, {5, -2}, 3));
    EXPECT_EQ(formula.count, 3u);
    EXPECT_FALSE(formula_add(formula, {9, 1}, 3));
    compact(formula);
    EXPECT_EQ(pairs_of(formula), (std::vector<FormulaPair>{{4, 1}}));
    MachinFormula empty = make_formula({{3, 0}});
    compact(empty);
    EXPECT_EQ(empty.count, 0u);
}

// The numbers of the formula written out, in long doubles.
long double expected_cost(long double x, long double D) {
    const long double t = D / std::log(x);
    const long double factorial = t <= 1 ? 0 : (t + 0.5L) * (std::log(t) - 1) + 1.4189385332046727L;
    const long double s = t * std::log(2.0L) + factorial;
    return 0.7813L * D + 2 * (s + D) + s;
}

TEST(FormulaCost, OfATermIsItsProductsAndItsDivision) {
    for (const u64_t x : {u64_t{2}, u64_t{26}, u64_t{4801}, u64_t{4294967295}}) {
        for (const double D : {0.5, 5.0, 221.8, 2.3e6, 1e15}) {
            const auto expected = static_cast<double>(expected_cost(static_cast<long double>(x), D));
            EXPECT_NEAR(term_cost(x, D), expected, 1e-12 * expected) << x << " " << D;
        }
    }
    // t is at most 1: no factorial.
    EXPECT_DOUBLE_EQ(term_cost(1000, 1),
                     0.7813 + 2 * (std::log(2.0) / std::log(1000.0) + 1) + std::log(2.0) / std::log(1000.0));
}

TEST(FormulaCost, IsTheSumOverTheTermsThatAreNot0) {
    const double D = testing::some_precision;
    EXPECT_EQ(formula_cost({}, D), 0);
    EXPECT_DOUBLE_EQ(formula_cost(make_formula({{26, 18}, {300, 0}, {4801, -2}, {8749, 8}}), D),
                     term_cost(26, D) + term_cost(4801, D) + term_cost(8749, D));
    EXPECT_EQ(cost_of_failure, std::ldexp(1.0, 100));
}

TEST(FormulaCost, FallsWithTheArgument) {
    double last = 1e300;
    for (u64_t x = 2; x < u64_t{1} << 32; x = x * 3 / 2 + 1) {
        const double cost = term_cost(x, testing::some_precision);
        EXPECT_LT(cost, last);
        last = cost;
    }
}

}  // namespace
}  // namespace znp
