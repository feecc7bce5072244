// sqrt(n) = n / sqrt(n), and the golden ratio = (sqrt(5) + 1) / 2.
#pragma once

#include "foundation/types.hpp"

namespace znp {

// n at least 1.
template <class Engine>
typename Engine::Number square_root(Engine& engine, u64_t n) {
    constexpr upL_t extra_words = 3;  // for the products with words and the sum that follow in place
    auto x = engine.inverse_sqrt(n, extra_words);
    engine.multiply(x, n);
    return x;
}

template <class Engine>
typename Engine::Number golden_ratio(Engine& engine) {
    constexpr cdi half = cdi{1} << 63;
    auto x = square_root(engine, 5);
    engine.halve(x);
    engine.add(x, half, -1);
    return x;
}

}  // namespace znp
