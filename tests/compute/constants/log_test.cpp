#include "compute/constants/log.hpp"

#include <gtest/gtest.h>

#include "compute/settings/compute_parameters.hpp"
#include "console_capture.hpp"
#include "series/log_formula/factorization.hpp"

namespace znp {
namespace {

constexpr upL_t some_p = 51907;  // a million digits

zlr_Log make(u64_t n, upL_t p = some_p) {
    return {constant_rows()[constant_id::log], n, p};
}

TEST(LogConstant, NamesTellTheTerms) {
    const zlr_Log two = make(2);
    EXPECT_EQ(two.algorithm_count(), 2);
    EXPECT_EQ(two.get_short_name(), "Log(2)");
    EXPECT_EQ(two.get_algorithm_short(0, some_p), "Machin 1");
    EXPECT_EQ(two.get_algorithm_short(1, some_p), "Machin 2");
    EXPECT_EQ(two.get_algorithm_name(0, some_p), "Primary Machin-like Formula (3 terms)");
    EXPECT_EQ(two.get_algorithm_name(1, some_p), "Secondary Machin-like Formula (4 terms)");
    for (const s32_t algorithm : {-1, 2, 100}) {
        EXPECT_EQ(two.get_algorithm_short(algorithm, some_p), "");
        EXPECT_EQ(two.get_algorithm_name(algorithm, some_p), "");
        EXPECT_EQ(two.get_algorithm_menu(algorithm, some_p), "");
        EXPECT_FALSE(two.runs_B(algorithm));
    }
}

TEST(LogConstant, TheMenuShowsTheFormulaAndItsCost) {
    const zlr_Log two = make(2);
    const std::string menu = two.get_algorithm_menu(0, some_p);
    const std::string expected =
        "Log[2] = \n"
        "                     +18 * ArcCoth[26]\n"
        "                     -2 * ArcCoth[4801]\n"
        "                     +8 * ArcCoth[8749]\n"
        "\n        Cost = ";
    ASSERT_EQ(menu.substr(0, expected.size()), expected);
    EXPECT_EQ(menu.substr(expected.size()).find_first_not_of("0123456789"), std::string::npos);
    EXPECT_EQ(menu, formula_text(two.formulas()[0], 2, static_cast<double>(some_p) * 44.3614195558365));
    EXPECT_NE(two.get_algorithm_menu(0, 2 * some_p), menu);
}

TEST(LogConstant, IsTheSumOfTwoVerifiedFormulas) {
    for (const u64_t n : {2u, 3u, 10u, 1000u, 1000003u, 2147483647u}) {
        const zlr_Log log = make(n);
        ASSERT_EQ(log.formulas().size(), 2u);
        EXPECT_FALSE(log.formulas()[0] == log.formulas()[1]);
        for (const MachinFormula& formula : log.formulas()) EXPECT_TRUE(verify_formula(formula, n)) << n;
        for (const s32_t algorithm : {0, 1}) EXPECT_TRUE(log.runs_B(algorithm));
    }
}

// The larger the precision, the more a term's series counts against its division.
TEST(LogConstant, APrecisionHasItsOwnFormulas) {
    int differ = 0;
    for (u64_t n = 2; n <= 200; n++) {
        zlr_Log log = make(n, 5);
        const std::vector<MachinFormula> small = log.formulas();
        EXPECT_EQ(testing::console_output([&] { log.set_precision(upL_t{1} << 40); }), "");
        const zlr_Log expected = make(n, upL_t{1} << 40);
        EXPECT_TRUE(log.formulas() == expected.formulas()) << n;
        differ += small != log.formulas();
    }
    EXPECT_GT(differ, 0);
}

TEST(LogConstant, ItsConstructionSaysWhatIsDerived) {
    const std::string printed = testing::console_output([] { make(2); });
    EXPECT_EQ(printed.find("Generating Primary Formula...        "), 0u);
    EXPECT_NE(printed.find(" seconds\nGenerating Secondary Formula...      "), std::string::npos);
}

TEST(LogConstant, TheSettingsTakeItAndItsAlgorithms) {
    ComputeParameters settings;
    testing::console_output([&] {
        ASSERT_EQ(settings.choose_constant(constant_id::log, 10), nullptr);
        EXPECT_EQ(settings.set_dec(1000), nullptr);
        EXPECT_EQ(settings.set_algorithm(1), nullptr);
        EXPECT_STREQ(settings.set_algorithm(2), "Invalid Algorithm");
        EXPECT_STREQ(settings.choose_constant(constant_id::log, 1), "Parameter out of range");
    });
    EXPECT_EQ(settings.constant().get_name(), "Log(10)");
    EXPECT_GT(settings.ML(), 0u);
    EXPECT_EQ(settings.ML(), settings.Msize());
}

TEST(LogConstantDeathTest, AWrongFormulaIsFatalAtTheStartOfTheRun) {
    const zlr_Log two = make(2);
    std::vector<MachinFormula> formulas = two.formulas();
    check_formulas(formulas, 2);
    EXPECT_EXIT(testing::dying([&] { check_formulas(formulas, 3); }), ::testing::ExitedWithCode(1),
                "Formula 0 failed to pass verification\\.");
    formulas[1].pairs[0].coefficient++;
    EXPECT_EXIT(testing::dying([&] { check_formulas(formulas, 2); }), ::testing::ExitedWithCode(1),
                "Formula 1 failed to pass verification\\.");
}

TEST(LogConstantDeathTest, ANumberWithoutAFormulaIsReportedAsABug) {
    EXPECT_EXIT(testing::dying([] { formulas_or_exit(4294967311, some_p, Announce::no); }),
                ::testing::ExitedWithCode(1), "Unable to derive formula.*Please report this as a bug\\.");
}

}  // namespace
}  // namespace znp
