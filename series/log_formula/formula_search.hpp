// The search for a formula for Log(n): depth first, bounded by cost.
//
// n is a product of primes. What lies beyond the base, the first k primes, is replaced step by step: the
// largest prime by its relation, or the whole cofactor m by a neighbour, since ArcCoth(x) = 1/2 (Log(x + 1) -
// Log(x - 1)) binds the numbers m and m + 1 with x = 2m + 1, m and m - 1 with 2m - 1, m and m + 2 with m + 1,
// m and m - 2 with m - 1. Each step adds one ArcCoth. Where only primes of the base are left, the base
// formulas close the formula.
#pragma once

#include "series/log_formula/formula_tables.hpp"
#include "series/log_formula/machin_formula.hpp"

namespace znp {

// Nodes that a search looks at before it is content with the best that it has.
inline constexpr u64_t most_search_nodes = 100000;

// What a search has found; formula is empty with cost_of_failure.
struct SearchResult {
    MachinFormula formula;
    double cost = cost_of_failure;
    u64_t nodes = 0;
};

// Of n from 2 to 2^32 - 1, over the first k primes, for a precision of D nats. Pairs with the coefficient 0
// can be left.
SearchResult search_formula(u64_t n, upL_t k, FormulaKind which, double D);

// Adds the logarithm of a product of base primes to the formula, by the cheapest table that serves, and gives
// the cost of the whole; cost_of_failure if it gets more than `capacity` pairs. A prime beyond the base is a
// fatal error.
double close_formula(MachinFormula& formula, const Factorization& queue, FormulaKind which, double D,
                     upL_t capacity);

}  // namespace znp
