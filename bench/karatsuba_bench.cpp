// Karatsuba products and squares of n words, over the lengths of this algorithm, against GMP's mpn_mul_n and
// mpn_sqr. The 32-bit words are compared with half as many of GMP's 64-bit ones.

#include <gmp.h>

#include "bench/product_comparison.hpp"
#include "multiply/bkt/karatsuba.hpp"

namespace znp {
namespace {

template <class word>
void elm(benchmark::State& state) {
    constexpr upL_t per_limb = sizeof(mp_limb_t) / sizeof(word);
    const auto n = static_cast<upL_t>(state.range(0));
    bench::ProductBuffers<word> p(n, bkt::elm_bytes<word>(n) / sizeof(word));
    bench::ProductBuffers<c64i> q(n / per_limb, 0);
    bench::compare(
        state, [&](std::size_t i) { bkt::elm(p.a(i), p.b(i), n, p.T.data(), p.S.data()); },
        [&](std::size_t i) { mpn_mul_n(q.T.data(), q.a(i), q.b(i), static_cast<mp_size_t>(n / per_limb)); });
}

template <class word>
void sqr(benchmark::State& state) {
    constexpr upL_t per_limb = sizeof(mp_limb_t) / sizeof(word);
    const auto n = static_cast<upL_t>(state.range(0));
    bench::ProductBuffers<word> p(n, bkt::sqr_bytes<word>(n) / sizeof(word));
    bench::ProductBuffers<c64i> q(n / per_limb, 0);
    bench::compare(
        state, [&](std::size_t i) { bkt::sqr(p.a(i), n, p.T.data(), p.S.data()); },
        [&](std::size_t i) { mpn_sqr(q.T.data(), q.a(i), static_cast<mp_size_t>(n / per_limb)); });
}

void mul_c64i(benchmark::State& state) {
    const auto La = static_cast<upL_t>(state.range(0));
    const auto Lb = static_cast<upL_t>(state.range(1));
    bench::ProductBuffers<c64i> p(La, bkt::mul_bytes<c64i>(La, Lb) / sizeof(c64i));
    bench::compare(
        state, [&](std::size_t i) { bkt::mul(p.a(i), La, p.b(i), Lb, p.T.data(), p.S.data()); },
        [&](std::size_t i) {
            mpn_mul(p.T.data(), p.a(i), static_cast<mp_size_t>(La), p.b(i), static_cast<mp_size_t>(Lb));
        });
}

void lengths_c64i(benchmark::internal::Benchmark* b) {
    b->DenseRange(10, 29);
    for (const int n : {32, 40, 58, 116, 232, 464}) b->Arg(n);
    b->UseManualTime();
}
void lengths_c32i(benchmark::internal::Benchmark* b) {
    for (const int n : {14, 16, 20, 22, 24, 28, 32, 40, 48, 58, 80, 116, 232, 464}) b->Arg(n);
    b->UseManualTime();
}

BENCHMARK(elm<c64i>)->Apply(lengths_c64i);
BENCHMARK(sqr<c64i>)->Apply(lengths_c64i);
BENCHMARK(elm<c32i>)->Apply(lengths_c32i);
BENCHMARK(sqr<c32i>)->Apply(lengths_c32i);
BENCHMARK(mul_c64i)
    ->Args({20, 9})
    ->Args({20, 10})
    ->Args({29, 20})
    ->Args({30, 15})
    ->Args({44, 14})
    ->Args({45, 13})
    ->Args({90, 26})
    ->UseManualTime();

}  // namespace
}  // namespace znp

BENCHMARK_MAIN();
