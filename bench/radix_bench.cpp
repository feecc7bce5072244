// The radix conversion of a fraction to d decimal digits and its check.
//
// conversion: against the independent library's text of an integer of as many digits, on one thread; ratio is
// ours over theirs. threads: two threads against one; ratio is two over one. verification: the check against
// our own conversion. leaf: 8 to 15 words; the time of a word product.
#include <gmp.h>

#include <string>
#include <vector>

#include "bench/computation_tables.hpp"
#include "bench/product_comparison.hpp"
#include "numbers/radix_conversion.hpp"
#include "numbers/radix_leaf.hpp"

namespace znp {
namespace {

constexpr cdi ten19 = 10'000'000'000'000'000'000u;

// Tables for the conversion of ten million digits and its check.
const TableHolder& tables() {
    static constexpr u64_t limit_bits = 64 * 1'000'000;
    static const GuardedArray<std::byte> memory =
        make_guarded_array<std::byte>(nullptr, table_size(limit_bits), 64);
    static const TableHolder holder = [] {
        TableHolder built;
        build_tables(built, limit_bits, memory.get());
        return built;
    }();
    return holder;
}

std::vector<cdi> random_fraction(upL_t L) {
    std::mt19937_64 rng(2026);
    std::vector<cdi> F(L);
    for (cdi& word : F) word = rng();
    return F;
}

// A fraction, its words and the memory to convert it on so many threads.
struct Conversion {
    Conversion(u64_t digits, u64_t threads) : n(digits / 19 + 3), fraction(random_fraction(n + 2)), words(n) {
        bp.holder = &tables();
        bp.tds = threads;
        work = bench::work_buffer(bp, cbr_table_size(ten19, n, threads));
    }
    void run() { failed |= convert(bp, ten19, words.data(), n, fraction.data(), fraction.size()); }

    upL_t n;
    std::vector<cdi> fraction, words;
    BasicParameters bp;
    GuardedArray<std::byte> work;
    int failed = 0;
};

void conversion(benchmark::State& state) {
    const auto digits = static_cast<u64_t>(state.range(0));
    Conversion ours(digits, 1);
    mpz_t x;
    mpz_init(x);
    mpz_import(x, ours.n, -1, sizeof(cdi), 0, 0, ours.fraction.data());
    std::string text(20 * ours.n, '\0');
    bench::compare(
        state, [&](std::size_t) { ours.run(); }, [&](std::size_t) { mpz_get_str(text.data(), 10, x); });
    mpz_clear(x);
    if (ours.failed != 0) state.SkipWithError("conversion failed");
}

void threads(benchmark::State& state) {
    const auto digits = static_cast<u64_t>(state.range(0));
    Conversion two(digits, 2);
    Conversion one(digits, 1);
    bench::compare(
        state, [&](std::size_t) { two.run(); }, [&](std::size_t) { one.run(); });
    if ((two.failed | one.failed) != 0) state.SkipWithError("conversion failed");
}

void verification(benchmark::State& state) {
    const auto digits = static_cast<u64_t>(state.range(0));
    Conversion ours(digits, 1);
    BasicParameters bp = ours.bp;
    const GuardedArray<std::byte> work =
        bench::work_buffer(bp, power_check_size(10, digits, 1));
    int failed = 0;
    u64_t residue = 0;
    bench::compare(
        state,
        [&](std::size_t) {
            failed |= power_check(bp, 10, digits, 3, ours.fraction.data(), ours.fraction.size(), residue);
        },
        [&](std::size_t) { ours.run(); });
    if (failed != 0) state.SkipWithError("check failed");
}

void leaf(benchmark::State& state) {
    const auto n = static_cast<upL_t>(state.range(0));
    std::vector<cdi> F = random_fraction(n + 2);
    std::vector<cdi> out(n);
    for (auto _ : state) {
        out[0] = radix::convert_leaf(out.data(), n, F.data() + n + 2, ten19);
        benchmark::ClobberMemory();
    }
    const auto products = static_cast<double>((n * n + 5 * n + 4) / 2);
    state.counters["word_product"] = benchmark::Counter(
        products, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(conversion)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(50'000)
    ->Arg(200'000)
    ->Arg(1'000'000)
    ->Arg(10'000'000)
    ->UseManualTime();
BENCHMARK(threads)->Arg(100'000)->Arg(200'000)->Arg(1'000'000)->Arg(10'000'000)->UseManualTime();
BENCHMARK(verification)->Arg(50'000)->Arg(1'000'000)->Arg(10'000'000)->UseManualTime();
BENCHMARK(leaf)->DenseRange(8, 15);

}  // namespace
}  // namespace znp

BENCHMARK_MAIN();
