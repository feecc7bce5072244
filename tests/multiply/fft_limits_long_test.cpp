// The limits of the floating-point FFT's check against the worst operands: no product that is right may fail.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "multiply/fft/fft_check.hpp"
#include "multiply/fft/fft_kernels.hpp"
#include "multiply/fft_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using fft::testing::Buffer;
using fft::testing::row;
using fft::testing::Words;

// Nearly all ones, which fill all points: the errors are the largest there.
void fill(Words& A, std::mt19937_64& rng) {
    std::fill(A.begin(), A.end(), ~c32i{0});
    const upL_t L = A.size();
    switch (rng() % 4) {
        case 0:  // a few other words
            for (u64_t i = rng() % 8 + 1; i > 0; --i) A[rng() % L] = static_cast<c32i>(rng());
            break;
        case 1:  // one bit less in each word
            for (c32i& x : A) x &= ~(c32i{1} << (rng() % 32));
            break;
        case 2:  // random words at the bottom
            for (u64_t i = rng() % L / 8; i > 0; --i) A[i - 1] = static_cast<c32i>(rng());
            break;
        default:  // and everywhere
            for (c32i& x : A)
                if (rng() % 16 == 0) x = static_cast<c32i>(rng());
    }
}

// The second operand fills all points or half of them, as in Newton's steps.
enum class Second { whole, half };

void try_products(const fft::PlanRow& size, unsigned products, Second second, std::mt19937_64& rng) {
    const fft::testing::Tables tables(fft::bottom_depth(static_cast<unsigned>(size.p)));
    const FFT t(&tables.holder, size);
    const unsigned C = t.p % 2 != 0 ? t.k : 2 * t.k;
    const Buffer first(t.transform_bytes), T1(t.transform_bytes), T2(t.transform_bytes),
        scratch(t.work_bytes);
    const auto points = [](const Buffer& image) { return reinterpret_cast<double*>(image.get()); };
    Words A(t.bits / 32), B(second == Second::whole ? A.size() : A.size() / 2);
    double largest = 0;
    for (unsigned i = 0; i < products; ++i) {
        if (i % 4 == 0) {
            fill(A, rng);
            t.forward(first, A, scratch);
        }
        fill(B, rng);
        t.forward(T2, B, scratch);
        std::memcpy(T1.get(), first.get(), T1.size());
        fft::inverse_tree(points(T1), points(T2), t.N, C, *tables.holder.fft);
        largest =
            std::max(largest, fft::largest_distance(points(T1), t.N, 2.0 * C / static_cast<double>(t.N)));
    }
    const double limit = fft::distance_limit(t.N, t.w);
    std::printf(
        "[ ERROR    ] (k %u, p %u, w %u), %u products of all points by %s: largest %.5f, limit %.5f\n", t.k,
        t.p, t.w, products, second == Second::whole ? "all" : "half", largest, limit);
    EXPECT_LE(largest, limit);
}

TEST(FftLimits, NoAlarmForExtremeOperands) {
    auto rng = testing::make_rng(55);
    // Where both fill all points, this row can reach 1/2: one product of two million does.
    try_products(row(3, 7, 20), 2000000, Second::half, rng);
    try_products(row(1, 8, 20), 1000000, Second::whole, rng);
    try_products(row(1, 10, 19), 500000, Second::whole, rng);
    try_products(row(3, 8, 19), 500000, Second::whole, rng);
    try_products(row(1, 11, 18), 200000, Second::whole, rng);
    try_products(row(5, 9, 18), 200000, Second::whole, rng);
    try_products(row(3, 10, 18), 150000, Second::whole, rng);
    try_products(row(3, 11, 17), 60000, Second::whole, rng);
    try_products(row(5, 13, 16), 10000, Second::whole, rng);
}

}  // namespace
}  // namespace znp
