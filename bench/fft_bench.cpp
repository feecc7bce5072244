// Products of n by n 64-bit words by the floating-point FFT against mpn_mul_n of GMP, and against BKT around
// the change-over. ratio is the FFT's time over the peer's.
#include <gmp.h>

#include <algorithm>

#include "bench/computation_tables.hpp"
#include "bench/product_comparison.hpp"
#include "multiply/selection.hpp"

namespace znp {
namespace {

// The FFT's product of the buffers' operands, with its work buffer.
class FFTProduct {
  public:
    explicit FFTProduct(upL_t n)
        : n_(n),
          fft_(*find_multiplier<c64i>("FFT")),
          buffers_(n, 0),
          work_(bench::work_buffer(bp_, bytes())) {
        bp_.holder = &bench::computation_tables();
    }
    void operator()(std::size_t i) const {
        fft_.mul(bp_, buffers_.T.data(), {buffers_.a(i), n_}, {buffers_.b(i), n_});
    }

  private:
    upL_t bytes() const { return fft_.work_bytes(2 * n_, 1); }

    upL_t n_;
    const multiplier<c64i>& fft_;
    mutable bench::ProductBuffers<c64i> buffers_;  // the product is scrap
    BasicParameters bp_;
    GuardedArray<std::byte> work_;
};

void fft_against_gmp(benchmark::State& state) {
    const auto n = static_cast<upL_t>(state.range(0));
    FFTProduct fft(n);
    bench::ProductBuffers<c64i> q(n, 0);
    bench::compare(state, fft,
                   [&](std::size_t i) { mpn_mul_n(q.T.data(), q.a(i), q.b(i), static_cast<mp_size_t>(n)); });
}

void fft_against_bkt(benchmark::State& state) {
    const auto n = static_cast<upL_t>(state.range(0));
    FFTProduct fft(n);
    const multiplier<c64i>& bkt = *find_multiplier<c64i>("BKT");
    bench::ProductBuffers<c64i> q(n, 0);
    BasicParameters bp;
    const GuardedArray<std::byte> work = bench::work_buffer(bp, bkt.work_bytes(2 * n, 1));
    bench::compare(state, fft, [&](std::size_t i) { bkt.mul(bp, q.T.data(), {q.a(i), n}, {q.b(i), n}); });
}

void lengths(benchmark::internal::Benchmark* b) {
    for (const int n : {29,   30,   32,   40,   48,   60,   64,   80,   96,   100,  120,  128,  150,
                        160,  192,  200,  240,  256,  300,  320,  400,  500,  512,  640,  750,  800,
                        1000, 1024, 1280, 1500, 1536, 2000, 2048, 2560, 3000, 4000, 4096, 5000, 5120})
        b->Arg(n);
    b->UseManualTime();
}

BENCHMARK(fft_against_gmp)->Apply(lengths);
BENCHMARK(fft_against_bkt)->DenseRange(28, 32, 1)->Arg(40)->Arg(64)->Arg(100)->Arg(200)->UseManualTime();

}  // namespace
}  // namespace znp

BENCHMARK_MAIN();
