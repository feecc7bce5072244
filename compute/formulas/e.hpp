// e by the Taylor series of exp(1), or as the reciprocal of that of exp(-1).
#pragma once

#include "series/catalogue.hpp"
#include "series/partial_series.hpp"

namespace znp {

// The terms from 1 on sum to e - 2, and with alternating signs to 1/e. Their numbers grow so slowly that
// sections gain nothing: one does.
template <class Engine>
typename Engine::Number e(Engine& engine, bool inverse) {
    const Series_E_Taylor terms(inverse);
    const PSRPlan plan = make_single_section(terms, 1, terms.terms(engine.precision()));
    auto series = engine.series_quotient(terms, plan,
                                         {.nQ = 0, .nP = 1, .subtract = false, .dQ = 1, .inverted = inverse});
    if (!inverse) engine.add(series, 2, 0);
    return series;
}

}  // namespace znp
