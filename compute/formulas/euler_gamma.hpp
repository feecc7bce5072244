// The Euler-Mascheroni constant by the formula of Brent and McMillan, with n = 2^m: A/B - m ln 2; refined, in
// half of n for the same digits, A/B - C/B^2 - m ln 2. Source: R. P. Brent, E. M. McMillan, "Some new
// algorithms for high-precision computation of Euler's constant", 1980.
#pragma once

#include <algorithm>
#include <cmath>

#include "series/catalogue.hpp"

namespace znp {

// Words to which C/B^2, about e^-4n in size, matters; 0 where it does not.
inline upL_t euler_gamma_c_words(u32_t m, upL_t p) {
    const double x = std::ldexp(4 * words_per_nat, static_cast<int>(m));
    const double w = std::min(x, static_cast<double>(p) - x) + 1;
    return w < 0 ? 0 : static_cast<upL_t>(w);
}

template <class Engine>
typename Engine::Number euler_gamma(Engine& engine, u32_t m, bool refined) {
    const upL_t w = refined ? euler_gamma_c_words(m, engine.precision()) : 0;
    auto sums = engine.euler_gamma_ab(m, w);
    auto series = engine.quotient(std::move(sums.T), std::move(sums.D));
    if (w != 0) {
        auto correction = engine.euler_gamma_c(m, w, sums.S, sums.R);
        sums = {};
        correction.negate();
        series = engine.sum(std::move(series), std::move(correction));
    }
    // ln 2 = 18 ArcCoth(26) - 2 ArcCoth(4801) + 8 ArcCoth(8749)
    struct Term {
        s64_t factor;
        u64_t x;
    };
    for (const Term& term : {Term{-18, 26}, Term{2, 4801}, Term{-8, 8749}}) {
        series = engine.sum(std::move(series),
                            engine.sum_series(ArcCoth(term.x), 1, term.x, term.factor * s64_t{m}));
    }
    return series;
}

}  // namespace znp
