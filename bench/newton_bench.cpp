// Reciprocal, inverse square root and division of p words against one product of p by p words, on one thread.
// ratio is the routine's time in units of that product.
#include <algorithm>
#include <vector>

#include "bench/computation_tables.hpp"
#include "bench/product_comparison.hpp"
#include "multiply/dispatch.hpp"
#include "numbers/division.hpp"
#include "numbers/inverse_sqrt.hpp"
#include "numbers/reciprocal.hpp"

namespace znp {
namespace {

using newton::Scratch;

// routine(bp, y, A, B, p, scratch) fills y.
template <class Routine>
void measure(benchmark::State& state, upL_t scratch_words, upL_t work_bytes, Routine routine) {
    const auto p = static_cast<upL_t>(state.range(0));
    bench::ProductBuffers<cdi> buffers(p, 0);
    for (cdi& word : buffers.A) word |= 1;
    for (cdi& word : buffers.B) word |= 1;
    std::vector<cdi> result(p + 4);
    std::vector<cdi> scratch(scratch_words);
    BasicParameters bp;
    bp.holder = &bench::computation_tables();
    const GuardedArray<std::byte> work =
        bench::work_buffer(bp, std::max(work_bytes, work_bytes_for<cdi>(2 * p, 1)));
    BigFloatR y(result.data(), result.size());
    bench::compare(
        state,
        [&](std::size_t i) {
            routine(bp, y, BigFloat(buffers.a(i), p, 0), BigFloat(buffers.b(i), p, 0), p,
                    Scratch(scratch.data(), scratch.size()));
        },
        [&](std::size_t i) {
            mul(bp, buffers.T.data(), {buffers.a(i), p}, {buffers.b(i), p});
        });
}

void reciprocal(benchmark::State& state) {
    const auto p = static_cast<upL_t>(state.range(0));
    measure(state, rcp_scratch_words(p), rcp_work_bytes(p, 1),
            [](const BasicParameters& bp, BigFloatR& y, const BigFloat&, const BigFloat& B, upL_t precision,
               Scratch scratch) { zlp_rcp_B(bp, y, B, precision, scratch); });
}

void inverse_square_root(benchmark::State& state) {
    const auto p = static_cast<upL_t>(state.range(0));
    int failed = 0;
    measure(
        state, invsqrt_scratch_words(p), invsqrt_work_bytes(p, 1),
        [&failed](const BasicParameters& bp, BigFloatR& y, const BigFloat&, const BigFloat&, upL_t precision,
                  Scratch scratch) { failed |= zlp_invsqrt_udw_B(bp, y, 10005, precision, scratch); });
    if (failed != 0) state.SkipWithError("no convergence");
}

void division(benchmark::State& state) {
    const auto p = static_cast<upL_t>(state.range(0));
    measure(state, div_scratch_words(p), div_work_bytes(p, 1),
            [](const BasicParameters& bp, BigFloatR& y, const BigFloat& A, const BigFloat& B, upL_t precision,
               Scratch scratch) { zlm_div_t9_B(bp, y, A, B, precision, scratch); });
}

void lengths(benchmark::internal::Benchmark* b) {
    for (const int p : {500, 1000, 2000, 5000}) b->Arg(p);
    b->UseManualTime();
}

BENCHMARK(reciprocal)->Apply(lengths);
BENCHMARK(inverse_square_root)->Apply(lengths);
BENCHMARK(division)->Apply(lengths);

}  // namespace
}  // namespace znp

BENCHMARK_MAIN();
