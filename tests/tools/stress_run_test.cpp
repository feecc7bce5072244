#include "tools/stress_run.hpp"

#include <gtest/gtest.h>

#include <csignal>

#include "foundation/memory.hpp"
#include "foundation/threads.hpp"
#include "multiply/selection.hpp"
#include "multiply/unavailable_multiplier.hpp"
#include "tests/console_capture.hpp"
#include "tools/stress_fakes.hpp"
#include "tools/stress_signals.hpp"
#include "tools/stress_size.hpp"
#include "tools/stress_test.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::FakeClock;
using testing::FakeComponent;
using testing::without_colors;

// A run of fake components; the settings are those of a small machine.
class StressRun : public ::testing::Test {
  protected:
    StressRun() {
        settings.memory = u64_t{1} << 20;
        settings.threads = 2;
        settings.seconds = 1;
        settings.stop_on_error = true;
        environment.components = {&bkt, &fft, &hnt, &vst};
        environment.clock = FakeClock::seconds;
    }

    // A signal at this product of the component.
    static void signal_at(FakeComponent& component, u64_t at, int signal_number = SIGINT) {
        component.on_call = [at, signal_number](u64_t call) {
            if (call == at) std::raise(signal_number);
        };
    }

    void run() {
        output = without_colors(console_output([&] { exit_code = run_stress_test(settings, environment); }));
    }
    bool printed(const std::string& text) const { return output.find(text) != std::string::npos; }
    std::string last_line() const {
        const std::size_t end = output.size() - 1;
        const std::size_t before = output.rfind('\n', end - 1);
        return output.substr(before + 1, end - before - 1);
    }

    FakeComponent bkt{"BKT"}, fft{"FFT"}, hnt{"HNT"}, vst{"VST"};
    StressEnvironment environment{};
    stress_settings settings{};
    std::string output;
    int exit_code = -1;
};

TEST_F(StressRun, AnErrorOfTheOnlyTestStopsTheRunAtTheEndOfTheIteration) {
    settings.threads = 1;
    settings.test_BKT = true;
    bkt.wrong_call = 192;  // in the middle of the second iteration
    run();
    EXPECT_EQ(exit_code, 1);
    EXPECT_EQ(output,
              "Starting Continuous Stress-Test...\n"
              "\n"
              "Iteration 0  Total Elapsed Time: 0.000 seconds  ( 0.000 hours )\n"
              "Preparing BKT Test...\n"
              "BKT Test 0  Elapsed Time: 0.000 seconds  ( 0.000 hours )\n"
              "BKT Test: Passed  Test Time: 1.000 seconds  ( 0.000 hours )\n"
              "\n"
              "Iteration 1  Total Elapsed Time: 1.000 seconds  ( 0.000 hours )\n"
              "Preparing BKT Test...\n"
              "BKT Test 0  Elapsed Time: 0.000 seconds  ( 0.000 hours )\n"
              "BKT Test: Failed  Test Time: 0.500 seconds  ( 0.000 hours )\n"
              "\n"
              "Errors encountered. Stopping test...\n"
              "\n"
              "2 iterations in 1.500 seconds  Multiplications: BKT 192  Errors: BKT\n");
}

TEST_F(StressRun, TheStopMessageIsRed) {
    settings.test_BKT = true;
    bkt.wrong_call = 1;
    const std::string colored = console_output([&] { run_stress_test(settings, environment); });
    EXPECT_NE(colored.find("\033[01;31mErrors encountered. Stopping test...\n\033[01;37m\n"),
              std::string::npos);
}

TEST_F(StressRun, AThrowingComponentStopsTheRun) {
    settings.test_HNT = true;
    hnt.on_call = [](u64_t call) {
        if (call == 50) throw zn_exception(error_code::numerical_result);
    };
    run();
    EXPECT_EQ(exit_code, 1);
    EXPECT_TRUE(printed("HNT Test: Failed"));
    EXPECT_TRUE(printed("Errors encountered. Stopping test...\n\n"));
}

TEST_F(StressRun, TestsRunInTheirOrder) {
    select_all_stress_tests(settings);
    signal_at(vst, 150);
    run();
    EXPECT_EQ(exit_code, 0);
    std::size_t position = 0;
    for (const char* name : {"BKT", "FFT", "HNT", "VST", "BKT", "FFT", "HNT", "VST"}) {
        position = output.find(std::string("Preparing ") + name + " Test...", position);
        ASSERT_NE(position, std::string::npos) << name;
    }
}

TEST_F(StressRun, OnlyTheLastTestDecidesWhetherTheRunStops) {
    settings.test_BKT = true;
    settings.test_VST = true;
    bkt.wrong_call = 10;
    signal_at(vst, 450);
    run();
    EXPECT_TRUE(printed("BKT Test: Failed"));
    EXPECT_TRUE(printed("Iteration 3"));
    EXPECT_FALSE(printed("Errors encountered"));
    EXPECT_EQ(exit_code, 1);  // told by the exit code and the last line all the same
    EXPECT_NE(last_line().find("Errors: BKT"), std::string::npos);
}

TEST_F(StressRun, AnErrorOfTheLastTestStopsTheRun) {
    settings.test_BKT = true;
    settings.test_VST = true;
    vst.wrong_call = 10;
    run();
    EXPECT_TRUE(printed("BKT Test: Passed"));
    EXPECT_FALSE(printed("Iteration 1"));
    EXPECT_TRUE(printed("Errors encountered"));
    EXPECT_EQ(exit_code, 1);
}

TEST_F(StressRun, AnErrorNeedNotStopTheRun) {
    settings.test_BKT = true;
    settings.stop_on_error = false;
    bkt.wrong_call = 10;
    signal_at(bkt, 450);
    run();
    EXPECT_TRUE(printed("BKT Test: Failed"));
    EXPECT_TRUE(printed("BKT Test: Passed"));
    EXPECT_TRUE(printed("Iteration 2"));
    EXPECT_FALSE(printed("Errors encountered"));
    EXPECT_EQ(exit_code, 1);
}

TEST_F(StressRun, AnInterruptEndsTheRunWithALineThatSaysWhatWasRun) {
    settings.threads = 1;
    settings.test_BKT = true;
    settings.test_HNT = true;
    signal_at(bkt, 320);  // in the middle of the third iteration
    run();
    EXPECT_EQ(exit_code, 0);
    EXPECT_TRUE(printed("BKT Test: Stopped"));
    EXPECT_EQ(last_line(), "2 iterations in 4.500 seconds  Multiplications: BKT 320 HNT 256  Errors: None");
}

TEST_F(StressRun, ATerminationRequestIsLikeAnInterrupt) {
    settings.test_BKT = true;
    signal_at(bkt, 250, SIGTERM);
    run();
    EXPECT_EQ(exit_code, 0);
    EXPECT_NE(last_line().find("Errors: None"), std::string::npos);
}

TEST_F(StressRun, SignalHandlersAreThereForTheRunOnly) {
    struct sigaction before {};
    struct sigaction after {};
    sigaction(SIGINT, nullptr, &before);
    settings.test_BKT = true;
    signal_at(bkt, 1);
    run();
    sigaction(SIGINT, nullptr, &after);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
    EXPECT_FALSE(StopSignals::requested());

    settings.memory = u64_t{1} << 62;
    EXPECT_THROW(run_stress_test(settings, environment), std::bad_alloc);
    sigaction(SIGINT, nullptr, &after);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
}

TEST_F(StressRun, ATestThatDoesNotFitIsSkippedAndTheOthersGoOn) {
    settings.test_BKT = true;
    settings.test_VST = true;
    vst.table_size = u64_t{1} << 20;
    signal_at(bkt, 250);
    run();
    EXPECT_TRUE(printed("BKT Test: Passed"));
    EXPECT_TRUE(printed("VST Test: Insufficient memory to run this test.\n"));
    EXPECT_TRUE(printed("Iteration 1"));
    EXPECT_EQ(vst.calls(), 0u);
    EXPECT_EQ(exit_code, 0);
}

TEST_F(StressRun, WhereNothingFitsTheRunEnds) {
    select_all_stress_tests(settings);
    settings.memory = 1000;
    run();
    EXPECT_TRUE(printed("BKT Test: Insufficient memory to run this test.\n"));
    EXPECT_TRUE(printed("VST Test: Insufficient memory to run this test.\n"));
    EXPECT_TRUE(printed("No test could be run.\n"));
    EXPECT_FALSE(printed("Iteration 1"));
    EXPECT_EQ(exit_code, 1);
}

TEST_F(StressRun, NoTestSelectedIsAnError) {
    settings.test_spare = true;  // selects nothing
    run();
    EXPECT_EQ(output, "\nYou must select at least one test.\n");
    EXPECT_EQ(exit_code, 1);
}

using StressRunDeathTest = StressRun;

TEST_F(StressRunDeathTest, AComponentThatIsNotThereYetEndsTheProgramBeforeAnyTest) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    const UnavailableMultiplier<c64i> absent(100663296, "FFT", "Floating-Point FFT");
    settings.test_BKT = true;
    settings.test_FFT = true;
    for (const multiplier<c64i>* component :
         {static_cast<const multiplier<c64i>*>(&absent), static_cast<const multiplier<c64i>*>(nullptr)}) {
        environment.components[1] = component;
        EXPECT_EXIT(testing::dying([&] { run_stress_test(settings, environment); }),
                    ::testing::ExitedWithCode(1),
                    "FFT \\(Floating-Point FFT\\) is not available in this version yet");
        EXPECT_EQ(bkt.calls(), 0u);
    }
}

TEST_F(StressRunDeathTest, ASecondInterruptEndsTheProcess) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    settings.test_BKT = true;
    bkt.on_call = [](u64_t) {
        std::raise(SIGINT);
        std::raise(SIGINT);
    };
    EXPECT_EXIT(testing::dying([&] { run_stress_test(settings, environment); }),
                ::testing::KilledBySignal(SIGINT), "\\[39;49m");
}

// The components that are there, at full speed for a moment: a signal ends each after a few products.
TEST(StressTest, RunsTheRealMultipliers) {
    static std::atomic<int> calls{0};
    for (std::size_t i = 0; i < stress_tests.size(); i++) {
        StressEnvironment environment{};
        environment.components[i] = find_multiplier<c64i>(stress_tests[i].key);
        ASSERT_NE(environment.components[i], nullptr);
        if (dynamic_cast<const UnavailableMultiplier<c64i>*>(environment.components[i]) != nullptr) continue;
        calls = 0;
        environment.clock = [] {
            if (++calls == 50) std::raise(SIGINT);
            return 0.0;
        };
        stress_settings settings{};
        settings.memory = u64_t{5} << 20;
        settings.threads = 3;
        settings.seconds = 100;
        settings.*stress_tests[i].selected = true;
        int exit_code = -1;
        const std::string output =
            without_colors(console_output([&] { exit_code = run_stress_test(settings, environment); }));
        EXPECT_EQ(exit_code, 0) << output;
        EXPECT_NE(output.find("Errors: None"), std::string::npos) << output;
        EXPECT_GE(calls, 50);
    }
    EXPECT_EQ(largest_stress_words(*find_multiplier<c64i>("BKT"), u64_t{1} << 20, 2), 464u);
}

TEST(StressTest, TheComponentsOfTheTableExist) {
    for (const StressTest& test : stress_tests) {
        const multiplier<c64i>* component = find_multiplier<c64i>(test.key);
        ASSERT_NE(component, nullptr) << test.key;
        EXPECT_STREQ(component->name, test.key);
    }
}

TEST(StressSettings, Defaults) {
    const stress_settings settings = default_stress_settings();
    EXPECT_EQ(settings.memory, physical_memory() / 32 * 31);
    EXPECT_EQ(settings.threads, logical_cores());
    EXPECT_EQ(settings.seconds, 120u);
    EXPECT_TRUE(settings.stop_on_error);
    EXPECT_TRUE(settings.test_BKT && settings.test_FFT && settings.test_HNT && settings.test_VST &&
                settings.test_spare);
}

TEST(StressSettings, AllTestsSwitchTogether) {
    stress_settings settings = default_stress_settings();
    clear_stress_tests(settings);
    EXPECT_FALSE(settings.test_BKT || settings.test_FFT || settings.test_HNT || settings.test_VST ||
                 settings.test_spare);
    EXPECT_FALSE(any_stress_test_selected(settings));
    EXPECT_TRUE(settings.stop_on_error);
    select_all_stress_tests(settings);
    EXPECT_TRUE(settings.test_BKT && settings.test_FFT && settings.test_HNT && settings.test_VST &&
                settings.test_spare);
    for (const StressTest& test : stress_tests) {
        clear_stress_tests(settings);
        settings.*test.selected = true;
        EXPECT_TRUE(any_stress_test_selected(settings)) << test.key;
    }
}

}  // namespace
}  // namespace znp
