// The two ends of the large transform, block by block with words and residues in the second-level cache:
// cycles a point at 4.1 GHz are 4.1 times the nanoseconds.
//
// Operations for four points over a primes, with limbs L = a / 2 (rounded down), by vectors:
//     words to residues   a (2 L + 3) floating-point, 2 a L of them multiplications, and about 8 L; sets of 8
//                         and 9 primes with b = 5 and 7: a (4 L + 2), 2 a L multiplications, and about 5 L
//     residues to words   3 a (a - 1) + 5 a + 3, half of them multiplications; with an odd number of primes
//                         (a - 1) (3 a + 1) + 5 a + 1; and about 17 a scalar instructions beside them
// of which four can start in a cycle on the machine of docs/BENCHMARKS.md, two of them multiplications and
// two of them additions.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

#include "multiply/vst/conversion.hpp"

namespace znp::vst {
namespace {

constexpr upL_t cache_bytes = upL_t{512} << 10;

struct Data {
    Geometry g;
    const PrimeSet& set;
    upL_t blocks;
    std::vector<c64i> words;
    std::vector<c64i> storage;
    double* image;

    explicit Data(const benchmark::State& state)
        : g{static_cast<unsigned>(state.range(0)), static_cast<unsigned>(state.range(1)), 20},
          set(prime_set(g.a, g.b)),
          blocks(cache_bytes / (g.block_bytes() + 4 * g.input_words())),
          words(blocks * g.input_words() / 2),
          storage(blocks * g.block_bytes() / 8 + 4) {
        std::mt19937_64 rng(1);
        for (c64i& word : words) word = rng();
        void* start = storage.data();
        std::size_t space = storage.size() * 8;
        image = static_cast<double*>(std::align(32, blocks * g.block_bytes(), start, space));
    }
    double* block(upL_t i) { return image + i * g.block_vectors() * 4; }
    std::byte* bytes(upL_t i) { return reinterpret_cast<std::byte*>(words.data()) + i * 4 * g.input_words(); }
    void forward() {
        for (upL_t i = 0; i < blocks; ++i) words_to_block(g, set, block(i), bytes(0), 2 * words.size(), i);
    }
    void report(benchmark::State& state) const {
        const auto points = static_cast<double>(blocks * g.n());
        state.counters["ns_per_point"] = benchmark::Counter(
            points * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
        state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(blocks * 4 * g.input_words()));
    }
};

void WordsToResidues(benchmark::State& state) {
    Data d(state);
    for (auto _ : state) {
        d.forward();
        benchmark::ClobberMemory();
    }
    d.report(state);
}

void ResiduesToWords(benchmark::State& state) {
    Data d(state);
    d.forward();
    for (auto _ : state) {
        BlockCarry carry{};
        u64_t H = 0;
        for (upL_t i = 0; i < d.blocks; ++i) H |= block_to_words(d.g, d.set, d.bytes(i), d.block(i), carry);
        benchmark::DoNotOptimize(H);
        benchmark::ClobberMemory();
    }
    d.report(state);
}

void all_sets(benchmark::internal::Benchmark* b) {
    b->ArgNames({"a", "b"})->ArgsProduct({{4, 5, 6, 7, 8, 9}, {1, 7}});
}
BENCHMARK(WordsToResidues)->Apply(all_sets);
BENCHMARK(ResiduesToWords)->Apply(all_sets);

}  // namespace
}  // namespace znp::vst
BENCHMARK_MAIN();
