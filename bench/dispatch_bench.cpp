// What the dispatcher adds to a short product: table scan, virtual call and the check of the work buffer, for
// 64-bit words of the row that goes to the kernels.
#include <benchmark/benchmark.h>

#include <vector>

#include "multiply/bkt/karatsuba.hpp"
#include "multiply/dispatch.hpp"

namespace {

using namespace znp;

struct Operands {
    explicit Operands(upL_t n) : A(n), B(n), T(2 * n), work(work_bytes_for<c64i>(2 * n, 1) + 32) {
        for (upL_t i = 0; i < n; i++) {
            A[i] = 0x9E3779B97F4A7C15u * (i + 1);
            B[i] = ~A[i] * 3;
        }
    }
    std::vector<c64i> A, B, T;
    std::vector<std::byte> work;
};

void dispatched(benchmark::State& state) {
    const auto n = static_cast<upL_t>(state.range(0));
    Operands o(n);
    const BasicParameters bp{nullptr, o.work.data(), o.work.size(), 1};
    for (auto _ : state) {
        mul(bp, o.T.data(), {o.A.data(), n}, {o.B.data(), n});
        benchmark::ClobberMemory();
    }
}

void kernel(benchmark::State& state) {
    const auto n = static_cast<upL_t>(state.range(0));
    Operands o(n);
    auto* const S = reinterpret_cast<c64i*>(o.work.data());
    for (auto _ : state) {
        bkt::mul(o.A.data(), n, o.B.data(), n, o.T.data(), S);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(kernel)->Arg(2)->Arg(10)->Arg(16)->Arg(29);
BENCHMARK(dispatched)->Arg(2)->Arg(10)->Arg(16)->Arg(29);

}  // namespace

BENCHMARK_MAIN();
