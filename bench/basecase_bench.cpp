// Schoolbook products and squares of n words against GMP's basecase, n = 1 to 64. The 32-bit words are
// compared with half as many of GMP's 64-bit ones.

#include <gmp.h>

#include "bench/product_comparison.hpp"
#include "multiply/bkt/basecase.hpp"

extern "C" void __gmpn_mul_basecase(mp_ptr, mp_srcptr, mp_size_t, mp_srcptr, mp_size_t);

namespace znp {
namespace {

void elmB_c64i(benchmark::State& state) {
    const auto n = static_cast<upL_t>(state.range(0));
    const auto size = static_cast<mp_size_t>(n);
    bench::ProductBuffers<c64i> p(n, 0);
    bench::compare(
        state, [&](std::size_t i) { bkt::elmB(p.T.data(), p.a(i), p.b(i), n); },
        [&](std::size_t i) { __gmpn_mul_basecase(p.T.data(), p.a(i), size, p.b(i), size); });
}

void mulB_c64i(benchmark::State& state) {
    const auto La = static_cast<upL_t>(state.range(0));
    const auto Lb = static_cast<upL_t>(state.range(1));
    bench::ProductBuffers<c64i> p(La, 0);
    bench::compare(
        state, [&](std::size_t i) { bkt::mulB(p.T.data(), p.a(i), La, p.b(i), Lb); },
        [&](std::size_t i) {
            __gmpn_mul_basecase(p.T.data(), p.a(i), static_cast<mp_size_t>(La), p.b(i),
                                static_cast<mp_size_t>(Lb));
        });
}

void sqrB_c64i(benchmark::State& state) {
    const auto n = static_cast<upL_t>(state.range(0));
    bench::ProductBuffers<c64i> p(n, 0);
    bench::compare(
        state, [&](std::size_t i) { bkt::sqrB(p.T.data(), p.a(i), n); },
        [&](std::size_t i) { mpn_sqr(p.T.data(), p.a(i), static_cast<mp_size_t>(n)); });
}

void elmB_c32i(benchmark::State& state) {
    const auto n = static_cast<upL_t>(state.range(0));
    const auto size = static_cast<mp_size_t>(n / 2);
    bench::ProductBuffers<c32i> p(n, 0);
    bench::ProductBuffers<c64i> q(n / 2, 0);
    bench::compare(
        state, [&](std::size_t i) { bkt::elmB(p.T.data(), p.a(i), p.b(i), n); },
        [&](std::size_t i) { __gmpn_mul_basecase(q.T.data(), q.a(i), size, q.b(i), size); });
}

void sqrB_c32i(benchmark::State& state) {
    const auto n = static_cast<upL_t>(state.range(0));
    bench::ProductBuffers<c32i> p(n, 0);
    bench::ProductBuffers<c64i> q(n / 2, 0);
    bench::compare(
        state, [&](std::size_t i) { bkt::sqrB(p.T.data(), p.a(i), n); },
        [&](std::size_t i) { mpn_sqr(q.T.data(), q.a(i), static_cast<mp_size_t>(n / 2)); });
}

BENCHMARK(elmB_c64i)->DenseRange(1, 20)->Arg(32)->Arg(64)->UseManualTime();
BENCHMARK(mulB_c64i)->ArgsProduct({{10, 16, 18, 40}, {1, 2, 3, 4, 6, 8}})->UseManualTime();
BENCHMARK(sqrB_c64i)->DenseRange(1, 16)->UseManualTime();
BENCHMARK(elmB_c32i)->DenseRange(2, 22, 2)->Arg(32)->Arg(64)->UseManualTime();
BENCHMARK(sqrB_c32i)->DenseRange(2, 22, 2)->Arg(32)->Arg(64)->UseManualTime();

}  // namespace
}  // namespace znp

BENCHMARK_MAIN();
