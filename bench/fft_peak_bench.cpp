// The share of the core's floating-point peak that the transform reaches, by where its data fit.
//
// Peak: the rate of independent vector multiply-adds on registers, measured in the same run; one multiply-add
// of one lane counts two operations. Transform: the arithmetic of the radix-4 steps, 3 complex products and 8
// complex additions for four points (34 operations), and 6 more a point for the product, whatever
// instructions carry it out. Cutting into digits, rounding, carries and packing are not counted, but their
// time is, except in the columns of the tree alone.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>
#include <vector>

#include "foundation/guarded_alloc.hpp"
#include "multiply/fft/fft_kernels.hpp"
#include "multiply/fft/fft_transform.hpp"
#include "multiply/table_holder.hpp"

namespace znp {
namespace {

using Clock = std::chrono::steady_clock;

template <class F>
double least_seconds(F f, unsigned calls) {
    double best = 1e9;
    for (unsigned round = 0; round < 20; ++round) {
        const auto start = Clock::now();
        for (unsigned i = 0; i < calls; ++i) f();
        best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count() / calls);
    }
    return best;
}

// Twelve chains of vector multiply-adds, enough to cover a latency of 5 on two pipes. Written out, so that
// nothing but the loop's end stands between them.
void multiply_adds(unsigned long rounds) {
    __asm__ volatile(
        "vxorpd %%ymm0, %%ymm0, %%ymm0\n\t"
        "1:\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm4\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm5\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm6\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm7\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm8\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm9\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm10\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm11\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm12\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm13\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm14\n\t"
        "vfmadd231pd %%ymm0, %%ymm0, %%ymm15\n\t"
        "dec %0\n\t"
        "jnz 1b\n\t"
        "vzeroupper"
        : "+r"(rounds)
        :
        : "cc", "xmm0", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11", "xmm12", "xmm13",
          "xmm14", "xmm15");
}

double steps_operations(const FFT& t, unsigned C) {
    double levels = 0;
    for (u64_t m = t.N / 2; m > C; m /= 2) levels += 1;
    return static_cast<double>(t.N / 2) / 4 * 34 * levels / 2;
}

void measure(unsigned k, unsigned p, unsigned w, double peak, const TableHolder& holder) {
    const fft::PlanRow row = {(k << p) * w, static_cast<signed char>(k), static_cast<signed char>(p),
                              static_cast<signed char>(w), 0};
    const FFT t(&holder, row);
    const unsigned C = p % 2 != 0 ? k : 2 * k;
    const auto T1 = make_guarded_array<double>(nullptr, t.N, 64),
               T2 = make_guarded_array<double>(nullptr, t.N, 64);
    const auto scratch = make_guarded_array<std::byte>(nullptr, t.work_bytes, 64);
    std::mt19937_64 rng(p);
    std::vector<c32i> A(t.bits / 64), R(t.bits / 32);
    for (c32i& x : A) x = static_cast<c32i>(rng());
    const auto calls = static_cast<unsigned>(std::max<u64_t>(1, 2000000 / t.N));
    const WorkAreas work{image_at(T1.get()), image_at(T2.get()), scratch_at(scratch.get())};
    const auto forward = [&] { t.forward(work.T1, A, work.scratch); };
    const double forward_seconds = least_seconds(forward, calls);
    t.forward(work.T2, A, work.scratch);
    const double product_seconds = least_seconds(
        [&] {
            t.forward(work.T1, A, work.scratch);
            t.forward(work.T2, A, work.scratch);
            t.inverse_fmul({R.data(), 0, R.size()}, work.T1, work.T2, work.scratch);
        },
        std::max(1u, calls / 3));
    // The tree on data that stay zero: no overflow in repeated transforms, the same instructions.
    std::fill_n(T1.get(), t.N, 0.0);
    const double tree_seconds =
        least_seconds([&] { fft::forward_tree(T1.get(), t.N, C, *holder.fft); }, calls);
    const double inverse_seconds =
        least_seconds([&] { fft::inverse_tree(T1.get(), T2.get(), t.N, C, *holder.fft); }, calls);
    s64_t carry[8];
    const double last_seconds =
        least_seconds([&] { fft::last_pass(scratch.get(), carry, T1.get(), t.N, t.w, 1.0); }, calls);
    const double N = static_cast<double>(t.N);
    const double operations = steps_operations(t, C), root = N / 2 / 4 * 34;
    const double pointwise = N / 2 / C * (8.0 * C * C + (C > 1 ? 8.0 * (C - 1) : -2.0));
    std::printf("%3u %3u %9.0f %9.1f KB %8.1f%% %8.1f%% %8.1f%% %8.1f%% %9.3f %9.3f\n", k, p, N, N / 128,
                100 * (operations - root) / tree_seconds / peak,
                100 * (operations - root + pointwise) / inverse_seconds / peak,
                100 * operations / forward_seconds / peak,
                100 * (3 * operations + pointwise) / product_seconds / peak,
                (forward_seconds - tree_seconds) / N * 1e9, last_seconds / N * 1e9);
}

}  // namespace
}  // namespace znp

int main() {
    using namespace znp;
    constexpr unsigned rounds = 1000000;
    const double peak = 12 * 8.0 * rounds / least_seconds([] { multiply_adds(rounds); }, 1);
    std::printf("peak of multiply-adds: %.2f Gflop/s\n", peak / 1e9);
    std::printf(
        "  k   p         N      image       tree   inverse   forward   product first ns/N last ns/N\n");
    const unsigned depth = fft::bottom_depth(21);
    TableHolder holder;
    const auto tables = make_guarded_array<std::byte>(nullptr, fft::tables_bytes(depth), 64);
    fft::build_tables(holder.fft, depth, tables.get());
    for (unsigned p = 8; p <= 21; ++p) measure(1, p, p < 10 ? 19 : p < 15 ? 16 : 12, peak, holder);
    for (unsigned p = 7; p <= 14; ++p) measure(3, p, 16, peak, holder);
    for (unsigned p = 7; p <= 13; ++p) measure(5, p, 16, peak, holder);
    return 0;
}
