// Sums and differences of arrays of 64-bit words against GMP: words a second, range(0) words a call. 4 words
// show the cost of a call, 1024 (24 KiB) the speed of the first-level cache: a core that adds with carry once
// a cycle and stores once a cycle is bound to a word a cycle.
#include <benchmark/benchmark.h>
#include <gmp.h>

#include <cstdint>
#include <random>
#include <vector>

#include "multiply/kernels/word_arrays.hpp"

namespace znp {
namespace {

template <class Operation>
void run(benchmark::State& state, Operation operation) {
    const auto L = static_cast<upL_t>(state.range(0));
    std::mt19937_64 rng(1);
    std::vector<c64i> A(L), B(L), T(L);
    for (c64i& word : A) word = rng();
    for (c64i& word : B) word = rng();
    for (auto _ : state) {
        benchmark::DoNotOptimize(operation(T.data(), A.data(), B.data(), L));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void add(benchmark::State& state) {
    run(state, [](c64i* T, const c64i* A, const c64i* B, upL_t L) { return add_words(T, A, B, L); });
}
void subtract(benchmark::State& state) {
    run(state, [](c64i* T, const c64i* A, const c64i* B, upL_t L) { return sub_words(T, A, B, L); });
}
void gmp_add(benchmark::State& state) {
    run(state, [](c64i* T, const c64i* A, const c64i* B, upL_t L) {
        return mpn_add_n(T, A, B, static_cast<mp_size_t>(L));
    });
}

BENCHMARK(add)->Arg(4)->Arg(20)->Arg(1024);
BENCHMARK(subtract)->Arg(4)->Arg(20)->Arg(1024);
BENCHMARK(gmp_add)->Arg(4)->Arg(20)->Arg(1024);

}  // namespace
}  // namespace znp

BENCHMARK_MAIN();
