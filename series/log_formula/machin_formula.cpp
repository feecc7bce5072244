#include "series/log_formula/machin_formula.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "series/bss.hpp"

namespace znp {

bool operator==(const MachinFormula& a, const MachinFormula& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

const FormulaPair* find_pair(const MachinFormula& formula, u64_t x) {
    return std::lower_bound(formula.begin(), formula.end(), x,
                            [](const FormulaPair& pair, u64_t key) { return pair.x < key; });
}

bool formula_add(MachinFormula& formula, const FormulaPair& pair, upL_t capacity) {
    FormulaPair* const place = formula.begin() + (find_pair(formula, pair.x) - formula.begin());
    if (place != formula.end() && place->x == pair.x) {
        place->coefficient += pair.coefficient;
        return true;
    }
    if (formula.count >= capacity) return false;
    std::copy_backward(place, formula.end(), formula.end() + 1);
    *place = pair;
    formula.count++;
    return true;
}

void compact(MachinFormula& formula) {
    const auto* const end = std::remove_if(formula.begin(), formula.end(),
                                           [](const FormulaPair& pair) { return pair.coefficient == 0; });
    formula.count = static_cast<u64_t>(end - formula.begin());
}

// t terms are summed by products of s nats, of t ln 2 + ln(t!) and a few more; then follow a division and
// products with D.
double term_cost(u64_t x, double D) {
    const double t = D / std::log(static_cast<double>(x));
    const double s = t * std::numbers::ln2 + log_factorial(t);
    return 2 * (s + D) + s + division_cost * D;
}

double formula_cost(const MachinFormula& formula, double D) {
    double cost = 0;
    for (const FormulaPair& pair : formula) {
        if (pair.coefficient != 0) cost += term_cost(pair.x, D);
    }
    return cost;
}

}  // namespace znp
