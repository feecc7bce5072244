// The hashes of a number modulo 2^61 - 1 and the guard residue: bytes of words a second. 256 KiB sit in the
// second-level cache; the short lengths show the cost of a call, 64 MiB the speed of memory.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "multiply/kernels/guard_residue.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/kernels/residue_reference.hpp"

namespace znp::residue {
namespace {

constexpr std::int64_t cache_bytes = 256 << 10;
constexpr std::int64_t memory_bytes = 64 << 20;

template <class word>
std::vector<word> random_words(std::int64_t bytes) {
    std::mt19937_64 rng(1);
    std::vector<word> T(static_cast<upL_t>(bytes) / sizeof(word));
    for (word& w : T) w = static_cast<word>(rng());
    return T;
}

// One hash of range(0) bytes of words a round; each round's seed is the hash of the one before.
template <class word, class Hash>
void run(benchmark::State& state, Hash hash) {
    const std::vector<word> T = random_words<word>(state.range(0));
    u64_t h = 0;
    for (auto _ : state) {
        h = hash(T.data(), T.size(), h);
        benchmark::DoNotOptimize(h);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void words32(benchmark::State& state, u64_t (*hash)(const c32i*, upL_t, u64_t)) {
    run<c32i>(state, hash);
}
void words64(benchmark::State& state, u64_t (*hash)(const c64i*, upL_t, u64_t)) {
    run<c64i>(state, hash);
}

BENCHMARK_CAPTURE(words64, hash_words64, hash_words64)
    ->Arg(64)
    ->Arg(640)
    ->Arg(cache_bytes)
    ->Arg(memory_bytes);
BENCHMARK_CAPTURE(words64, guard_hash_words, guard::hash_words)
    ->Arg(64)
    ->Arg(640)
    ->Arg(cache_bytes)
    ->Arg(memory_bytes);
BENCHMARK_CAPTURE(words64, guard_hash_words_reference, guard::hash_words_reference)->Arg(cache_bytes);
BENCHMARK_CAPTURE(words32, hash_words32, hash_words32)->Arg(cache_bytes);
BENCHMARK_CAPTURE(words64, hash_words64_reference, hash_words64_reference)->Arg(cache_bytes);
BENCHMARK_CAPTURE(words32, hash_words32_reference, hash_words32_reference)->Arg(cache_bytes);

u64_t hash_decimal64(const c64i* T, upL_t L, u64_t seed) {
    return hash_radix64(T, L, 10'000'000'000'000'000'000u, seed);
}
u64_t hash_decimal32(const c32i* T, upL_t L, u64_t seed) {
    return hash_radix32(T, L, 1'000'000'000u, seed);
}
BENCHMARK_CAPTURE(words64, hash_radix64, hash_decimal64)->Arg(cache_bytes);
BENCHMARK_CAPTURE(words32, hash_radix32, hash_decimal32)->Arg(cache_bytes);

}  // namespace
}  // namespace znp::residue

BENCHMARK_MAIN();
