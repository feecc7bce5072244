// Products of n by n 64-bit words by the floating-point FFT, against mpn_mul_n of GMP in the same run, and
// against BKT around the change-over. Each pair is timed in turns; the least time of each counts.
//
//     fft_bench [n ...]
#include <gmp.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "multiply/selection.hpp"
#include "multiply/table_holder.hpp"

namespace znp {
namespace {

using Clock = std::chrono::steady_clock;

// Least seconds for one call, over rounds of a fixed number of calls, the functions taking turns.
template <class F, class G>
std::pair<double, double> race(F f, G g, double round_seconds) {
    const auto seconds = [](auto& function, unsigned calls) {
        const auto start = Clock::now();
        for (unsigned i = 0; i < calls; ++i) function();
        return std::chrono::duration<double>(Clock::now() - start).count() / calls;
    };
    const double first = std::max(seconds(f, 3), 1e-9);
    const auto calls = static_cast<unsigned>(std::max(1.0, round_seconds / first));
    std::pair<double, double> best = {1e9, 1e9};
    for (unsigned round = 0; round < 15; ++round) {
        best.first = std::min(best.first, seconds(f, calls));
        best.second = std::min(best.second, seconds(g, calls));
    }
    return best;
}

void compare(upL_t n, const TableHolder& holder) {
    std::mt19937_64 rng(n);
    std::vector<c64i> A(n), B(n), T(2 * n), S(2 * n);
    for (c64i& x : A) x = rng();
    for (c64i& x : B) x = rng();
    const multiplier<c64i>& fft = *find_multiplier<c64i>("FFT");
    const multiplier<c64i>& bkt = *find_multiplier<c64i>("BKT");
    const bool with_bkt = 2 * n <= bkt.max_bits / 64;
    BasicParameters bp;
    bp.holder = &holder;
    bp.ML = std::max(fft.work_bytes(2 * n, 1), with_bkt ? bkt.work_bytes(2 * n, 1) : 0);
    const GuardedArray<std::byte> work = make_guarded_array<std::byte>(nullptr, bp.ML, 64);
    bp.M = work.get();
    const auto by_fft = [&] { fft.mul(bp, T.data(), A.data(), n, B.data(), n); };
    const auto by_gmp = [&] { mpn_mul_n(S.data(), A.data(), B.data(), static_cast<mp_size_t>(n)); };
    const auto by_bkt = [&] { bkt.mul(bp, T.data(), A.data(), n, B.data(), n); };
    const auto [fft_seconds, gmp_seconds] = race(by_fft, by_gmp, 0.002);
    const bool right = T == S;
    std::printf("%6zu %12.3f %12.3f %9.2f", static_cast<std::size_t>(n), fft_seconds * 1e6, gmp_seconds * 1e6,
                gmp_seconds / fft_seconds);
    if (with_bkt) {
        const auto [fft_again, bkt_seconds] = race(by_fft, by_bkt, 0.002);
        std::printf(" %12.3f %9.2f", bkt_seconds * 1e6, bkt_seconds / fft_again);
    }
    std::printf("%s\n", right ? "" : "  WRONG");
}

}  // namespace
}  // namespace znp

int main(int argc, char** argv) {
    using namespace znp;
    std::vector<upL_t> lengths;
    for (int i = 1; i < argc; ++i) lengths.push_back(std::strtoull(argv[i], nullptr, 10));
    if (lengths.empty())
        lengths = {29,   30,   32,   40,   48,   60,   64,   80,   96,   100,  120,  128,  150,
                   160,  192,  200,  240,  256,  300,  320,  400,  500,  512,  640,  750,  800,
                   1000, 1024, 1280, 1500, 1536, 2000, 2048, 2560, 3000, 4000, 4096, 5000, 5120};
    upL_t longest = 0;
    for (const upL_t n : lengths) longest = std::max(longest, n);
    const multiplier<c64i>& fft = *find_multiplier<c64i>("FFT");
    TableHolder holder;
    const GuardedArray<std::byte> tables =
        make_guarded_array<std::byte>(nullptr, fft.table_bytes(128 * longest));
    fft.build_tables(holder, 128 * longest, tables.get());
    std::printf("     n       FFT us       GMP us   GMP/FFT       BKT us   BKT/FFT\n");
    for (const upL_t n : lengths) compare(n, holder);
    return 0;
}
