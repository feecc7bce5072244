// Sums of the series of Euler's constant: A and B together, and C of the refined formula. Arguments: digits,
// threads. The parameter is the one that the constant takes for the digits.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "bench/computation_tables.hpp"
#include "series/catalogue.hpp"
#include "series/euler_gamma_ab.hpp"

namespace znp {
namespace {

struct Problem {
    explicit Problem(const benchmark::State& state)
        : p(static_cast<upL_t>(static_cast<double>(state.range(0)) / WordTraits<cdi>::decimal_digits) + 3),
          threads(static_cast<u64_t>(state.range(1))) {
        bp.holder = &bench::computation_tables();
        bp.tds = threads;
        while (std::ldexp(4, static_cast<int>(m)) < nats_per_word * static_cast<double>(p)) m++;
    }
    upL_t p;
    u64_t threads;
    u32_t m = 3;  // e^(-4n) for the plain formula
    BasicParameters bp;
};

void series_AB(benchmark::State& state) {
    Problem problem(state);
    const Series_EulerGamma_BM_AB series(problem.m);
    const PSRPlan plan = make_ab_plan(series, problem.p, 1.0);
    const ABSumSizes sizes = ab_sum_sizes(series, plan, problem.threads);
    std::vector<cdi> T(sizes.results), Q(sizes.results), R(sizes.results);
    const auto nodes = make_guarded_array<cdi>(nullptr, sizes.nodes, 64);
    const auto work = bench::work_buffer(problem.bp, sizes.work_bytes);
    for (auto _ : state) {
        BigFloatR t(T.data(), T.size()), q(Q.data(), Q.size()), r(R.data(), R.size());
        B_PSR(problem.bp, series, plan, t, q, r, nodes.get(), nullptr, nullptr);
        benchmark::DoNotOptimize(q.get_L());
    }
    state.counters["bytes"] =
        static_cast<double>((3 * sizes.results + sizes.nodes) * sizeof(cdi) + sizes.work_bytes);
    state.counters["sections"] = static_cast<double>(plan.size());
}

void series_C(benchmark::State& state) {
    Problem problem(state);
    const EulerGamma_BM_C series(problem.m - 1);
    const PSRPlan plan = make_psr_plan(series, problem.p / 2 + 1, 1.0, 0, problem.threads);
    const SumSizes sizes = sum_sizes(series, plan, problem.threads);
    std::vector<cdi> P(sizes.P), Q(sizes.Q);
    const auto nodes = make_guarded_array<cdi>(nullptr, sizes.nodes, 64);
    const auto work = bench::work_buffer(problem.bp, sizes.work_bytes);
    for (auto _ : state) {
        BigFloatR p(P.data(), P.size()), q(Q.data(), Q.size());
        B_PSR(problem.bp, series, plan, p, q, nodes.get(), nullptr, nullptr);
        benchmark::DoNotOptimize(q.get_L());
    }
    state.counters["sections"] = static_cast<double>(plan.size());
}

void sizes(benchmark::internal::Benchmark* b) {
    for (const int threads : {1, 2}) {
        for (const int digits : {1000, 10000, 50000, 90000}) b->Args({digits, threads});
    }
    b->Unit(benchmark::kMicrosecond)->UseRealTime();
}

BENCHMARK(series_AB)->Apply(sizes);
BENCHMARK(series_C)->Apply(sizes);

}  // namespace
}  // namespace znp

BENCHMARK_MAIN();
