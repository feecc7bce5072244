// MachinFormula: a sum of integer multiples of ArcCoth series, c1 ArcCoth(x1) + c2 ArcCoth(x2) + ..., and
// what it costs to sum.
//
// A sparse vector of pairs, ascending by x, each x once. The same vector serves as a factorization: x is a
// prime then, and the coefficient its exponent.
#pragma once

#include <array>
#include <string>

#include "foundation/types.hpp"

namespace znp {

struct FormulaPair {
    u64_t x;
    s64_t coefficient;
    bool operator==(const FormulaPair&) const = default;
};

struct MachinFormula {
    static constexpr upL_t max_pairs = 32;

    u64_t count = 0;
    std::array<FormulaPair, max_pairs> pairs;

    const FormulaPair* begin() const { return pairs.data(); }
    const FormulaPair* end() const { return pairs.data() + count; }
    FormulaPair* begin() { return pairs.data(); }
    FormulaPair* end() { return pairs.data() + count; }
};
using Factorization = MachinFormula;

bool operator==(const MachinFormula& a, const MachinFormula& b);

// The pair's place, or where it would stand.
const FormulaPair* find_pair(const MachinFormula& formula, u64_t x);

// Adds the coefficient to that of x. False, and nothing changed, if x is new and the formula has as many
// pairs as the capacity (at most max_pairs) says. A coefficient that becomes 0 stays.
bool formula_add(MachinFormula& formula, const FormulaPair& pair, upL_t capacity);

// Drops the pairs with the coefficient 0.
void compact(MachinFormula& formula);

// The time of one term and of a formula, in arbitrary units, for a precision of D nats. x at least 2.
double term_cost(u64_t x, double D);
double formula_cost(const MachinFormula& formula, double D);  // of the terms that are not 0

// Of an attempt without a result.
inline constexpr double cost_of_failure = 1.2676506002282294e30;  // 2^100

// The time of the division, next to that of D words of product.
inline constexpr double division_cost = 0.7813;

}  // namespace znp
