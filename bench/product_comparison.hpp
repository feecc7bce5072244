// Our routine against a peer's on the same operands, in turns within one run, so that a drifting clock hits
// both alike. Reported: the best batch of each in ns a call, and ours over theirs.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

#include "foundation/types.hpp"

namespace znp::bench {

// Operands, result and scratch of one length. Sixteen pairs in turn, so that the branches inside see both
// signs.
template <class word>
struct ProductBuffers {
    static constexpr std::size_t pairs = 16;

    ProductBuffers(upL_t n, upL_t scratch_words)
        : length(n), A(pairs * n), B(pairs * n), T(2 * n), S(std::max<upL_t>(scratch_words, 1)) {
        std::mt19937_64 rng(2026);
        for (word& w : A) w = static_cast<word>(rng());
        for (word& w : B) w = static_cast<word>(rng());
    }
    const word* a(std::size_t i) const { return A.data() + i % pairs * length; }
    const word* b(std::size_t i) const { return B.data() + i % pairs * length; }

    upL_t length;
    std::vector<word> A, B, T, S;
};

template <class Ours, class Theirs>
void compare(benchmark::State& state, const Ours& ours, const Theirs& theirs) {
    using clock = std::chrono::steady_clock;
    const auto batch_ns = [](const auto& routine, std::size_t calls) {
        const auto start = clock::now();
        for (std::size_t i = 0; i < calls; i++) {
            routine(i);
            benchmark::ClobberMemory();
        }
        return std::chrono::duration<double, std::nano>(clock::now() - start).count() /
               static_cast<double>(calls);
    };
    std::size_t calls = 16;
    while (batch_ns(ours, calls) * static_cast<double>(calls) < 50e3) calls *= 2;

    double ours_ns = std::numeric_limits<double>::max();
    double theirs_ns = ours_ns;
    for (auto _ : state) {
        const double x = batch_ns(ours, calls);
        ours_ns = std::min(ours_ns, x);
        theirs_ns = std::min(theirs_ns, batch_ns(theirs, calls));
        state.SetIterationTime(x * static_cast<double>(calls) * 1e-9);
    }
    state.counters["ours_ns"] = ours_ns;
    state.counters["theirs_ns"] = theirs_ns;
    state.counters["ratio"] = ours_ns / theirs_ns;
}

}  // namespace znp::bench
