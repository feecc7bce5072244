// The tables from which formulas for Log(n) are built: known formulas, base formulas and relations. There are
// two of each, so that a result can be verified by another formula.
//
// base_formulas.inc and relations.inc are made and proved by generators/log_formula_tables.py.
#pragma once

#include <span>

#include "foundation/types.hpp"

namespace znp {

enum class FormulaKind : u32_t { secondary = 0, primary = 1 };

// A known formula: Log(n) = sum of coefficients[i] ArcCoth(arguments[i]).
// A relation, of a prime n: Log(n) = c ArcCoth(x) + sum of e_i Log(p_i) over smaller primes, with x and the
// p_i as arguments, c and the e_i as coefficients.
struct FormulaRow {
    u64_t n;
    u64_t count;
    u64_t arguments[10];
    s64_t coefficients[10];
    double weight;  // the sum of 1 / ln x: the cost beyond that of a division
};
static_assert(sizeof(FormulaRow) == 184);

// Ascending by n; row 0 is a sentinel with n = 0.
std::span<const FormulaRow> known_formulas(FormulaKind which);
// Null if there is none.
const FormulaRow* find_known_formula(FormulaKind which, u64_t n);

// Ascending by prime; of one prime the weights descend.
std::span<const FormulaRow> relations(FormulaKind which);
// Of a prime, the cheapest one over the first k primes; null if there is none.
const FormulaRow* find_relation(FormulaKind which, u64_t prime, upL_t k);

// The logarithms of the first k primes over k ArcCoths.
struct BaseFormulas {
    static constexpr upL_t least_k = 4, most_k = 8;

    upL_t k;
    const u64_t* arguments;
    const s64_t* coefficients_;

    // Log of prime number i = sum of coefficients(i)[j] ArcCoth(arguments[j])
    const s64_t* coefficients(upL_t i) const { return coefficients_ + i * k; }
};
const BaseFormulas& base_formulas(FormulaKind which, upL_t k);

// The first primes, and the least k of a base with this one, most_k for all above it.
inline constexpr u64_t base_primes[BaseFormulas::most_k] = {2, 3, 5, 7, 11, 13, 17, 19};
upL_t base_size_for(u64_t prime);

}  // namespace znp
