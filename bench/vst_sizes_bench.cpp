// Measures the product of every size of the large transform that a plan may hold, in a range of lengths, on
// one thread, in memory like that of a run. Its output is the record that generators/vst_size_plan.py makes
// the size plans from, some ranges after each other, for it takes minutes in all:
//
//     vst_sizes_bench 16 27 4 > generators/vst_measurements.tsv
//     vst_sizes_bench 27 29 2 >> generators/vst_measurements.tsv
//     vst_sizes_bench 29 31 1 >> generators/vst_measurements.tsv
//
// A line is a, b, c and the nanoseconds of a product that fills the transform, the least of several rounds
// over all sizes: rounds, so that a disturbance of the machine does not hit a single size.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "foundation/guarded_alloc.hpp"
#include "foundation/memory.hpp"
#include "multiply/table_holder.hpp"
#include "multiply/vst/prime_sets.hpp"
#include "multiply/vst/vst_tables.hpp"
#include "multiply/vst/vst_transform.hpp"

namespace znp {
namespace {

using Clock = std::chrono::steady_clock;

struct Size {
    vst::Geometry geometry;
    double nanoseconds;
};

std::vector<Size> all_sizes(u64_t least_bits, u64_t largest_bits) {
    std::vector<Size> sizes;
    for (unsigned a = 4; a <= 9; ++a) {
        for (unsigned b = 1; b <= 7; b += 2) {
            for (vst::Geometry g{a, b, b == 1 ? 10u : 9u}; g.capacity() <= largest_bits; ++g.c) {
                if (g.capacity() > least_bits) sizes.push_back({g, 1e18});
            }
        }
    }
    return sizes;
}

class Tables {
  public:
    explicit Tables(const std::vector<Size>& sizes) {
        vst::TablePlan plan;
        for (const Size& size : sizes) plan.require(size.geometry);
        memory_ = make_guarded_array<std::byte>(nullptr, vst::table_bytes(plan), 64);
        vst::build_tables(holder.vst, plan, memory_.get());
    }
    TableHolder holder;

  private:
    GuardedArray<std::byte> memory_;
};

// The least time of some calls in a row, a few milliseconds of them.
double measure(const VST& vst, const BasicParameters& bp, const std::vector<c64i>& A, std::vector<c64i>& R) {
    const upL_t n = vst.capacity / 128;
    double best = 1e18, spent = 0;
    do {
        const auto start = Clock::now();
        vst.mul(bp, R.data(), {A.data(), n}, {A.data() + 1, n});
        const std::chrono::duration<double, std::nano> taken = Clock::now() - start;
        best = std::min(best, taken.count());
        spent += taken.count();
    } while (spent < 3e6);
    return best;
}

void run(u64_t least_bits, u64_t largest_bits, unsigned rounds) {
    std::vector<Size> sizes = all_sizes(least_bits, largest_bits);
    const Tables tables(sizes);
    upL_t bytes = 0;
    for (const Size& size : sizes) bytes = std::max(bytes, VST(nullptr, size.geometry, 1).product_bytes());
    const GuardedArray<std::byte> work = make_guarded_array<std::byte>(nullptr, bytes, 64);
    first_touch(work.get(), bytes, 1);
    std::vector<c64i> A(largest_bits / 128 + 1), R(largest_bits / 64);
    std::mt19937_64 rng(1);
    for (c64i& x : A) x = rng();
    for (unsigned round = 0; round < rounds; ++round) {
        for (Size& size : sizes) {
            const VST vst(&tables.holder, size.geometry, 1);
            size.nanoseconds =
                std::min(size.nanoseconds, measure(vst, {&tables.holder, work.get(), bytes, 1}, A, R));
        }
    }
    for (const Size& size : sizes) {
        const vst::Geometry& g = size.geometry;
        std::printf("%u\t%u\t%u\t%.0f\n", g.a, g.b, g.c, size.nanoseconds);
    }
}

}  // namespace
}  // namespace znp

// Arguments: log2 of the range's ends in bits, and the rounds.
int main(int argc, char** argv) {
    if (argc != 4) return 1;
    const auto bits = [](const char* log2) { return znp::u64_t{1} << std::atoi(log2); };
    znp::run(bits(argv[1]), bits(argv[2]), static_cast<unsigned>(std::atoi(argv[3])));
    return 0;
}
