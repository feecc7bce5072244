#include "compute/constants/constant.hpp"

#include <gtest/gtest.h>

#include "compute/constants/constant_row.hpp"
#include "console_capture.hpp"

namespace znp {
namespace {

struct Expected {
    u32_t id;
    u64_t parameter;
    const char* short_name;
    const char* name;
    char color;
    s32_t algorithms;
};

TEST(ConstantCatalogue, NamesColoursAndAlgorithmCounts) {
    const Expected all[] = {
        {0, 2, "Sqrt(2)", "Sqrt(2)", 'P', 1},
        {1, 0, "Golden Ratio", "Golden Ratio", 'P', 1},
        {2, 0, "e", "e", 'G', 2},
        {3, 0, "Pi", "Pi", 'G', 2},
        {4, 4294967295, "ArcCoth(4294967295)", "ArcCoth(4294967295)", 'G', 1},
        {5, 10, "Log(10)", "Log(10)", 'G', 2},
        {6, 0, "Zeta(3)", "Zeta(3) - Apery's Constant", 'G', 2},
        {7, 0, "Lemniscate", "Lemniscate", 'G', 2},
        {8, 0, "Catalan", "Catalan's Constant", 'B', 2},
        {9, 0, "Euler's Constant", "Euler-Mascheroni Constant", 'B', 2},
        {10, 12, "Euler's Constant", "Euler-Mascheroni Constant (parameter override)", 'B', 2},
    };
    for (const Expected& expected : all) {
        const auto constant = make_constant(expected.id, expected.parameter, 100);
        EXPECT_EQ(constant->get_short_name(), expected.short_name);
        EXPECT_EQ(constant->get_name(), expected.name);
        EXPECT_EQ(constant->get_color(), expected.color) << expected.name;
        EXPECT_EQ(constant->algorithm_count(), expected.algorithms) << expected.name;
        EXPECT_EQ(constant->get_max_digits(), 90'000'000'000'050u) << expected.name;
    }
}

TEST(ConstantCatalogue, AlgorithmsByNumber) {
    const auto pi = make_constant(constant_id::pi, 0, 100);
    EXPECT_EQ(pi->get_algorithm_short(0, 100), "Chudnovsky");
    EXPECT_EQ(pi->get_algorithm_name(1, 100), "Ramanujan's Formula");
    EXPECT_EQ(pi->get_algorithm_menu(0, 100), "Chudnovsky Formula      (fastest)\n");
    const auto e = make_constant(constant_id::e, 0, 100);
    EXPECT_EQ(e->get_algorithm_menu(1, 100), "Taylor Series of exp(-1)   (same speed)");
    const auto lemniscate = make_constant(constant_id::lemniscate, 0, 100);
    EXPECT_EQ(lemniscate->get_algorithm_menu(1, 100),
              "Sebah's Formula     (20% slower)\n\n"
              "            Lemniscate = 8 * ArcSinlemn(2/3) - 4 * ArcSinLemn(7/137)\n");
    const auto log = make_constant(constant_id::log, 2, 100);
    EXPECT_EQ(log->get_algorithm_short(0, 100), "Machin 1");
    EXPECT_EQ(log->get_algorithm_short(1, 100), "Machin 2");
}

TEST(ConstantCatalogue, EveryCountedAlgorithmHasItsThreeNames) {
    for (u32_t id = 0; id <= constant_id::euler_gamma_override; id++) {
        const auto constant = make_constant(id, 5, 100);
        for (s32_t algorithm = 0; algorithm < constant->algorithm_count(); algorithm++) {
            EXPECT_NE(constant->get_algorithm_short(algorithm, 100), "") << id;
            EXPECT_NE(constant->get_algorithm_name(algorithm, 100), "") << id;
            EXPECT_NE(constant->get_algorithm_menu(algorithm, 100), "") << id;
            EXPECT_TRUE(constant->knows_algorithm(algorithm, 100)) << id;
        }
    }
}

TEST(ConstantCatalogue, UnknownAlgorithmNumbersGiveTheEmptyText) {
    for (u32_t id = 0; id <= constant_id::euler_gamma_override; id++) {
        const auto constant = make_constant(id, 5, 100);
        for (const s32_t algorithm : {-1, 4, 1000}) {
            EXPECT_EQ(constant->get_algorithm_short(algorithm, 100), "") << id;
            EXPECT_EQ(constant->get_algorithm_name(algorithm, 100), "") << id;
            EXPECT_FALSE(constant->knows_algorithm(algorithm, 100)) << id;
        }
    }
}

TEST(ConstantCatalogue, ReducedMemoryPiIsNamedButNotCounted) {
    const auto pi = make_constant(constant_id::pi, 0, 100);
    EXPECT_EQ(pi->algorithm_count(), 2);
    EXPECT_EQ(pi->get_algorithm_short(2, 100), "Chudnovsky");
    EXPECT_EQ(pi->get_algorithm_name(2, 100), "Chudnovsky Formula (reduced memory)");
    EXPECT_EQ(pi->get_algorithm_name(3, 100), "Ramanujan's Formula (reduced memory)");
    EXPECT_EQ(pi->get_algorithm_menu(3, 100).find("Ramanujan's Formula     (reduced memory)\n"), 0u);
}

TEST(ConstantCatalogue, EulerGammaTakesItsExponentFromThePrecision) {
    const auto gamma = make_constant(constant_id::euler_gamma, 0, 6);  // X = 76.5...
    EXPECT_EQ(gamma->get_algorithm_name(1, 6), "Brent-McMillan ( n = 2^7 )");
    EXPECT_EQ(gamma->get_algorithm_name(0, 6), "Brent-McMillan with Refinement ( n = 2^6 )");
    EXPECT_EQ(gamma->get_algorithm_menu(1, 6), "Brent-McMillan ( n = 2^7 )");
    gamma->set_precision(0);  // X = 10
    EXPECT_EQ(gamma->get_algorithm_name(1, 0), "Brent-McMillan ( n = 2^4 )");
    gamma->set_precision(u64_t{1} << 60);  // 2^60 * 11.09... lies between 2^63 and 2^64
    EXPECT_EQ(gamma->get_algorithm_name(1, 0), "Brent-McMillan ( n = 2^64 )");
}

TEST(ConstantCatalogue, EulerGammaOverrideKeepsItsExponent) {
    const auto gamma = make_constant(constant_id::euler_gamma_override, 20, 6);
    gamma->set_precision(1000000);
    EXPECT_EQ(gamma->get_algorithm_name(1, 1000000), "Brent-McMillan ( n = 2^20 )");
}

TEST(ConstantTable, EveryKeywordFindsItsOwnRow) {
    u64_t keywords = 0;
    for (const ConstantRow& row : constant_rows()) {
        for (const std::string_view keyword : row.keywords) {
            if (keyword.empty()) continue;
            EXPECT_EQ(find_constant(keyword), &row) << keyword;
            keywords++;
        }
    }
    EXPECT_EQ(keywords, 13u);
    EXPECT_EQ(find_constant(""), nullptr);
    EXPECT_EQ(find_constant("Pi"), nullptr);
    EXPECT_EQ(find_constant("pi "), nullptr);
}

TEST(ConstantTable, WhatIsOfferedHasItsFormula) {
    for (const ConstantRow& row : constant_rows()) {
        EXPECT_EQ(&row, &constant_rows()[row.id]);
        EXPECT_LE(static_cast<upL_t>(row.selectable), row.algorithms.size()) << row.short_name;
        EXPECT_EQ(row.menu_group.empty(), row.id > constant_id::last_selectable);
        for (const Algorithm& algorithm : row.algorithms) {
            EXPECT_TRUE(algorithm.formula.in_memory != nullptr) << algorithm.name;
        }
    }
}

TEST(ConstantCatalogue, UnknownIdIsFatal) {
    EXPECT_EXIT(testing::dying([] { make_constant(11, 0, 100); }), ::testing::ExitedWithCode(1),
                "Unknown Constant ID");
}

TEST(ConstantCatalogue, LogWithAParameterOutOfRangeIsFatal) {
    for (const u64_t parameter : {u64_t{0}, u64_t{1}, u64_t{2147483648}}) {
        EXPECT_EXIT(testing::dying([=] { make_constant(constant_id::log, parameter, 100); }),
                    ::testing::ExitedWithCode(1), "Parameter out of range");
    }
}

TEST(CheckConstant, IdsAbove9AreRefused) {
    EXPECT_EQ(check_constant(9, 0), nullptr);
    EXPECT_STREQ(check_constant(10, 20), "Invalid constant, or not yet implemented.");
    EXPECT_STREQ(check_constant(~u64_t{0}, 0), "Invalid constant, or not yet implemented.");
}

TEST(CheckConstant, PerfectSquaresAreRefused) {
    const u64_t largest_root = 4294967295;
    for (const u64_t root : {u64_t{0}, u64_t{1}, u64_t{2}, u64_t{4}, u64_t{1000000007}, largest_root}) {
        EXPECT_STREQ(check_constant(0, root * root), "This is a perfect square.") << root;
        if (root >= 2) {
            EXPECT_EQ(check_constant(0, root * root - 1), nullptr) << root;
            EXPECT_EQ(check_constant(0, root * root + 1), nullptr) << root;
        }
    }
}

TEST(CheckConstant, SquareRootOfTheLargestNumberIsAccepted) {
    EXPECT_EQ(check_constant(0, 18446744073709551615u), nullptr);
    EXPECT_EQ(check_constant(0, 2), nullptr);
}

TEST(CheckConstant, ArcCothTakes2To4294967295) {
    for (const u64_t bad : {u64_t{0}, u64_t{1}, u64_t{4294967296}, ~u64_t{0}}) {
        EXPECT_STREQ(check_constant(4, bad), "Parameter out of range") << bad;
    }
    EXPECT_EQ(check_constant(4, 2), nullptr);
    EXPECT_EQ(check_constant(4, 4294967295), nullptr);
}

TEST(CheckConstant, LogTakes2To2147483647) {
    for (const u64_t bad : {u64_t{0}, u64_t{1}, u64_t{2147483648}, ~u64_t{0}}) {
        EXPECT_STREQ(check_constant(5, bad), "Parameter out of range") << bad;
    }
    EXPECT_EQ(check_constant(5, 2), nullptr);
    EXPECT_EQ(check_constant(5, 2147483647), nullptr);
}

}  // namespace
}  // namespace znp
