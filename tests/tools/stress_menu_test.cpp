#include <gtest/gtest.h>

#include "foundation/memory.hpp"
#include "tests/console_capture.hpp"
#include "tools/stress_fakes.hpp"
#include "tools/stress_run.hpp"
#include "tools/stress_test.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::without_colors;

class StressMenu : public ::testing::Test {
  protected:
    StressMenu() {
        settings.memory = u64_t{1} << 30;
        settings.threads = 2;
        settings.seconds = 120;
        settings.stop_on_error = true;
        select_all_stress_tests(settings);
    }

    // One turn with this input; gives the screen and what followed.
    std::string turn(const std::string& input) {
        colored = console_output([&] { start = stress_menu_turn(settings); }, input);
        return without_colors(colored);
    }

    stress_settings settings{};
    std::string colored;
    bool start = false;
};

TEST_F(StressMenu, Screen) {
    settings.test_HNT = false;
    EXPECT_EQ(turn("0\n"),
              "\nComponent Stress Tester\n\n"
              "Enter # to change option:\n\n"
              "   1  Memory:                       1,073,741,824 (1.00 GiB)\n"
              "   2  Threads:                      2\n"
              "   3  Time per Test:                120 seconds\n"
              "   4  Stop on Error:                Enabled\n"
              "\n"
              "   #  Algorithm to Test             Primary Components        Enable Test?\n\n"
              "   5  BKT (Basic Multiply)          CPU: Integer              Yes\n"
              "   6  FFT (Floating-Point FFT)      Memory                    Yes\n"
              "   7  HNT (Hybrid NTT)              CPU + Cache + Memory      No\n"
              "   8  VST (Vector Transform)        AVX2-Float + Cache        Yes\n"
              "\n"
              "  10  Enable All\n"
              "  11  Disable All\n"
              "\n"
              "   0  Start Stress-Testing!\n\n"
              "option: \n");
    EXPECT_TRUE(start);
}

TEST_F(StressMenu, WithoutATestTheRunDoesNotStart) {
    clear_stress_tests(settings);
    settings.test_spare = true;
    const std::string screen = turn("0\n");
    EXPECT_NE(screen.find("      You must select at least one test.\n\noption: "), std::string::npos);
    EXPECT_EQ(screen.find("Start Stress-Testing"), std::string::npos);
    EXPECT_FALSE(start);
}

TEST_F(StressMenu, Memory) {
    const std::string screen = turn("1\n2.5GB\n");
    EXPECT_NE(screen.find("Please Select a Memory Cap:\n\n"
                          "Enter a memory limit: (e.g. 768MB, 2.5GB, etc...)\n"
                          "Bytes: "),
              std::string::npos);
    EXPECT_EQ(settings.memory, 2684354560u);
    EXPECT_FALSE(start);
    turn("1\n9223372036854775807\n");
    EXPECT_EQ(settings.memory, 0x77fffffffffffff1u);
    turn("1\n8646911284551352305\n");  // the bound itself
    EXPECT_EQ(settings.memory, 0x77fffffffffffff1u);
    turn("1\n8646911284551352304\n");
    EXPECT_EQ(settings.memory, 0x77fffffffffffff0u);
}

TEST_F(StressMenu, ThreadsAreAskedForUntilTheyAreInRange) {
    const std::string screen = turn("2\n0\n257\n-3\n256\n");
    EXPECT_NE(screen.find("Threads = Threads = Threads = Threads = "), std::string::npos);
    EXPECT_EQ(settings.threads, 256u);
    turn("2\n1\n");
    EXPECT_EQ(settings.threads, 1u);
}

TEST_F(StressMenu, Time) {
    const std::string screen = turn("3\n0\n-1\n7\n");
    EXPECT_NE(screen.find("Time (seconds) = Time (seconds) = Time (seconds) = "), std::string::npos);
    EXPECT_EQ(settings.seconds, 7u);
}

TEST_F(StressMenu, StopOnErrorIsToggled) {
    turn("4\n");
    EXPECT_FALSE(settings.stop_on_error);
    EXPECT_NE(turn("4\n").find("Stop on Error:                Disabled\n"), std::string::npos);
    EXPECT_TRUE(settings.stop_on_error);
}

TEST_F(StressMenu, TestsAreToggled) {
    const char* options[] = {"5\n", "6\n", "7\n", "8\n"};
    for (std::size_t i = 0; i < stress_tests.size(); i++) {
        turn(options[i]);
        for (std::size_t j = 0; j < stress_tests.size(); j++) {
            EXPECT_EQ(settings.*stress_tests[j].selected, j != i);
        }
        EXPECT_TRUE(settings.test_spare);
        turn(options[i]);
        EXPECT_TRUE(settings.*stress_tests[i].selected);
    }
}

TEST_F(StressMenu, Option9TogglesTheSpareFlag) {
    turn("9\n");
    EXPECT_FALSE(settings.test_spare);
    EXPECT_TRUE(settings.test_BKT && settings.test_FFT && settings.test_HNT && settings.test_VST);
    turn("9\n");
    EXPECT_TRUE(settings.test_spare);
}

TEST_F(StressMenu, EnableAllAndDisableAll) {
    turn("11\n");
    EXPECT_FALSE(any_stress_test_selected(settings));
    EXPECT_FALSE(settings.test_spare);
    turn("10\n");
    EXPECT_TRUE(settings.test_BKT && settings.test_FFT && settings.test_HNT && settings.test_VST &&
                settings.test_spare);
}

TEST_F(StressMenu, AnOptionOutOfRangeIsAskedForAgain) {
    const std::string screen = turn("12\n-1\n4\n");
    EXPECT_NE(screen.find("option: option: option: "), std::string::npos);
    EXPECT_FALSE(settings.stop_on_error);
}

using StressMenuDeathTest = StressMenu;

TEST_F(StressMenuDeathTest, TheEndOfTheInputEndsTheProgram) {
    for (const char* input : {"", "1\n", "2\n0\n", "11\n0\n0\n"}) {
        EXPECT_EXIT(testing::dying([&] { stress_menu(settings); }, input), ::testing::ExitedWithCode(1),
                    "The input has ended")
            << input;
    }
}

}  // namespace
}  // namespace znp
