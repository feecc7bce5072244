// The Euler-Mascheroni constant by the formula of Brent and McMillan: A/B - ln n with n = 2^k; refined,
// A/B - C/B^2 - ln n, in half of that n for the same digits. Source: R. P. Brent, E. M. McMillan, "Some new
// algorithms for high-precision computation of Euler's constant", 1980.
#pragma once

#include <algorithm>
#include <cmath>

#include "series/catalogue.hpp"

namespace znp {

// Words to which C/B^2 matters for n = 2^m; 0 where it does not. It is about e^-4n in size, x words below the
// point, and its own series gets no more than x words right.
inline upL_t euler_gamma_c_words(u32_t m, upL_t p) {
    const double x = std::ldexp(4 * words_per_nat, static_cast<int>(m));
    const double w = std::trunc(std::min(x, static_cast<double>(p) - x)) + 1;
    return w < 0 ? 0 : std::max<upL_t>(1, static_cast<upL_t>(w));
}

// k at least 2.
template <class Engine>
typename Engine::Number euler_gamma(Engine& engine, u32_t k, bool refined) {
    engine.check_parameter(k);
    const u32_t m = refined ? k - 1 : k;
    const upL_t w = refined ? euler_gamma_c_words(m, engine.precision()) : 0;
    auto sums = engine.euler_gamma_ab(m, w);
    auto series = engine.quotient(std::move(sums.T), std::move(sums.D));
    if (w != 0) {
        auto correction = engine.euler_gamma_c(m, w, sums.S, sums.R);
        sums = {};
        correction.negate();
        series = engine.sum(std::move(series), std::move(correction));
    } else if (refined) {
        engine.skip_euler_gamma_c();
    }
    // ln 2 = 18 ArcCoth(26) - 2 ArcCoth(4801) + 8 ArcCoth(8749)
    series = engine.add_arccoth_term(std::move(series), 26, -18 * s64_t{m});
    series = engine.add_arccoth_term(std::move(series), 4801, 2 * s64_t{m});
    return engine.add_arccoth_term(std::move(series), 8749, -8 * s64_t{m});
}

}  // namespace znp
