// Measures every transform size of the floating-point FFT that a plan may hold: the time of a product, and
// the largest distance of a result's point from an integer over random and adversarial operands. Its output
// is the record that generators/fft_plan.py makes the plan tables and docs/FFT_ERRORS.md from:
//
//     fft_sizes_bench > generators/fft_measurements.tsv
//
// Operands fill all N points (the wrapped product modulo 2^(N w) + 1), which is the worst case of the
// rounding.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "foundation/guarded_alloc.hpp"
#include "multiply/fft/fft_check.hpp"
#include "multiply/fft/fft_kernels.hpp"
#include "multiply/fft/fft_transform.hpp"
#include "multiply/table_holder.hpp"

namespace znp {
namespace {

using Clock = std::chrono::steady_clock;

constexpr u64_t longest_N = u64_t{1} << 23;
constexpr double largest_sum = 48.6;  // of 2 w + log2 N

class Size {
  public:
    Size(const TableHolder& holder, unsigned k, unsigned p, unsigned w)
        : t_(&holder, {(k << p) * w, static_cast<signed char>(k), static_cast<signed char>(p),
                       static_cast<signed char>(w), 0}),
          C_(p % 2 != 0 ? k : 2 * k),
          T1_(make_guarded_array<double>(nullptr, t_.N, 64)),
          T2_(make_guarded_array<double>(nullptr, t_.N, 64)),
          scratch_(make_guarded_array<std::byte>(nullptr, t_.work_bytes, 64)) {}

    double nanoseconds(std::mt19937_64& rng) {
        std::vector<c32i> A(t_.bits / 64), R(t_.bits / 32);
        for (c32i& x : A) x = static_cast<c32i>(rng());
        const u64_t calls = std::max<u64_t>(1, 300000 / t_.N);
        double best = 1e9;
        for (unsigned round = 0; round < (calls > 1 ? 20 : 3); ++round) {
            const auto start = Clock::now();
            for (u64_t i = 0; i < calls; ++i) {
                t_.forward(image_at(T1_.get()), A, scratch());
                t_.forward(image_at(T2_.get()), A, scratch());
                t_.inverse_fmul({R.data(), 0, R.size()}, image_at(T1_.get()), image_at(T2_.get()), scratch());
            }
            const std::chrono::duration<double, std::nano> taken = Clock::now() - start;
            best = std::min(best, taken.count() / static_cast<double>(calls));
        }
        return best;
    }

    // The distance from integers for the product of two digit arrays.
    double error(const std::vector<u32_t>& a, const std::vector<u32_t>& b) {
        transform_digits(T1_.get(), a);
        transform_digits(T2_.get(), b);
        fft::inverse_tree(T1_.get(), T2_.get(), t_.N, C_, *t_.holder->fft);
        return fft::largest_distance(T1_.get(), t_.N, 2.0 * C_ / static_cast<double>(t_.N));
    }

    const FFT& fft() const { return t_; }

  private:
    void transform_digits(double* image, const std::vector<u32_t>& digits) {
        std::vector<c32i> words(t_.bits / 32);
        for (u64_t j = 0; j < digits.size(); ++j) {
            const u64_t bit = j * t_.w, shifted = u64_t{digits[j]} << (bit & 31);
            words[bit / 32] |= static_cast<c32i>(shifted);
            if (shifted >> 32 != 0) words[bit / 32 + 1] |= static_cast<c32i>(shifted >> 32);
        }
        t_.forward(image_at(image), words, scratch());
    }

    TransformScratch* scratch() const { return scratch_at(scratch_.get()); }

    FFT t_;
    unsigned C_;
    GuardedArray<double> T1_, T2_;
    GuardedArray<std::byte> scratch_;
};

struct WorstCase {
    double product = 0, ring = 0;
    const char* operands = "";
};

WorstCase worst_error(Size& size, std::mt19937_64& rng) {
    const u64_t N = size.fft().N;
    const u32_t most = (u32_t{1} << size.fft().w) - 1;
    std::vector<u32_t> a(N), b(N);
    WorstCase worst;
    const auto try_pair = [&](const char* name, auto digit_a, auto digit_b) {
        for (u64_t j = 0; j < N; ++j) a[j] = digit_a(j), b[j] = digit_b(j);
        const double ring = size.error(a, b);
        if (ring > worst.ring) worst.ring = ring, worst.operands = name;
        std::fill(a.begin() + static_cast<std::ptrdiff_t>(N / 2), a.end(), 0);
        std::fill(b.begin() + static_cast<std::ptrdiff_t>(N / 2), b.end(), 0);
        worst.product = std::max(worst.product, size.error(a, b));
    };
    const auto random = [&](u64_t) { return static_cast<u32_t>(rng()) & most; };
    const auto ones = [&](u64_t) { return most; };
    const auto alternating = [&](u64_t j) { return j % 2 == 0 ? most : 0; };
    const auto pairs = [&](u64_t j) { return j / 2 % 2 == 0 ? most : 0; };
    const auto blocks = [&](u64_t j) { return j * 8 / N % 2 == 0 ? most : 0; };
    const auto coins = [&](u64_t) { return (rng() & 1) != 0 ? most : 0; };
    const auto high = [&](u64_t) { return most - (static_cast<u32_t>(rng()) & 7); };
    const u64_t at = rng() % (N / 2);
    const auto spike = [&](u64_t j) { return j == at ? most : 0; };
    const auto top = [&](u64_t j) { return j == N - 1 || j == N / 2 - 1 ? most : 0; };
    for (u64_t round = 0; round < std::clamp<u64_t>((u64_t{1} << 19) / N, 1, 200); ++round) {
        try_pair("random", random, random);
        try_pair("random maximal or zero digits", coins, coins);
        try_pair("nearly maximal digits", high, high);
    }
    try_pair("all ones", ones, ones);
    try_pair("all ones by random", ones, random);
    try_pair("alternating maximal digits", alternating, alternating);
    try_pair("alternating maximal digits by all ones", alternating, ones);
    try_pair("alternating pairs", pairs, pairs);
    try_pair("blocks of N/8 maximal digits", blocks, blocks);
    try_pair("single spike by all ones", spike, ones);
    try_pair("top digits by random", top, random);
    try_pair("single spikes", spike, spike);
    return worst;
}

}  // namespace
}  // namespace znp

int main() {
    using namespace znp;
    TableHolder holder;
    const unsigned depth = fft::bottom_depth(23);
    const auto tables = make_guarded_array<std::byte>(nullptr, fft::tables_bytes(depth), 64);
    fft::build_tables(holder.fft, depth, tables.get());
    std::mt19937_64 rng(20);

    struct Candidate {
        unsigned k, p, widest;
        double nanoseconds = 1e18;
    };
    std::vector<Candidate> sizes;
    for (unsigned p = 7; p <= 23; ++p)
        for (const unsigned k : {1u, 3u, 5u}) {
            const auto N = static_cast<double>(u64_t{k} << p);
            const auto widest = static_cast<unsigned>(std::min(20.0, (largest_sum - std::log2(N)) / 2));
            if ((u64_t{k} << p) <= longest_N) sizes.push_back({k, p, widest});
        }
    // Three sweeps, so that a disturbance of the machine does not stay in the record.
    for (unsigned sweep = 0; sweep < 3; ++sweep)
        for (Candidate& c : sizes)
            c.nanoseconds = std::min(c.nanoseconds, Size(holder, c.k, c.p, c.widest).nanoseconds(rng));
    std::printf("# time k p nanoseconds of a product\n");
    for (const Candidate& c : sizes) std::printf("time\t%u\t%u\t%.0f\n", c.k, c.p, c.nanoseconds);

    std::printf(
        "# error k p w largest distance from an integer: products, ring products, operands of the latter\n");
    for (const Candidate& c : sizes)
        for (unsigned w = 9; w <= c.widest; ++w) {
            Size size(holder, c.k, c.p, w);
            const WorstCase worst = worst_error(size, rng);
            std::printf("error\t%u\t%u\t%u\t%.6f\t%.6f\t%s\n", c.k, c.p, w, worst.product, worst.ring,
                        worst.operands);
        }
    return 0;
}
