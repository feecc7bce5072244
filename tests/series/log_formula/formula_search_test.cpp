#include "series/log_formula/formula_search.hpp"

#include "console_capture.hpp"
#include "series/log_formula/factorization.hpp"
#include "series/log_formula/formula_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::make_formula;
using testing::some_precision;

constexpr u64_t largest = 2147483647;

SearchResult search(u64_t n, upL_t k, FormulaKind which = FormulaKind::primary, double D = some_precision) {
    SearchResult found = search_formula(n, k, which, D);
    compact(found.formula);
    return found;
}

void expect_formula(const SearchResult& found, u64_t n, double D = some_precision) {
    ASSERT_LT(found.cost, cost_of_failure) << n;
    EXPECT_TRUE(verify_formula(found.formula, n)) << n;
    EXPECT_TRUE(testing::is_proper(found.formula)) << n;
    EXPECT_LE(found.formula.count, 16u) << n;
    EXPECT_DOUBLE_EQ(found.cost, formula_cost(found.formula, D)) << n;
}

TEST(FormulaSearch, EveryBaseFindsAFormula) {
    auto rng = testing::make_rng(3);
    for (int i = 0; i < 100; i++) {
        const u64_t n = 2 + rng() % (largest - 1);
        for (upL_t k = BaseFormulas::least_k; k <= BaseFormulas::most_k; k++) {
            for (const FormulaKind which : {FormulaKind::primary, FormulaKind::secondary}) {
                expect_formula(search(n, k, which), n);
            }
        }
    }
}

TEST(FormulaSearch, SmoothNumbersNeedOneNode) {
    for (const u64_t n : {2u, 3u, 6u, 10u, 1024u, 210u, 9699690u, 1u << 30}) {
        const SearchResult found = search(n, 8);
        expect_formula(found, n);
        EXPECT_EQ(found.nodes, 1u);
    }
}

// The prime 17 by its relation over 2, 3, 5, 7; 1009 by a neighbour, for it has none.
TEST(FormulaSearch, RelationsAndNeighbours) {
    const SearchResult seventeen = search(17, 4);
    expect_formula(seventeen, 17);
    EXPECT_TRUE(seventeen.formula ==
                make_formula({{251, 588}, {449, 222}, {4801, -156}, {8749, 252}, {11663, -2}}));
    ASSERT_EQ(find_relation(FormulaKind::primary, 1009, 8), nullptr);
    expect_formula(search(1009, 8), 1009);
}

std::vector<u64_t> smooth_numbers(u64_t low, u64_t high) {
    std::vector<u64_t> numbers{1};
    for (const u64_t p : {2u, 3u, 5u, 7u}) {
        for (upL_t i = 0; i < numbers.size(); i++) {
            if (numbers[i] * p <= high) numbers.push_back(numbers[i] * p);
        }
    }
    std::erase_if(numbers, [low](u64_t s) { return s < low; });
    return numbers;
}

// The primes m next to products s of 2, 3, 5, 7: one ArcCoth leads to s.
TEST(FormulaSearch, EachOfTheFourNeighbours) {
    struct Neighbour {
        s64_t m_less_s;
        u64_t factor;
        s64_t x_less_multiple;  // x = factor m + x_less_multiple
        s64_t c;
    };
    for (const auto& [m_less_s, factor, rest, c] :
         {Neighbour{-1, 2, 1, -2}, {1, 2, -1, 2}, {-2, 1, 1, -2}, {2, 1, -1, 2}}) {
        int tried = 0;
        for (const u64_t s : smooth_numbers(1'000'000, largest - 2)) {
            const u64_t m = s + static_cast<u64_t>(m_less_s);
            Factorization factors;
            ASSERT_TRUE(factor_whole(factors, m, 1));
            if (factors.begin()->x != m) continue;
            const SearchResult found = search(m, 4);
            expect_formula(found, m);
            const FormulaPair expected{factor * m + static_cast<u64_t>(rest), c};
            const FormulaPair* const place = find_pair(found.formula, expected.x);
            // Or by a neighbour with a larger argument.
            const bool is_better = place == found.formula.end() && found.formula.end()[-1].x > expected.x;
            EXPECT_TRUE(is_better || *place == expected) << m;
            tried++;
        }
        EXPECT_GT(tried, 20) << m_less_s;
    }
}

TEST(FormulaSearch, TheLargestArgumentIs2To32LessOne) {
    const SearchResult found = search(largest, 4);
    expect_formula(found, largest);
    EXPECT_TRUE(found.formula ==
                make_formula({{26, 31 * 18}, {4801, 31 * -2}, {8749, 31 * 8}, {4294967295, -2}}));
}

TEST(FormulaSearch, ArgumentsBeyond32BitsAreDroppedSilently) {
    // 2m + 1 and 2m - 1 do not fit, m + 1 and m - 1 do.
    for (const u64_t n : {4294967291u, 4294967279u}) {
        const SearchResult found = search(n, 4);
        expect_formula(found, n);
    }
    // None fits: prime and composite.
    for (const u64_t n : {u64_t{4294967296}, u64_t{4294967311}, ~u64_t{0}}) {
        std::string printed = testing::console_output([&] {
            const SearchResult found = search(n, 4);
            EXPECT_EQ(found.cost, cost_of_failure);
            EXPECT_EQ(found.formula.count, 0u);
            EXPECT_EQ(found.nodes, 0u);
        });
        EXPECT_EQ(printed, "");
    }
}

TEST(FormulaSearch, IsBoundedByNodes) {
    auto rng = testing::make_rng(4);
    u64_t most = 0;
    for (int i = 0; i < 30; i++) {
        for (upL_t k = BaseFormulas::least_k; k <= BaseFormulas::most_k; k++) {
            for (const double D : {221.8, some_precision, 1e12}) {
                const u64_t n = 2 + rng() % (largest - 1);
                const SearchResult found = search(n, k, FormulaKind::primary, D);
                expect_formula(found, n, D);
                EXPECT_LE(found.nodes, most_search_nodes);
                most = std::max(most, found.nodes);
            }
        }
    }
    std::printf("most nodes: %llu\n", static_cast<unsigned long long>(most));
}

TEST(CloseFormula, AnEmptyQueueLeavesTheFormula) {
    MachinFormula formula = make_formula({{26, 18}});
    EXPECT_DOUBLE_EQ(close_formula(formula, {}, FormulaKind::primary, some_precision, 16),
                     term_cost(26, some_precision));
    EXPECT_TRUE(formula == make_formula({{26, 18}}));
}

TEST(CloseFormula, PowersOf2TakeTheKnownFormulaIfItIsCheaper) {
    for (const s64_t exponent : {1, 2, 10, 30}) {
        MachinFormula formula;
        close_formula(formula, make_formula({{2, exponent}}), FormulaKind::primary, some_precision, 16);
        EXPECT_TRUE(formula ==
                    make_formula({{26, 18 * exponent}, {4801, -2 * exponent}, {8749, 8 * exponent}}));
        EXPECT_TRUE(verify_formula(formula, u64_t{1} << exponent));
    }
    // With a 3 it takes the base.
    MachinFormula formula;
    close_formula(formula, make_formula({{2, 1}, {3, 1}}), FormulaKind::primary, some_precision, 16);
    EXPECT_TRUE(formula ==
                make_formula({{251, 144 + 228}, {449, 54 + 86}, {4801, -38 - 60}, {8749, 62 + 98}}));
}

TEST(CloseFormula, WhatDoesNotFitTheCapacityFails) {
    for (const upL_t capacity : {upL_t{3}, upL_t{4}, upL_t{5}}) {
        MachinFormula formula = make_formula({{30000, 2}});
        const double cost =
            close_formula(formula, make_formula({{3, 1}}), FormulaKind::primary, some_precision, capacity);
        EXPECT_EQ(cost < cost_of_failure, capacity == 5) << capacity;
    }
}

TEST(CloseFormulaDeathTest, APrimeBeyondTheBaseIsAProgramError) {
    for (const u64_t prime : {u64_t{23}, u64_t{4294967291}}) {
        EXPECT_EXIT(testing::dying([&] {
                        MachinFormula formula;
                        close_formula(formula, make_formula({{2, 1}, {prime, 1}}), FormulaKind::primary,
                                      some_precision, 16);
                    }),
                    ::testing::ExitedWithCode(1), "Non-base prime found in queue\\.");
    }
}

}  // namespace
}  // namespace znp
