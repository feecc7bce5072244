// Constants that are one series, or a sum of two: ArcCoth(n), Zeta(3), Catalan's constant, the Lemniscate
// constant. The numbers belong to the terms of the series (series/catalogue.hpp), where their sources stand.
#pragma once

#include <string>

#include "foundation/strings.hpp"
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

// factor * ArcSinlemn(n/d), behind its line.
template <class Engine>
typename Engine::Number arc_sinlemn_term(Engine& engine, s64_t factor, u64_t n, u64_t d) {
    engine.tell_term(std::to_string(factor) + " * ArcSinlemn( " + to_string_u64(n) + " / " +
                     to_string_u64(d) + " )");
    return engine.sum_series(ArcSinlemn(n, d), 1, d, factor * static_cast<s64_t>(n));
}

// 8 ArcSinlemn(n/d) + factor ArcSinlemn(7/d7).
template <class Engine>
typename Engine::Number lemniscate(Engine& engine, u64_t n, u64_t d, s64_t factor, u64_t d7) {
    auto first = arc_sinlemn_term(engine, 8, n, d);
    engine.leave_line();
    auto second = arc_sinlemn_term(engine, factor, 7, d7);
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
