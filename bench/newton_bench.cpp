// Reciprocal, inverse square root and division of p words in units of one product of p by p words, one
// thread.
//
// The product is timed in the same turns as the routine, and the least time of each counts.
//
//     newton_bench [p ...]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "foundation/guarded_alloc.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/table_holder.hpp"
#include "numbers/division.hpp"
#include "numbers/inverse_sqrt.hpp"
#include "numbers/reciprocal.hpp"

namespace znp {
namespace {

using newton::Float;
using newton::FloatR;
using newton::Scratch;
using Clock = std::chrono::steady_clock;

// Least seconds of a call of each, the functions taking turns.
template <class F, class G>
std::pair<double, double> race(F f, G g) {
    const auto seconds = [](auto& function, int calls) {
        const auto start = Clock::now();
        for (int i = 0; i < calls; ++i) function();
        return std::chrono::duration<double>(Clock::now() - start).count() / calls;
    };
    const int calls = std::max(1, static_cast<int>(2e-3 / std::max(seconds(f, 2), 1e-9)));
    std::pair<double, double> best{1e9, 1e9};
    for (int round = 0; round < 25; ++round) {
        best.first = std::min(best.first, seconds(f, calls));
        best.second = std::min(best.second, seconds(g, calls));
    }
    return best;
}

std::vector<cdi> random_words(upL_t n, std::mt19937_64& rng) {
    std::vector<cdi> words(n);
    for (cdi& w : words) w = rng() | 1;
    return words;
}

void measure(upL_t p, const TableHolder& holder) {
    std::mt19937_64 rng(p);
    const std::vector<cdi> a = random_words(p, rng), b = random_words(p, rng);
    const Float A(a.data(), p, 0), B(b.data(), p, 0);
    std::vector<cdi> product(2 * p), result(p + 4);
    std::vector<cdi> scratch(
        std::max({rcp_scratch_words(p), invsqrt_scratch_words(p), div_scratch_words(p)}));
    BasicParameters bp;
    bp.holder = &holder;
    bp.ML = std::max({work_bytes_for<cdi>(2 * p, 1), rcp_work_bytes(p, 1), invsqrt_work_bytes(p, 1),
                      div_work_bytes(p, 1)});
    const GuardedArray<std::byte> work = make_guarded_array<std::byte>(nullptr, bp.ML, 64);
    bp.M = work.get();
    FloatR y(result.data(), p + 4);

    const auto multiply = [&] { mul(bp, product.data(), a.data(), p, b.data(), p); };
    const auto ratio = [&](auto routine) {
        const auto [routine_seconds, product_seconds] = race(routine, multiply);
        return std::pair{routine_seconds / product_seconds, product_seconds};
    };
    const Scratch all(scratch.data(), scratch.size());
    const auto [reciprocal, seconds] = ratio([&] { zlp_rcp_B(bp, y, B, p, all); });
    int failed = 0;
    const double root = ratio([&] { failed |= zlp_invsqrt_udw_B(bp, y, 10005, p, all); }).first;
    const double division = ratio([&] { zlp_div_t9_B(bp, y, A, B, p, all); }).first;
    std::printf("%6zu %12.2f %12.2f %12.2f %12.2f%s\n", static_cast<std::size_t>(p), seconds * 1e6,
                reciprocal, root, division, failed != 0 ? "  failed" : "");
}

}  // namespace
}  // namespace znp

int main(int argc, char** argv) {
    using namespace znp;
    std::vector<upL_t> sizes;
    for (int i = 1; i < argc; ++i) sizes.push_back(std::strtoull(argv[i], nullptr, 10));
    if (sizes.empty()) sizes = {500, 1000, 2000, 5000};
    constexpr u64_t limit_bits = 655000;
    TableHolder holder;
    const GuardedArray<std::byte> tables = make_guarded_array<std::byte>(nullptr, table_size(limit_bits), 64);
    build_tables(holder, limit_bits, tables.get());
    std::printf("%6s %12s %12s %12s %12s\n", "words", "product us", "reciprocal", "inverse root", "division");
    for (const upL_t p : sizes) measure(p, holder);
}
