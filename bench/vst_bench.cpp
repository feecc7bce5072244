// The large transform: products of n by n 64-bit words against mpn_mul_n of GMP (ratio is our time over the
// peer's), on one and two threads, and its kernels on data in the first-level cache.
//
// Ports' bound of a butterfly on four points: four operations on the two multiply pipes and four on the two
// add pipes, two cycles.
#include <benchmark/benchmark.h>
#include <gmp.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <random>
#include <vector>

#include "bench/computation_tables.hpp"
#include "multiply/selection.hpp"
#include "multiply/vst/vst_kernels.hpp"

namespace znp {
namespace {

// Tables for one length, and the product's buffers.
class VSTProduct {
  public:
    VSTProduct(upL_t n, u64_t threads)
        : n_(n),
          vst_(*find_multiplier<c64i>("VST")),
          tables_(make_guarded_array<std::byte>(nullptr, table_size(2 * n * 64), 64)),
          A_(make_guarded_array<c64i>(nullptr, n)),
          B_(make_guarded_array<c64i>(nullptr, n)),
          T_(make_guarded_array<c64i>(nullptr, 2 * n)),
          work_(bench::work_buffer(bp_, vst_.work_bytes(2 * n, threads))) {
        build_tables(holder_, 2 * n * 64, tables_.get());
        bp_.holder = &holder_;
        bp_.tds = threads;
        std::mt19937_64 rng(2026);
        for (upL_t i = 0; i < n; i++) A_[i] = rng();
        for (upL_t i = 0; i < n; i++) B_[i] = rng();
    }
    void operator()(std::size_t) const { vst_.mul(bp_, T_.get(), A_.get(), n_, B_.get(), n_); }
    const c64i* a() const { return A_.get(); }
    const c64i* b() const { return B_.get(); }
    c64i* t() const { return T_.get(); }
    double bytes_per_byte() const { return static_cast<double>(bp_.ML) / (16.0 * static_cast<double>(n_)); }

  private:
    upL_t n_;
    const multiplier<c64i>& vst_;
    TableHolder holder_;
    BasicParameters bp_;
    GuardedArray<std::byte> tables_;
    GuardedArray<c64i> A_, B_, T_;
    GuardedArray<std::byte> work_;
};

// One call of each in turn; the best of both.
template <class Ours, class Theirs>
void compare_turns(benchmark::State& state, const Ours& ours, const Theirs& theirs) {
    using clock = std::chrono::steady_clock;
    const auto seconds = [](const auto& routine) {
        const auto start = clock::now();
        routine(0);
        return std::chrono::duration<double>(clock::now() - start).count();
    };
    seconds(ours);
    double best = std::numeric_limits<double>::max();
    double peer = best;
    for (auto _ : state) {
        const double x = seconds(ours);
        best = std::min(best, x);
        peer = std::min(peer, seconds(theirs));
        state.SetIterationTime(x);
    }
    state.counters["ours_ms"] = best * 1e3;
    state.counters["theirs_ms"] = peer * 1e3;
    state.counters["ratio"] = best / peer;
    state.counters["times_faster"] = peer / best;
}

void against_gmp(benchmark::State& state) {
    const auto n = static_cast<upL_t>(state.range(0));
    const VSTProduct vst(n, 1);
    std::vector<c64i> P(2 * n);
    compare_turns(state, vst,
                  [&](std::size_t) { mpn_mul_n(P.data(), vst.a(), vst.b(), static_cast<mp_size_t>(n)); });
    state.counters["work_bytes_per_byte"] = vst.bytes_per_byte();
}

// ratio is the time on two threads over that on one.
void two_threads(benchmark::State& state) {
    const auto n = static_cast<upL_t>(state.range(0));
    const VSTProduct one(n, 1), two(n, 2);
    compare_turns(state, two, one);
}

// Cycles are for the reader to work out: the clock is not the processor's. ns is for one butterfly of four
// points.
template <bool inverse>
void levels(benchmark::State& state) {
    constexpr unsigned b = 1, rows = 4;
    vst::TablePlan plan;
    plan.require({8, b, 14});
    const auto memory = make_guarded_array<std::byte>(nullptr, vst::table_bytes(plan), 64);
    const VSTTables* tables = nullptr;
    vst::build_tables(tables, plan, memory.get());
    const vst::SetTables& set = *tables->sets[5][0];
    const vst::Geometry g = set.geometry;
    const auto data = make_guarded_array<double>(nullptr, (g.row() * 4) << rows, 64);
    for (upL_t i = 0; i < (g.row() * 4) << rows; i++) data[i] = static_cast<double>(i);
    const auto twiddles = make_guarded_array<double>(nullptr, (1u << rows) + 4, 64);
    local_twiddles(twiddles.get(), set.prime[0], inverse ? vst::inverse_direction : vst::forward_direction, 5,
                   rows);
    const vst::Rows column{data.get(), g.row() * 4, g.lanes(), twiddles.get(), &set.prime[0]};
    for (auto _ : state) {
        if (inverse) {
            vst::inverse_levels(column, rows);
        } else {
            vst::forward_levels(column, rows, vst::Top::large);
        }
        benchmark::ClobberMemory();
    }
    const double butterflies = static_cast<double>(g.lanes() * rows << (rows - 1));
    state.counters["ns"] = benchmark::Counter(
        butterflies * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(levels<false>)->Name("forward_levels");
BENCHMARK(levels<true>)->Name("inverse_levels");

BENCHMARK(against_gmp)
    ->Arg(10'000)
    ->Arg(30'000)
    ->Arg(100'000)
    ->Arg(300'000)
    ->Arg(1'000'000)
    ->Arg(3'000'000)
    ->Arg(10'000'000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(two_threads)
    ->Arg(30'000)
    ->Arg(100'000)
    ->Arg(300'000)
    ->Arg(1'000'000)
    ->Arg(3'000'000)
    ->Arg(10'000'000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace znp

BENCHMARK_MAIN();
