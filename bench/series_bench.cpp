// Sums of series to a number of decimal digits, on one and more threads, and the same by binary splitting
// over the integers of another library.
//
// Chudnovsky's formula, whose sum is most of the work of Pi: arguments digits, threads. gmp_chudnovsky is the
// plain recursion P, Q, T on one thread, without the factor that the right edge does not need. The other
// series: digits.
#include <benchmark/benchmark.h>
#include <gmp.h>

#include <vector>

#include "bench/computation_tables.hpp"
#include "series/catalogue.hpp"
#include "series/partial_series.hpp"

namespace znp {
namespace {

upL_t precision_words(u64_t digits) {
    return static_cast<upL_t>(static_cast<double>(digits) / WordTraits<cdi>::decimal_digits) + 3;
}

void sum_plan(benchmark::State& state, const zl_BSS& series, const PSRPlan& plan, u64_t threads) {
    const SumSizes sizes = sum_sizes(series, plan, threads);
    std::vector<cdi> P(sizes.P), Q(sizes.Q);
    const auto nodes = make_guarded_array<cdi>(nullptr, sizes.nodes, 64);
    BasicParameters bp;
    const u64_t table_bits = 64 * 4 * (plan.front().precision + 1000);
    const auto memory = make_guarded_array<std::byte>(nullptr, table_size(table_bits), 64);
    TableHolder tables;
    build_tables(tables, table_bits, memory.get());
    bp.holder = &tables;
    bp.tds = threads;
    const auto work = bench::work_buffer(bp, sizes.work_bytes);
    for (auto _ : state) {
        BigFloatR p(P.data(), P.size()), q(Q.data(), Q.size());
        B_PSR(bp, series, plan, p, q, nodes.get(), nullptr, nullptr);
        benchmark::DoNotOptimize(q.get_L());
    }
    state.counters["bytes"] =
        static_cast<double>((sizes.P + sizes.Q + sizes.nodes) * sizeof(cdi) + sizes.work_bytes);
    state.counters["sections"] = static_cast<double>(plan.size());
}

u64_t argument(const benchmark::State& state, std::size_t i) {
    return static_cast<u64_t>(state.range(i));
}

template <class Series>
void sum(benchmark::State& state, const Series& series) {
    const u64_t threads = argument(state, 1);
    sum_plan(state, series, make_psr_plan(series, precision_words(argument(state, 0)), 1.0, 0, threads),
             threads);
}

void chudnovsky(benchmark::State& state) {
    sum(state, Pi_Chudnovsky());
}
void chudnovsky_one_section(benchmark::State& state) {
    const Pi_Chudnovsky series;
    const u64_t terms = series.terms(precision_words(argument(state, 0)));
    sum_plan(state, series, make_single_section(series, 0, terms), argument(state, 1));
}
void ramanujan(benchmark::State& state) {
    sum(state, Pi_Ramanujan());
}
void e_taylor(benchmark::State& state) {
    const Series_E_Taylor series(false);
    const u64_t terms = series.terms(precision_words(argument(state, 0)));
    sum_plan(state, series, make_single_section(series, 1, terms), argument(state, 1));
}
void zeta3(benchmark::State& state) {
    sum(state, Zeta3_AZ2());
}
void catalan_lupas(benchmark::State& state) {
    sum(state, Catalan_Lupas());
}
void catalan_huvent(benchmark::State& state) {
    sum(state, Catalan_Huvent());
}

// ---- The other library

struct GmpRange {
    mpz_t P, Q, T;
    GmpRange() { mpz_inits(P, Q, T, nullptr); }
    GmpRange(const GmpRange&) = delete;
    GmpRange& operator=(const GmpRange&) = delete;
    ~GmpRange() { mpz_clears(P, Q, T, nullptr); }
};

void gmp_term(GmpRange& r, unsigned long k) {
    mpz_set_ui(r.P, 6 * k - 5);
    mpz_mul_ui(r.P, r.P, 2 * k - 1);
    mpz_mul_ui(r.P, r.P, 6 * k - 1);
    mpz_set_ui(r.Q, k);
    mpz_mul_ui(r.Q, r.Q, k);
    mpz_mul_ui(r.Q, r.Q, k);
    mpz_mul_ui(r.Q, r.Q, 10939058860032000);
    mpz_set_ui(r.T, k);
    mpz_mul_ui(r.T, r.T, 545140134);
    mpz_add_ui(r.T, r.T, 13591409);
    mpz_mul(r.T, r.T, r.P);
    if (k % 2 == 1) mpz_neg(r.T, r.T);
}

// Terms a + 1 to b.
void gmp_sum(GmpRange& r, unsigned long a, unsigned long b, bool with_P) {
    if (b - a == 1) return gmp_term(r, b);
    const unsigned long m = a + (b - a) / 2;
    GmpRange right;
    gmp_sum(r, a, m, true);
    gmp_sum(right, m, b, with_P);
    mpz_mul(r.T, r.T, right.Q);
    mpz_addmul(r.T, r.P, right.T);
    mpz_mul(r.Q, r.Q, right.Q);
    if (with_P) mpz_mul(r.P, r.P, right.P);
}

void gmp_chudnovsky(benchmark::State& state) {
    const u64_t terms = Pi_Chudnovsky().terms(precision_words(argument(state, 0)));
    for (auto _ : state) {
        GmpRange r;
        gmp_sum(r, 0, terms, false);
        benchmark::DoNotOptimize(mpz_size(r.T));
    }
}

void sizes(benchmark::internal::Benchmark* b) {
    for (const int digits : {1000, 10000, 50000, 90000, 1000000, 10000000}) {
        for (const int threads : {1, 2}) b->Args({digits, threads});
    }
    b->UseRealTime()->Unit(benchmark::kMicrosecond);
}
void one_thread(benchmark::internal::Benchmark* b) {
    for (const int digits : {1000, 10000, 50000, 90000}) b->Args({digits, 1});
    b->UseRealTime()->Unit(benchmark::kMicrosecond);
}

BENCHMARK(chudnovsky)->Apply(sizes);
BENCHMARK(gmp_chudnovsky)->Apply(one_thread)->Args({1000000, 1});
BENCHMARK(chudnovsky_one_section)
    ->Args({10000, 1})
    ->Args({50000, 1})
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(ramanujan)->Apply(one_thread);
BENCHMARK(e_taylor)->Apply(one_thread);
BENCHMARK(zeta3)->Apply(one_thread);
BENCHMARK(catalan_lupas)->Apply(one_thread);
BENCHMARK(catalan_huvent)->Apply(one_thread);

}  // namespace
}  // namespace znp

BENCHMARK_MAIN();
