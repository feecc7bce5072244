#include "series/log_formula/factorization.hpp"

#include "series/log_formula/formula_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::make_formula;

std::vector<FormulaPair> factors(u64_t n) {
    Factorization factorization;
    EXPECT_TRUE(factor_whole(factorization, n, 1)) << n;
    return {factorization.begin(), factorization.end()};
}

bool is_prime(u64_t n) {
    mpz_t z;
    mpz_init_set_ui(z, n);
    const bool prime = mpz_probab_prime_p(z, 40) != 0;
    mpz_clear(z);
    return prime;
}

void expect_factored(u64_t n) {
    u64_t product = 1;
    u64_t last = 1;
    for (const auto& [prime, exponent] : factors(n)) {
        EXPECT_TRUE(is_prime(prime)) << n << ": " << prime;
        EXPECT_GT(prime, last) << n;
        EXPECT_GT(exponent, 0) << n;
        for (s64_t i = 0; i < exponent; i++) product *= prime;
        last = prime;
    }
    EXPECT_EQ(product, n);
}

TEST(SmallPrimes, AreAllBelow2To16) {
    const auto primes = small_primes();
    ASSERT_EQ(primes.size(), 6542u);
    EXPECT_EQ(primes.front(), 2u);
    EXPECT_EQ(primes.back(), 65521u);
    for (upL_t i = 0; i < primes.size(); i++) {
        EXPECT_TRUE(is_prime(primes[i]));
        if (i != 0) {
            EXPECT_LT(primes[i - 1], primes[i]);
        }
    }
}

TEST(Factor, SmallLargeAndRandomNumbers) {
    for (u64_t n = 1; n <= 20'000; n++) expect_factored(n);
    const u64_t end = u64_t{1} << 32;
    for (u64_t n = end - 5'000; n <= end; n++) expect_factored(n);
    auto rng = testing::make_rng(2);
    for (int i = 0; i < 50'000; i++) expect_factored(1 + rng() % end);
}

// Squares and products of the largest primes, and the numbers that pass for primes to the bases 2, 7 or 61.
TEST(Factor, NumbersThatAreHardToTellFromPrimes) {
    const auto primes = small_primes();
    for (upL_t i = primes.size() - 40; i < primes.size(); i++) {
        for (upL_t j = i; j < primes.size(); j++) expect_factored(u64_t{primes[i]} * primes[j]);
    }
    for (upL_t i = 50; i < 70; i++) {
        for (upL_t j = i; j < 80; j++) expect_factored(u64_t{primes[i]} * primes[j]);
    }
    for (const u64_t n :
         {2047u, 3277u, 314821u, 1373653u, 25326001u, 3215031751u, 2269093u, 4188889u, 68719u * 61u, 294409u,
          56052361u, 118901521u, 4294967291u, 2147483647u, 4294049777u}) {
        expect_factored(n);
    }
}

TEST(Factor, DividesByTheBaseAloneAndGivesTheCofactor) {
    Factorization factorization;
    EXPECT_EQ(factor(factorization, u64_t{8} * 9 * 7 * 11 * 23, 4, 1), 11u * 23);
    EXPECT_TRUE(factorization == make_formula({{2, 3}, {3, 2}, {7, 1}}));
    // The factors of a second number come to it, by their weight.
    EXPECT_EQ(factor(factorization, 2 * 5 * 49, 4, -2), 1u);
    EXPECT_TRUE(factorization == make_formula({{2, 1}, {3, 2}, {5, -2}, {7, -3}}));
    Factorization prime;
    EXPECT_EQ(factor(prime, 7, 4, 5), 1u);
    EXPECT_TRUE(prime == make_formula({{7, 5}}));
    EXPECT_EQ(factor(prime, 11, 4, 5), 11u);
    EXPECT_EQ(factor(prime, 1, 4, 5), 1u);
    EXPECT_TRUE(prime == make_formula({{7, 5}}));
}

TEST(Factor, AFullFactorizationTakesNoMore) {
    Factorization full;
    for (u64_t i = 0; i < Factorization::max_pairs; i++) {
        ASSERT_TRUE(formula_add(full, {1'000'003 + i, 1}, Factorization::max_pairs));
    }
    EXPECT_EQ(factor(full, 12, 4, 1), 0u);
    EXPECT_FALSE(factor_whole(full, 12, 1));
    EXPECT_FALSE(factor_whole(full, 2147483647, 1));
    EXPECT_TRUE(factor_whole(full, 1'000'003, 1));
}

TEST(VerifyFormula, TakesNothingButTheLogarithm) {
    const MachinFormula two = make_formula({{26, 18}, {4801, -2}, {8749, 8}});
    EXPECT_TRUE(verify_formula(two, 2));
    EXPECT_TRUE(testing::is_formula_for(two, 2));
    for (const u64_t n : {1u, 3u, 4u, 2147483647u}) EXPECT_FALSE(verify_formula(two, n)) << n;
    for (upL_t i = 0; i < two.count; i++) {
        for (const s64_t by : {-2, -1, 1, 2}) {
            MachinFormula wrong = two;
            wrong.pairs[i].coefficient += by;
            EXPECT_FALSE(verify_formula(wrong, 2));
            wrong = two;
            wrong.pairs[i].x += static_cast<u64_t>(by);
            EXPECT_FALSE(verify_formula(wrong, 2));
        }
        MachinFormula wrong = two;
        wrong.pairs[i].coefficient = -wrong.pairs[i].coefficient;
        EXPECT_FALSE(verify_formula(wrong, 2));
    }
    EXPECT_TRUE(verify_formula({}, 1));
    EXPECT_FALSE(verify_formula({}, 2));
    // Half of it: an odd exponent stays.
    EXPECT_FALSE(verify_formula(make_formula({{26, 9}, {4801, -1}, {8749, 4}}), 2));
    // 1 / 2
    EXPECT_FALSE(verify_formula(make_formula({{26, -18}, {4801, 2}, {8749, -8}}), 2));
}

TEST(VerifyFormula, TheLargestArgument) {
    const MachinFormula base =
        make_formula({{26, 31 * 18}, {4801, 31 * -2}, {8749, 31 * 8}, {4294967295, -2}});
    EXPECT_TRUE(verify_formula(base, 2147483647));
    EXPECT_FALSE(verify_formula(base, 2147483648));
}

// More primes than a factorization holds.
TEST(VerifyFormula, WhatDoesNotFitIsNotVerified) {
    MachinFormula formula;
    for (u64_t x = 1'000'004; formula.count < MachinFormula::max_pairs; x += 1'000) {
        ASSERT_TRUE(formula_add(formula, {x, 2}, MachinFormula::max_pairs));
    }
    EXPECT_FALSE(verify_formula(formula, 2));
}

}  // namespace
}  // namespace znp
