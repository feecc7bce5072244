#include "foundation/fatal.hpp"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "console_capture.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

using testing::dying;
using namespace testing::sent;
using ::testing::Eq;
using ::testing::ExitedWithCode;

using FatalDeathTest = ::testing::Test;

TEST(FatalDeathTest, FatalExitPrintsItsTextInRedAndPauses) {
    EXPECT_EXIT(dying([] { fatal_exit("It is over."); }, "\n"), ExitedWithCode(1),
                Eq("\n" + R + "It is over." + W + "\n" + pause + reset));
}

TEST(FatalDeathTest, EndOfInputCountsAsPressed) {
    EXPECT_EXIT(dying([] { fatal_exit("It is over."); }), ExitedWithCode(1),
                Eq("\n" + R + "It is over." + W + "\n" + pause + reset));
}

TEST(FatalDeathTest, PauseAndExitGivesItsStatus) {
    EXPECT_EXIT(dying([] { pause_and_exit(0); }), ExitedWithCode(0), Eq(pause + reset));
    EXPECT_EXIT(dying([] { pause_and_exit(7); }), ExitedWithCode(7), Eq(pause + reset));
}

TEST(FatalDeathTest, ExitProcessFlushesStandardOutput) {
    EXPECT_EXIT(dying([] {
                    std::fputs("kept", stdout);
                    exit_process(3);
                }),
                ExitedWithCode(3), Eq("kept"));
}

TEST(FatalDeathTest, ExitProcessWorksFromAnotherThread) {
    EXPECT_EXIT(dying([] { std::thread([] { fatal_exit("From a worker."); }).join(); }), ExitedWithCode(1),
                Eq("\n" + R + "From a worker." + W + "\n" + pause + reset));
}

// The screen asks for ENTER twice.
TEST(FatalDeathTest, AssertFailure) {
    const std::string closing =
        "If this error shows up consistantly with the current options,\nplease report it as a bug.\n\n"
        "If this error comes and goes with the current options,\n"
        "please check your hardware for reliability issues.\nAre you overclocking?\n\n"
        "Terminating Program...\n";
    EXPECT_EXIT(
        dying([] { assert_failure(fatal_category::impossible_result, L"component", L"detail"); }, "\n\n"),
        ExitedWithCode(1),
        Eq(R + "\n\nFATAL ERROR: Assertion Failure\n\nImpossible Functional Result:   component\n\n" +
           "detail\n\n\n" + closing + W + pause + pause + reset));
}

TEST(FatalDeathTest, LimitFailure) {
    EXPECT_EXIT(dying([] { limit_failure(fatal_category::algorithmic_limit, L"size", L""); }, "\n"),
                ExitedWithCode(1),
                Eq("\n\nFATAL ERROR: Limit Exceeded\n\nAlgorithmic Limit Exceeded: size\n\n\n\n\n" + pause +
                   pause + reset));
}

TEST(FatalDeathTest, HardwareError) {
    EXPECT_EXIT(dying([] { hardware_error_report(); }, "\n"), ExitedWithCode(1),
                Eq("\n\n\n\nHARDWARE ERROR DETECTED:\nAn error has been detected.\n"
                   "No attempt will made to correct it because ECC is disabled.\n\n"
                   "Please check your hardware. :)\n\n" +
                   pause + reset));
}

TEST(FatalDeathTest, NotAvailableYet) {
    EXPECT_EXIT(dying([] { not_available_yet("Swap mode"); }), ExitedWithCode(1),
                Eq("\n" + R + "Swap mode is not available in this version yet." + W + "\n" + pause + reset));
}

TEST(Fatal, CategoryTexts) {
    EXPECT_STREQ(fatal_category::invalid_parameters, L"Invalid Function Parameters:   ");
    EXPECT_STREQ(fatal_category::impossible_result, L"Impossible Functional Result:   ");
    EXPECT_STREQ(fatal_category::algorithmic_failure, L"Critical Algorithmic Failure:   ");
    EXPECT_STREQ(fatal_category::redundancy_failure, L"Global Redundancy Check Failed:   ");
    EXPECT_STREQ(fatal_category::algorithmic_limit, L"Algorithmic Limit Exceeded: ");
    EXPECT_STREQ(fatal_category::architectural_limit, L"Architectural Limit Exceeded: ");
    EXPECT_STREQ(label_actual, "Actual  : ");
    EXPECT_STREQ(label_expected, "Expected: ");
}

TEST(Fatal, ReportReattempts) {
    EXPECT_EQ(testing::console_output([] { report_reattempts(12); }),
              R + "\nSucceeded after 12 re-attempt(s). Please check your hardware for stability.\n" + W);
}

}  // namespace
}  // namespace znp
