// Log(n) as a sum of multiples of ArcCoth series (series/log_formula/), a term after the other.
#pragma once

#include "series/log_formula/machin_formula.hpp"

namespace znp {

// Of at least one term.
template <class Engine>
typename Engine::Number log_by_machin(Engine& engine, const MachinFormula& formula) {
    const FormulaPair* term = formula.begin();
    auto sum = engine.arccoth_term(term->x, term->coefficient);
    for (++term; term != formula.end(); ++term) {
        sum = engine.add_arccoth_term(std::move(sum), term->x, term->coefficient);
    }
    return sum;
}

}  // namespace znp
