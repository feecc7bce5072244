// Every row of the tables, proved by integers and verified by the system.
#include "series/log_formula/formula_tables.hpp"

#include <algorithm>

#include "series/log_formula/factorization.hpp"
#include "series/log_formula/formula_test_support.hpp"

namespace znp {
namespace {

constexpr FormulaKind kinds[] = {FormulaKind::primary, FormulaKind::secondary};

MachinFormula formula_of(const FormulaRow& row) {
    MachinFormula formula;
    for (upL_t i = 0; i < row.count; i++) {
        EXPECT_TRUE(formula_add(formula, {row.arguments[i], row.coefficients[i]}, MachinFormula::max_pairs));
    }
    EXPECT_EQ(formula.count, row.count);
    return formula;
}

double weight(const u64_t* xs, upL_t count) {
    double sum = 0;
    for (upL_t i = 0; i < count; i++) sum += 1 / std::log(static_cast<double>(xs[i]));
    return sum;
}

TEST(FormulaTables, HaveAsManyRowsAsTheyShould) {
    EXPECT_EQ(known_formulas(FormulaKind::primary).size(), 12u);
    EXPECT_EQ(known_formulas(FormulaKind::secondary).size(), 14u);
    EXPECT_EQ(relations(FormulaKind::primary).size(), 200u);
    EXPECT_EQ(relations(FormulaKind::secondary).size(), 202u);
}

TEST(FormulaTables, TheVerificationOfEveryTableRowPasses) {
    upL_t rows = 0;
    for (const FormulaKind which : kinds) {
        const auto table = known_formulas(which);
        EXPECT_EQ(table[0].n, 0u);
        for (const FormulaRow& row : table.subspan(1)) {
            const MachinFormula formula = formula_of(row);
            EXPECT_TRUE(verify_formula(formula, row.n)) << row.n;
            EXPECT_TRUE(testing::is_formula_for(formula, row.n)) << row.n;
            EXPECT_TRUE(testing::is_proper(formula)) << row.n;
            EXPECT_NEAR(row.weight, weight(row.arguments, row.count), 1e-6) << row.n;
            rows++;
        }
    }
    EXPECT_EQ(rows, 24u);
}

TEST(FormulaTables, KnownFormulasAreFoundByTheirNumber) {
    for (const FormulaKind which : kinds) {
        const auto table = known_formulas(which);
        EXPECT_TRUE(std::ranges::is_sorted(table, {}, &FormulaRow::n));
        u64_t found = 0;
        for (u64_t n = 0; n <= 200; n++) {
            const FormulaRow* const row = find_known_formula(which, n);
            if (row == nullptr) continue;
            EXPECT_EQ(row->n, n);
            found++;
        }
        EXPECT_EQ(found, table.size() - 1);
    }
}

TEST(FormulaTables, EveryBaseFormulaIsTheLogarithmOfItsPrime) {
    for (const FormulaKind which : kinds) {
        for (upL_t k = BaseFormulas::least_k; k <= BaseFormulas::most_k; k++) {
            const BaseFormulas& base = base_formulas(which, k);
            ASSERT_EQ(base.k, k);
            for (upL_t i = 0; i < k; i++) {
                MachinFormula formula;
                for (upL_t j = 0; j < k; j++) {
                    ASSERT_TRUE(formula_add(formula, {base.arguments[j], base.coefficients(i)[j]}, 8));
                }
                EXPECT_TRUE(testing::is_proper(formula));
                EXPECT_TRUE(testing::is_formula_for(formula, base_primes[i])) << k << " " << base_primes[i];
                EXPECT_TRUE(verify_formula(formula, base_primes[i])) << k << " " << base_primes[i];
            }
        }
    }
}

TEST(FormulaTables, PrimaryAndSecondaryBasesDiffer) {
    for (upL_t k = BaseFormulas::least_k; k <= BaseFormulas::most_k; k++) {
        const BaseFormulas& primary = base_formulas(FormulaKind::primary, k);
        const BaseFormulas& secondary = base_formulas(FormulaKind::secondary, k);
        EXPECT_FALSE(std::equal(primary.arguments, primary.arguments + k, secondary.arguments));
        EXPECT_LT(weight(primary.arguments, k), weight(secondary.arguments, k));
    }
}

// With the base formulas of all eight primes a relation is a formula.
TEST(FormulaTables, EveryRelationIsTheLogarithmOfItsPrime) {
    const auto& small = small_primes();
    for (const FormulaKind which : kinds) {
        const BaseFormulas& base = base_formulas(which, BaseFormulas::most_k);
        for (const FormulaRow& row : relations(which)) {
            ASSERT_GE(row.count, 2u);
            ASSERT_LE(row.count, 10u);
            EXPECT_TRUE(std::ranges::binary_search(small, row.n));
            EXPECT_LT(row.arguments[0], u64_t{1} << 32);
            EXPECT_NEAR(row.weight, weight(row.arguments, 1), 1e-6);
            MachinFormula formula;
            ASSERT_TRUE(formula_add(formula, {row.arguments[0], row.coefficients[0]}, 16));
            for (upL_t i = 1; i < row.count; i++) {
                if (i > 1) {
                    EXPECT_LT(row.arguments[i - 1], row.arguments[i]);
                }
                EXPECT_LT(row.arguments[i], row.n);
                EXPECT_NE(row.coefficients[i], 0);
                const auto* const prime = std::ranges::find(base_primes, row.arguments[i]);
                ASSERT_NE(prime, std::end(base_primes)) << row.n;
                for (upL_t j = 0; j < base.k; j++) {
                    const s64_t c =
                        row.coefficients[i] * base.coefficients(static_cast<upL_t>(prime - base_primes))[j];
                    ASSERT_TRUE(formula_add(formula, {base.arguments[j], c}, 16));
                }
            }
            EXPECT_TRUE(verify_formula(formula, row.n)) << row.n << " " << row.arguments[0];
        }
    }
}

TEST(FormulaTables, RelationsStandByPrimeAndDescendingWeight) {
    for (const FormulaKind which : kinds) {
        const auto table = relations(which);
        for (upL_t i = 1; i < table.size(); i++) {
            EXPECT_LE(table[i - 1].n, table[i].n);
            if (table[i - 1].n == table[i].n) {
                EXPECT_GT(table[i - 1].weight, table[i].weight) << table[i].n;
            }
        }
    }
}

TEST(FormulaTables, TheLastRelationWithinTheBaseIsFound) {
    for (const FormulaKind which : kinds) {
        const auto table = relations(which);
        for (upL_t k = BaseFormulas::least_k; k <= BaseFormulas::most_k; k++) {
            for (u64_t prime = 2; prime < 2000; prime++) {
                const FormulaRow* expected = nullptr;
                for (const FormulaRow& row : table) {
                    const bool within = std::all_of(row.arguments + 1, row.arguments + row.count,
                                                    [&](u64_t p) { return p <= base_primes[k - 1]; });
                    if (row.n == prime && within) expected = &row;
                }
                EXPECT_EQ(find_relation(which, prime, k), expected) << prime << " " << k;
            }
        }
    }
    // 13 has a relation over 2, 3, 5, 7 and a cheaper one with 11.
    EXPECT_EQ(find_relation(FormulaKind::primary, 13, 4)->arguments[0], 8191u);
    EXPECT_EQ(find_relation(FormulaKind::primary, 13, 5)->arguments[0], 13311u);
    EXPECT_EQ(find_relation(FormulaKind::primary, 4294967291, 8), nullptr);
}

TEST(FormulaTables, TheLargestPrimePicksTheBase) {
    const std::vector<std::pair<u64_t, upL_t>> expected{{2, 4},  {3, 4},  {5, 4},  {7, 4},  {11, 5},
                                                        {13, 6}, {17, 7}, {19, 8}, {23, 8}, {4294967291, 8}};
    for (const auto& [prime, k] : expected) EXPECT_EQ(base_size_for(prime), k) << prime;
}

}  // namespace
}  // namespace znp
