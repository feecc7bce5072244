// The hashes of a number modulo 2^61 - 1: bytes of words a second, from the second-level cache.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "multiply/kernels/residue.hpp"
#include "multiply/kernels/residue_reference.hpp"

namespace znp::residue {
namespace {

constexpr upL_t cache_bytes = upL_t{256} << 10;

template <class word>
std::vector<word> random_words(upL_t bytes) {
    std::mt19937_64 rng(1);
    std::vector<word> T(bytes / sizeof(word));
    for (word& w : T) w = static_cast<word>(rng());
    return T;
}

template <class word, u64_t (*hash)(const word*, upL_t, u64_t)>
void hash_words_of(benchmark::State& state) {
    const std::vector<word> T = random_words<word>(static_cast<upL_t>(state.range(0)));
    u64_t h = 0;
    for (auto _ : state) {
        h = hash(T.data(), T.size(), h);
        benchmark::DoNotOptimize(h);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

template <class word, u64_t (*hash)(const word*, upL_t, word, u64_t)>
void hash_radix_of(benchmark::State& state) {
    const std::vector<word> T = random_words<word>(cache_bytes);
    const auto radix = static_cast<word>(sizeof(word) == 4 ? 1'000'000'000u : 10'000'000'000'000'000'000u);
    u64_t h = 0;
    for (auto _ : state) {
        h = hash(T.data(), T.size(), radix, h);
        benchmark::DoNotOptimize(h);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * cache_bytes);
}

BENCHMARK(hash_words_of<c64i, hash_words64>)
    ->Name("hash_words64")
    ->Arg(64)
    ->Arg(640)
    ->Arg(cache_bytes)
    ->Arg(64 << 20);
BENCHMARK(hash_words_of<c32i, hash_words32>)->Name("hash_words32")->Arg(cache_bytes);
BENCHMARK(hash_words_of<c64i, hash_words64_reference>)->Name("hash_words64_reference")->Arg(cache_bytes);
BENCHMARK(hash_words_of<c32i, hash_words32_reference>)->Name("hash_words32_reference")->Arg(cache_bytes);
BENCHMARK(hash_radix_of<c64i, hash_radix64>)->Name("hash_radix64");
BENCHMARK(hash_radix_of<c32i, hash_radix32>)->Name("hash_radix32");

}  // namespace
}  // namespace znp::residue

BENCHMARK_MAIN();
