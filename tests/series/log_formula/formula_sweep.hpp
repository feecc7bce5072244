// Many numbers: two different verified formulas each, or the text for it that there is none.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "series/log_formula/factorization.hpp"
#include "series/log_formula/formula_test_support.hpp"
#include "series/log_formula/log_formula.hpp"
#include "test_seed.hpp"

namespace znp::testing {

// Without powers of a million bits.
inline bool is_quickly_proved(const MachinFormula& formula) {
    double bits = 0;
    for (const auto& [x, c] : formula)
        bits += std::fabs(static_cast<double>(c)) * std::log2(static_cast<double>(x));
    return bits < 100'000;
}

struct FormulaSweep {
    u64_t tried = 0, derived = 0;
    u64_t terms[2] = {};
    double costs[2] = {};
    u64_t most_terms = 0;

    void derive(u64_t n, double D) {
        tried++;
        const LogFormulas found = derive_log_formulas(n, D, Announce::no);
        if (found.failure != nullptr) {
            EXPECT_STREQ(found.failure, "Unable to derive formula.") << n;
            return;
        }
        ASSERT_EQ(found.formulas.size(), 2u) << n;
        EXPECT_FALSE(found.formulas[0] == found.formulas[1]) << n;
        for (int i = 0; i < 2; i++) {
            const MachinFormula& formula = found.formulas[static_cast<upL_t>(i)];
            EXPECT_TRUE(verify_formula(formula, n)) << n;
            if (is_quickly_proved(formula)) {
                EXPECT_TRUE(is_formula_for(formula, n)) << n;
            }
            EXPECT_TRUE(is_proper(formula)) << n;
            terms[i] += formula.count;
            costs[i] += formula_cost(formula, D) / D;
            most_terms = std::max(most_terms, formula.count);
        }
        derived++;
    }

    void report() const {
        const auto mean = [this](double sum) {
            return sum / static_cast<double>(std::max<u64_t>(derived, 1));
        };
        std::printf(
            "two formulas for %llu of %llu numbers; terms: mean %.2f and %.2f, most %llu; cost / D: %.2f and "
            "%.2f\n",
            static_cast<unsigned long long>(derived), static_cast<unsigned long long>(tried),
            mean(static_cast<double>(terms[0])), mean(static_cast<double>(terms[1])),
            static_cast<unsigned long long>(most_terms), mean(costs[0]), mean(costs[1]));
    }
};

}  // namespace znp::testing
