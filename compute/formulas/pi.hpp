// Pi by the series of Chudnovsky or Ramanujan: b Q / ((a Q -+ P) sqrt(n)).
//
// In less memory: with a series cut into smaller sections, and the last product by two half-length
// convolutions. Sources: D. V. and G. V. Chudnovsky, "Approximations and complex multiplication according to
// Ramanujan", 1988; S. Ramanujan, "Modular equations and approximations to pi", 1914.
#pragma once

#include "series/catalogue.hpp"

namespace znp {

struct PiNumbers {
    cdi a, b;
    u64_t n;
    bool subtract;
};

inline constexpr PiNumbers chudnovsky{13591409, 4270934400, 10005, true};
inline constexpr PiNumbers ramanujan{1103, 9801, 8, false};

template <class Engine>
typename Engine::Number pi(Engine& engine, const zl_BSS& terms, const PiNumbers& numbers,
                           bool in_less_memory) {
    auto series = engine.series_quotient(
        terms, {.nQ = numbers.a, .nP = 1, .subtract = numbers.subtract, .dQ = numbers.b, .inverted = true},
        in_less_memory ? 0.5 : 1);
    auto inv_sqrt = engine.inverse_sqrt(numbers.n);
    return engine.product(std::move(series), std::move(inv_sqrt), in_less_memory);
}

}  // namespace znp
