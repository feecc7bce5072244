// The plan tables of the floating-point FFT, its twiddle tables, and the queries on both.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/fft_test_support.hpp"
#include "multiply/multiply_test_support.hpp"
#include "multiply/selection.hpp"

namespace znp::fft {
namespace {

using testing::row;

bool same(const PlanRow& a, const PlanRow& b) {
    return a.capacity_bits == b.capacity_bits && a.k == b.k && a.p == b.p && a.w == b.w && a.zero == b.zero;
}

s32_t thrown_code(const std::function<void()>& action) {
    s32_t code = 0;
    znp::testing::console_output([&] { code = znp::testing::caught<zn_exception>(action).code; });
    return code;
}

TEST(FftPlan, MainTableHasItsFixedRows) {
    const auto plan = main_plan();
    ASSERT_EQ(plan.size(), 98u);
    const PlanRow first[] = {row(1, 7, 16), row(1, 7, 20), row(1, 8, 16), row(1, 8, 20), row(3, 7, 16),
                             row(3, 7, 20), row(1, 9, 16), row(1, 9, 18), row(1, 9, 19), row(5, 7, 16)};
    const PlanRow last[] = {row(3, 21, 11), row(3, 21, 12), row(1, 23, 11), row(1, 23, 12)};
    EXPECT_TRUE(std::equal(std::begin(first), std::end(first), plan.begin(), same));
    EXPECT_TRUE(std::equal(std::begin(last), std::end(last), plan.end() - 4, same));
}

TEST(FftPlan, ExactTableHasItsFixedRows) {
    const auto plan = exact_plan();
    ASSERT_EQ(plan.size(), 261u);
    EXPECT_TRUE(same(plan[0], row(1, 7, 9)));
    EXPECT_TRUE(same(plan[1], row(1, 7, 10)));
    EXPECT_TRUE(same(plan[2], row(1, 7, 11)));
    EXPECT_TRUE(same(plan.back(), row(1, 22, 12)));
}

TEST(FftPlan, RowsKeepTheRoundingBoundAndTheTrendOfTheWidth) {
    for (const auto plan : {main_plan(), exact_plan()})
        for (const PlanRow& r : plan) {
            EXPECT_LE(2 * r.w + std::log2(static_cast<double>(r.N())), 48.6) << r.capacity_bits;
            EXPECT_EQ(r.N() % 128, 0u);
        }
    for (const PlanRow& r : main_plan()) {
        const int least = r.N() <= 1u << 15 ? 16 : r.N() < 1u << 19 ? 12 : 11;
        const int most = r.N() <= 1u << 15 ? 20 : r.N() < 1u << 19 ? 16 : r.N() < 1u << 23 ? 14 : 12;
        EXPECT_GE(r.w, least) << r.capacity_bits;
        EXPECT_LE(r.w, most) << r.capacity_bits;
    }
}

TEST(FftPlan, LookupTakesTheFirstRowThatCovers) {
    for (const u64_t bits : {0u, 1u, 2048u}) EXPECT_TRUE(same(find_size(bits), row(1, 7, 16)));
    EXPECT_TRUE(same(find_size(2049), row(1, 7, 20)));
    EXPECT_TRUE(same(find_size(100663296), row(1, 23, 12)));
    const auto plan = main_plan();
    for (std::size_t i = 1; i < plan.size(); ++i) {
        EXPECT_TRUE(same(find_size(plan[i].capacity_bits), plan[i]));
        EXPECT_TRUE(same(find_size(plan[i - 1].capacity_bits + 1), plan[i]));
    }
    EXPECT_EQ(thrown_code([] { find_size(100663297); }), -4);
}

TEST(FftPlan, ExactLookupTakesNoOtherCapacity) {
    for (const PlanRow& r : exact_plan()) {
        EXPECT_TRUE(same(find_exact_size(r.capacity_bits), r));
        EXPECT_EQ(thrown_code([&] { find_exact_size(r.capacity_bits - 1); }), -3);
        EXPECT_EQ(thrown_code([&] { find_exact_size(r.capacity_bits + 1); }),
                  r.capacity_bits == 50331648 ? -4 : -3);
    }
    EXPECT_EQ(thrown_code([] { find_exact_size(1); }), -3);
}

// Rings modulo 2^(32 L) + 1 with 4 * 32 L = m 2^j, m up to 15 (what an integer transform of 2^j points
// needs). A power of two needs w = 16, and N = 2^17 of that width would round too coarsely: beyond 2^20 there
// is none.
TEST(FftPlan, ExactTableServesRingsOfSmallMultiplesOfPowersOfTwo) {
    for (u64_t m = 1; m <= 15; ++m)
        for (unsigned j = 0; j <= 20; ++j) {
            const u64_t bits = m << j;
            if (bits < 1152 || bits % 128 != 0) continue;
            const bool power_of_two = (m & (m - 1)) == 0;
            if (power_of_two && bits > 1u << 20)
                EXPECT_EQ(thrown_code([&] { find_exact_size(bits); }), -3) << bits;
            else
                EXPECT_EQ(find_exact_size(bits).capacity_bits, bits);
        }
}

TEST(FftPlan, CapacityQueryIsTheLargestWorkBuffer) {
    EXPECT_EQ(fft_capacity_bytes(1), 128u * 20);
    u64_t N = 0;
    for (const PlanRow& r : main_plan()) {
        N = std::max(N, r.N());
        EXPECT_EQ(fft_capacity_bytes(r.capacity_bits), 20 * N);
        EXPECT_EQ(find_multiplier<c64i>("FFT")->work_bytes(r.capacity_bits / 64, 1), 20 * N);
        EXPECT_EQ(find_multiplier<c32i>("FFT")->work_bytes(r.capacity_bits / 32, 4), 20 * N);
    }
    EXPECT_EQ(thrown_code([] { fft_capacity_bytes(100663297); }), -4);
}

TEST(FftTables, RootsAreExactInSymmetryAndCloseToLongDouble) {
    for (unsigned log2_den = 0; log2_den <= 12; ++log2_den) {
        const u64_t den = u64_t{1} << log2_den;
        for (u64_t num = 0; num < den; ++num) {
            const Root r = unit_root(num, log2_den);
            const long double angle = 2 * 3.14159265358979323846264338327950288L *
                                      static_cast<long double>(num) / static_cast<long double>(den);
            EXPECT_NEAR(r.c, static_cast<double>(std::cos(angle)), 1.2e-16);
            EXPECT_NEAR(r.s, static_cast<double>(std::sin(angle)), 1.2e-16);
            const Root mirrored = unit_root(den - num, log2_den);
            EXPECT_EQ(r.c, mirrored.c);
            EXPECT_EQ(r.s, -mirrored.s);
            if (log2_den >= 2) {
                const Root quarter = unit_root(num + den / 4, log2_den);
                EXPECT_EQ(quarter.c, -r.s);
                EXPECT_EQ(quarter.s, r.c);
            }
        }
    }
}

TEST(FftTables, FillWhatTheQueryPromises) {
    for (unsigned depth = 2; depth <= 8; depth += 2) {
        const testing::Tables tables(depth);
        EXPECT_EQ(tables.holder.fft->depth, depth);
        // Block 0 at depth 2 is X^(M/4) - e^(i pi/8).
        const BlockTwiddles& first = tables.holder.fft->level[2][0];
        EXPECT_EQ(first.c[0], unit_root(1, 6).c);
        EXPECT_EQ(first.s[1], unit_root(2, 6).s);
        EXPECT_EQ(first.child_c[0][0], unit_root(1, 8).c);
    }
}

TEST(FftTables, OfAHolderServeEveryProductUpToTheLimit) {
    for (const u64_t limit : {u64_t{1}, u64_t{5121}, u64_t{300000}, vst_threshold_bits - 1}) {
        const testing::Buffer memory(table_size(limit));
        TableHolder holder;
        EXPECT_EQ(build_tables(holder, limit, memory.get()), memory.get() + memory.size());
        EXPECT_EQ(holder.limit_bits, limit);
        EXPECT_EQ(holder.reserved, 0x100000u);
        EXPECT_EQ(holder.vst, nullptr);
        for (const PlanRow& r : main_plan())
            if (r.capacity_bits <= limit) {
                EXPECT_GE(holder.fft->depth, bottom_depth(static_cast<unsigned>(r.p)));
            }
    }
}

TEST(FftTables, FromTheVstThresholdOnTheOtherTablesAreThereToo) {
    const upL_t fft = find_multiplier<c64i>("FFT")->table_bytes(vst_threshold_bits);
    const upL_t vst = find_multiplier<c64i>("VST")->table_bytes(vst_threshold_bits);
    EXPECT_EQ(table_size(vst_threshold_bits), fft + vst);
    EXPECT_EQ(table_size(vst_threshold_bits - 1), fft);
    EXPECT_GT(find_multiplier<c64i>("FFT")->table_bytes(100663296), 0u);
}

}  // namespace
}  // namespace znp::fft
