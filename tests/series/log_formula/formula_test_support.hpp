// What the tests of formulas for Log(n) share: their proof by integers, independent of the system's
// factoring.
#pragma once

#include <gmp.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "series/log_formula/machin_formula.hpp"

namespace znp::testing {

// Nats of a million digits.
inline constexpr double some_precision = 2.3e6;

inline MachinFormula make_formula(const std::vector<FormulaPair>& pairs) {
    MachinFormula formula;
    for (const FormulaPair& pair : pairs) {
        EXPECT_TRUE(formula_add(formula, pair, MachinFormula::max_pairs));
    }
    return formula;
}

// The product of ((x + 1) / (x - 1))^c is n^2.
inline bool is_formula_for(const MachinFormula& formula, u64_t n) {
    mpz_t left, right, power;
    mpz_inits(left, right, power, nullptr);
    mpz_set_ui(left, n);
    mpz_mul(left, left, left);
    mpz_set_ui(right, 1);
    for (const auto& [x, c] : formula) {
        const auto exponent = static_cast<u64_t>(std::abs(c));
        mpz_ui_pow_ui(power, x - 1, exponent);
        mpz_mul(c > 0 ? left : right, c > 0 ? left : right, power);
        mpz_ui_pow_ui(power, x + 1, exponent);
        mpz_mul(c > 0 ? right : left, c > 0 ? right : left, power);
    }
    const bool equal = mpz_cmp(left, right) == 0;
    mpz_clears(left, right, power, nullptr);
    return equal;
}

// Ascending arguments from 2 to 2^32 - 1, no coefficient 0.
inline bool is_proper(const MachinFormula& formula) {
    u64_t last = 1;
    for (const auto& [x, c] : formula) {
        if (x <= last || x >> 32 != 0 || c == 0) return false;
        last = x;
    }
    return formula.count <= MachinFormula::max_pairs;
}

}  // namespace znp::testing
