// Sums of millions of digits, whose sections are long enough to be reported level by level.
#include "series/partial_series.hpp"

#include <algorithm>

#include "console_capture.hpp"
#include "series/series_test_support.hpp"

namespace znp {
namespace {

using testing::GuardedSum;

constexpr upL_t p = upL_t{3} << 17;
constexpr u64_t table_bits = 64 * 4 * p;

// Number by number to words words; the guard words of a truncated sum may differ.
bool same(const BigFloat& x, const BigFloat& y, upL_t words) {
    if (x.get_mag() != y.get_mag()) return false;
    for (upL_t i = 1; i <= words; i++) {
        const s64_t position = x.get_mag() - static_cast<s64_t>(i);
        if (x.word_at(position) != y.word_at(position)) return false;
    }
    return true;
}

// Exact sections are checked by their residues, so that equal sums on all counts of threads are right ones.
void expect_equal_sums(const zl_BSS& series, const PSRPlan& plan, upL_t words) {
    const auto sum = [&](u64_t threads) {
        return GuardedSum(series, plan, threads, nullptr, nullptr, testing::tables_up_to<table_bits>());
    };
    const GuardedSum one = sum(1);
    for (const u64_t threads : {2u, 3u, 16u}) {
        const GuardedSum other = sum(threads);
        EXPECT_TRUE(same(one.P(), other.P(), words)) << threads;
        EXPECT_TRUE(same(one.Q(), other.Q(), words)) << threads;
    }
}

TEST(LongSums, OneSectionIsTheSameOnEveryCountOfThreads) {
    const Series_E_Taylor series(true);
    expect_equal_sums(series, make_single_section(series, 1, series.terms(p)), p);
}

TEST(LongSums, SectionsAreTheSameOnEveryCountOfThreads) {
    const Pi_Chudnovsky series;
    const PSRPlan plan = make_psr_plan(series, p, 1.0);
    ASSERT_GE(plan.front().length, upL_t{1} << 18);
    expect_equal_sums(series, plan, p);
}

TEST(LongSums, TheStatusLineMovesInEverySection) {
    const Pi_Chudnovsky series;
    const PSRPlan plan = make_psr_plan(series, p, 1.0);
    const std::string printed = testing::console_output([&] {
        StatusLine status(79, 0.01);
        status.set_label("Summing: ");
        GuardedSum(series, plan, 2, nullptr, &status, testing::tables_up_to<table_bits>());
    });
    for (upL_t i = 0; i < 6; i++) {
        EXPECT_NE(printed.find("Series: " + std::to_string(i)), std::string::npos) << i;
    }
    EXPECT_GT(std::count(printed.begin(), printed.end(), '%'), 20);
}

}  // namespace
}  // namespace znp
