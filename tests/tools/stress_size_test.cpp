#include "tools/stress_size.hpp"

#include <gtest/gtest.h>

#include "tests/test_seed.hpp"
#include "tools/stress_fakes.hpp"
#include "tools/stress_operand.hpp"

namespace znp {
namespace {

using testing::FakeComponent;

constexpr u64_t largest_memory = 0x7fffffffffffffff;

TEST(StressSize, LayoutAddsUpTablesSlicesAndOperand) {
    FakeComponent component("BKT");
    component.table_size = 100;
    const StressLayout layout = stress_layout(component, 301, 3);
    EXPECT_EQ(layout.operand_words, 148u);  // 150 down to a multiple of 4
    EXPECT_EQ(layout.tables, 100u);
    // 8 * 301 + 16 * 301 + 40 * 3 = 7344, up to a multiple of 32
    EXPECT_EQ(layout.per_thread, 7360u);
    // 100 + 3 * 7360 + 4 * 301 = 23384, up to a multiple of 32
    EXPECT_EQ(layout.total, 23392u);
}

// Where the parts really lie: the slices begin at the end of the tables, rounded up, and the operand behind
// them.
TEST(StressSize, TotalCoversThePartsWhereverTheTablesEnd) {
    FakeComponent component("BKT");
    for (upL_t table_size : {0u, 1u, 31u, 32u, 33u, 100u}) {
        component.table_size = table_size;
        for (u64_t n = min_stress_words; n < min_stress_words + 20; n++) {
            const StressLayout layout = stress_layout(component, n, 3);
            const u64_t operand = (table_size + 31) / 32 * 32 + 3 * layout.per_thread;
            EXPECT_LE(operand + 8 * layout.operand_words, layout.total) << n << " " << table_size;
            EXPECT_LE(16 * layout.operand_words + component.work_bytes(n, 3), layout.per_thread);
        }
    }
}

TEST(StressSize, MemoryBeyondTheLimitsGivesTheComponentsLargestLength) {
    EXPECT_EQ(largest_stress_words(FakeComponent("BKT", 29696), u64_t{64} << 20, 2), 464u);
    EXPECT_EQ(largest_stress_words(FakeComponent("BKT", 29696), largest_memory, 256), 464u);
    EXPECT_EQ(largest_stress_words(FakeComponent("FFT", 100663296), largest_memory, 1), 1572864u);
    EXPECT_EQ(largest_stress_words(FakeComponent("VST", 633318697598976), largest_memory, 256),
              633318697598976u / 64);
}

// The length found fits, and one word more does not fit or is beyond the component's limits.
void expect_largest(const multiplier<c64i>& component, u64_t memory, u64_t threads) {
    const u64_t found = largest_stress_words(component, memory, threads);
    const auto total = [&](u64_t n) { return stress_layout(component, n, threads).total; };
    if (found == 0) {
        EXPECT_GT(total(min_stress_words), memory);
        return;
    }
    EXPECT_GE(found, min_stress_words);
    EXPECT_LE(found, component.max_bits / 64);
    EXPECT_LE(total(found), memory);
    const bool at_the_limit = found == component.max_bits / 64;
    EXPECT_TRUE(at_the_limit || total(found + 1) > memory) << found;
}

TEST(StressSize, TheLengthIsTheLargestThatFits) {
    auto rng = testing::make_rng(91);
    const FakeComponent component("VST", 633318697598976);
    for (int i = 0; i < 200; i++) {
        const u64_t n = min_stress_words + (rng() >> (rng() % 40 + 24));
        const u64_t threads = 1 + rng() % 256;
        const u64_t total = stress_layout(component, n, threads).total;
        for (const u64_t memory : {total - 32, total - 1, total, total + 1, total + 32}) {
            expect_largest(component, memory, threads);
        }
    }
}

TEST(StressSize, CapsAtTheBoundaries) {
    const FakeComponent component("BKT", 29696);
    for (const u64_t threads : {1u, 2u, 256u}) {
        const auto total = [&](u64_t n) { return stress_layout(component, n, threads).total; };
        EXPECT_EQ(largest_stress_words(component, total(min_stress_words) - 1, threads), 0u);
        EXPECT_GE(largest_stress_words(component, total(min_stress_words), threads), min_stress_words);
        EXPECT_EQ(largest_stress_words(component, total(464), threads), 464u);
        EXPECT_LT(largest_stress_words(component, total(464) - 1, threads), 464u);
        for (u64_t n = min_stress_words; n <= 464; n++) {
            expect_largest(component, total(n) - 1, threads);
            expect_largest(component, total(n), threads);
        }
    }
    EXPECT_EQ(largest_stress_words(component, 0, 1), 0u);
}

// Powers of two are where the doubling turns into the halving.
TEST(StressSize, CapsAroundTheDoublings) {
    const FakeComponent component("FFT", 100663296);
    for (u64_t power = 256; power <= 1048576; power *= 2) {
        for (const u64_t n : {power - 1, power, power + 1}) {
            if (n < min_stress_words) continue;
            const u64_t found = largest_stress_words(component, stress_layout(component, n, 1).total, 1);
            EXPECT_GE(found, n);
            EXPECT_LE(found, n + 1);
        }
    }
}

TEST(StressSize, ALimitBelowTheShortestProductRunsNothing) {
    EXPECT_EQ(largest_stress_words(FakeComponent("BKT", 64 * 255), largest_memory, 1), 0u);
    EXPECT_EQ(largest_stress_words(FakeComponent("BKT", 64 * 256), largest_memory, 1), 256u);
}

TEST(StressOperand, WordsAreThePolynomialModulo2To64) {
    c64i A[8];
    fill_stress_operand(A, 8);
    mpz_t x, value;
    mpz_inits(x, value, nullptr);
    for (unsigned j = 0; j < 8; j++) {
        mpz_set_ui(x, 2760733047673u + j);
        mpz_pow_ui(value, x, 3);
        mpz_mul_ui(value, value, 2760730175003u);
        mpz_add_ui(value, value, 2760727302517u);
        mpz_fdiv_r_2exp(value, value, 64);
        EXPECT_EQ(A[j], mpz_get_ui(value)) << j;
    }
    mpz_clears(x, value, nullptr);
}

TEST(StressOperand, ShortWordsAreTheLowerHalves) {
    c64i A[8];
    c32i B[8];
    fill_stress_operand(A, 8);
    fill_stress_operand(B, 8);
    for (int j = 0; j < 8; j++) EXPECT_EQ(B[j], static_cast<c32i>(A[j]));
}

}  // namespace
}  // namespace znp
