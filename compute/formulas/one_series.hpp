// Constants that are one series, or a sum of two: ArcCoth(n), Zeta(3), Catalan's constant, the Lemniscate
// constant. The numbers belong to the terms of the series (series/catalogue.hpp), where their sources stand.
#pragma once

#include "series/catalogue.hpp"

namespace znp {

template <class Engine>
typename Engine::Number arccoth(Engine& engine, u64_t n) {
    return engine.sum_series(ArcCoth(n), 1, n, 1);
}

template <class Engine>
typename Engine::Number zeta3_by_az2(Engine& engine) {
    return engine.sum_series(Zeta3_AZ2(), 12463, 10368, 1);
}

template <class Engine>
typename Engine::Number zeta3_by_az1(Engine& engine) {
    return engine.sum_series(Zeta3_AZ1(), 77, 64, 1);
}

template <class Engine>
typename Engine::Number catalan_by_lupas(Engine& engine) {
    return engine.sum_series(Catalan_Lupas(), 19, 18, 1);
}

// The sign of P does not enter here.
template <class Engine>
typename Engine::Number catalan_by_huvent(Engine& engine) {
    return engine.series_quotient(Catalan_Huvent(),
                                  {.nQ = 469137217, .nP = 1334025, .subtract = false, .dQ = 512265600});
}

// 8 ArcSinlemn(n/d) + factor ArcSinlemn(7/d7).
template <class Engine>
typename Engine::Number lemniscate(Engine& engine, u64_t n, u64_t d, s64_t factor, u64_t d7) {
    auto first = engine.sum_series(ArcSinlemn(n, d), 1, d, 8 * static_cast<s64_t>(n));
    auto second = engine.sum_series(ArcSinlemn(7, d7), 1, d7, 7 * factor);
    return engine.sum(std::move(first), std::move(second));
}

template <class Engine>
typename Engine::Number lemniscate_by_gauss(Engine& engine) {
    return lemniscate(engine, 1, 2, 4, 23);
}

template <class Engine>
typename Engine::Number lemniscate_by_sebah(Engine& engine) {
    return lemniscate(engine, 2, 3, -4, 137);
}

}  // namespace znp
