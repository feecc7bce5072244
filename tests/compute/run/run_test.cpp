// The frame of a run, around computations made for the tests.
#include "compute/run/run.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

#include "compute/constants/test_constant.hpp"
#include "compute/run/run_report.hpp"
#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/guarded_alloc.hpp"
#include "foundation/memory.hpp"
#include "foundation/repeat_once.hpp"
#include "foundation/threads.hpp"
#include "foundation/time.hpp"
#include "shell/console.hpp"
#include "temporary_folder.hpp"
#include "text_match.hpp"

// A reservation that no machine can serve is part of these tests: the allocators of the sanitizers are to
// answer it with null, as the system's does.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
extern "C" const char* __tsan_default_options() {
    return "allocator_may_return_null=1";
}

namespace znp {
namespace {

using namespace testing::sent;
using testing::console_output;
using testing::date_pattern;
using testing::dying;
using testing::matches;
using testing::SettingsAccess;
using testing::TestConstant;
using testing::TestSettings;

const std::string P = "\033[01;35m";
const std::string g = "\033[22;32m";

// A text as a regular expression that matches just it.
std::string literal(const std::string& text) {
    std::string pattern;
    for (const char c : text) {
        if (std::strchr("\\^$.|?*+()[]{}", c) != nullptr) pattern += '\\';
        pattern += c;
    }
    return pattern;
}

const std::string seconds_pattern = "[0-9]+\\.[0-9]{3} seconds  \\( [0-9]+\\.[0-9]{3} hours \\)";
const std::string percent_pattern = "[ 0-9]{2}[0-9]\\.[0-9]{2}";

std::string ten(char first) {
    std::string digits;
    for (int i = 0; i < 10; i++) digits += static_cast<char>('0' + (first - '0' + i) % 10);
    return digits;
}

TEST(Run, PrintsItsStagesInOrder) {
    TestSettings test;
    test.settings.set_threads(2);
    test.settings.set_hex(0);
    test.constant->computation = [](s32_t, RunTimeParameters& run) {
        Console::print("(the formula)\n");
        double sink = 0;
        while (cpu_seconds() < 0.002) sink += 1;
        EXPECT_GT(sink + 1, 0);
        run.last_digits = "0123456789";
        run.last_digits_index = 0;
        run.stopwatch.stop();
    };
    const std::string output = console_output([&] { run(test.settings); });
    const std::string tables = Console::format_bytes(test.settings.memTW());
    const std::string head = "\nConstant:   " + P + "Constant of the Tests" + W + "\n" + "Algorithm:  " + Y +
                             "long 0" + W + "\n\n" + "Decimal Digits:       " + G + "1,000" + W + "\n" +
                             "Hexadecimal Digits:   " + G + "Disabled" + W + "\n\n" + "Threads:    " + T +
                             "2" + W + "\n" + "Mode:       " + T + "Ram Only" + W + "\n";
    const std::string start = "Start Time: " + Y;
    const std::string reserved = W + "\nReserving Working Memory...         " + G + "1.06 MiB\n" + W +
                                 "Constructing Twiddle Tables...      " + G + tables + "\n" + W +
                                 "Allocating I/O Buffers...           " + g + "0 bytes\n" + W +
                                 "\nBegin Computation:\n\n(the formula)\n" + "Start Time: " + Y;
    const std::string times = W + "\n\n" + G + "Total Computation Time:             " + G;
    const std::string total = W + "\n" + G + "Total Time (with output + verify):  " + G;
    const std::string processor = W + "\n\nCPU Utilization:        " + Y;
    const std::string digits = "\nLast Digits:  Constant of the Tests\n0123456789\n";
    const std::string pattern = literal(head + start) + date_pattern + literal(reserved) + date_pattern +
                                literal(W + "\n" + "End Time:   " + Y) + date_pattern + literal(times) +
                                seconds_pattern + literal(total) + seconds_pattern + literal(processor) +
                                percent_pattern + literal(W + " %\nMulti-core Efficiency:  " + Y) +
                                percent_pattern + literal(W + " %\n" + digits);
    EXPECT_TRUE(matches(output, pattern)) << output;
}

TEST(Run, LogsItsEventsInOrder) {
    TestSettings test;
    test.constant->computation = [](s32_t, RunTimeParameters& run) {
        run.events.add("(the formula)");
        run.stopwatch.stop();
    };
    std::string log;
    console_output([&] { log = run_in_block(test.settings, test.settings.ML()).events.text(); });
    const std::string before = date_pattern + "\t[0-9]+\\.[0-9]{3}\t";
    EXPECT_TRUE(matches(log, before + "Reserving Working Memory\r\n" + before +
                                 "Constructing Twiddle Tables\r\n" + before + "Allocating I/O Buffers\r\n" +
                                 before + "Begin Computation\r\n" + before + "\\(the formula\\)\r\n" +
                                 before + "End Computation\r\n"))
        << log;
}

TEST(Run, HandsTheSettingsToTheFormula) {
    TestSettings test;
    ASSERT_EQ(test.settings.set_algorithm(1), nullptr);
    test.settings.set_threads(3);
    const testing::TemporaryFolder folder;
    ASSERT_EQ(test.settings.set_path(folder.wide_path()), nullptr);
    test.constant->computation = [&](s32_t algorithm, RunTimeParameters& run) {
        EXPECT_EQ(algorithm, 1);
        EXPECT_EQ(run.settings.short_name, "Test");
        EXPECT_EQ(run.settings.name, "Constant of the Tests");
        EXPECT_EQ(run.settings.algorithm_short, "short 1");
        EXPECT_EQ(run.settings.algorithm_name, "long 1");
        EXPECT_EQ(run.settings.param, test.settings.param());
        EXPECT_EQ(run.settings.p, test.settings.p());
        EXPECT_EQ(run.settings.dec, 1000u);
        EXPECT_EQ(run.settings.hex, test.settings.hex());
        EXPECT_EQ(run.settings.path, folder.wide_path());
        EXPECT_EQ(run.settings.tds, 3u);
        EXPECT_EQ(run.settings.mode, ComputeMode::ram_only);
        EXPECT_TRUE(run.stopwatch.running());
        EXPECT_EQ(run.snapshots.size(), 1u);
        EXPECT_EQ(run.tables.limit_bits, (test.settings.p() + 100) * 128);
        EXPECT_NE(run.tables.fft, nullptr);
        for (const Time now = Time::now(); seconds_between(now, Time::now()) <= 0;) {
        }
        run.stopwatch.stop();
    };
    console_output([&] {
        const RunTimeParameters state = run_in_block(test.settings, test.settings.ML());
        EXPECT_EQ(state.snapshots.size(), 2u);
        EXPECT_GT(state.stopwatch.wall_seconds(), 0);
        EXPECT_FALSE(state.stopwatch.running());
        EXPECT_FALSE(state.end_time.empty());
    });
}

TEST(Run, ReservesTheEstimateAndItsMargin) {
    TestSettings test;
    upL_t block = 0;
    test.constant->computation = [&](s32_t, RunTimeParameters& run) {
        block = static_cast<upL_t>(run.heap.end - run.heap.base);
        EXPECT_EQ(run.heap.parent, nullptr);
        EXPECT_EQ(run.heap.active, 0u);
        run.stopwatch.stop();
    };
    console_output([&] { run(test.settings); });
    EXPECT_EQ(block, TestConstant::default_memory + 1048608);
    console_output([&] { run_in_block(test.settings, test.settings.ML()); });
    EXPECT_EQ(block, TestConstant::default_memory);
}

TEST(Run, KnowsThePeakOfItsMemory) {
    TestSettings test;
    test.constant->computation = [](s32_t, RunTimeParameters& run) {
        const GuardedArray<u64_t> array = make_guarded_array<u64_t>(&run.heap, 1000);
        run.stopwatch.stop();
    };
    console_output([&] {
        const upL_t peak = run_in_block(test.settings, test.settings.ML()).peak_working_bytes;
        EXPECT_GE(peak, 8000u);
        EXPECT_LE(peak, 8000u + 80);
    });
}

// The formula's arrays go first, then tables and block: nothing is reported as lost.
TEST(Run, AnExceptionOfTheFormulaReleasesEverything) {
    TestSettings test;
    test.constant->computation = [](s32_t, RunTimeParameters& run) {
        const GuardedArray<u64_t> array = make_guarded_array<u64_t>(&run.heap, 100);
        throw std::runtime_error("stopped");
    };
    const std::string output = console_output([&] { EXPECT_THROW(run(test.settings), std::runtime_error); });
    EXPECT_NE(output.find("Begin Computation:\n"), std::string::npos);
    EXPECT_EQ(output.find("Memory leak detected"), std::string::npos);
    EXPECT_EQ(output.find("Last Digits"), std::string::npos);
}

TEST(Run, LastDigitsGoOutAsText) {
    TestSettings test;
    for (const upL_t count : {upL_t{0}, upL_t{9}, upL_t{51}, upL_t{100}}) {
        test.constant->computation = [&](s32_t, RunTimeParameters& run) {
            run.last_digits = std::string(count, '7');
            run.stopwatch.stop();
        };
        char text[last_digits_bytes];
        std::memset(text, 'x', sizeof text);
        console_output([&] { run(test.settings, text); });
        EXPECT_EQ(std::string(text), std::string(count, '7'));
    }
}

TEST(Run, TellsHowManyFaultsItRepaired) {
    TestSettings test;
    RecoveredErrors::add();  // of an earlier run
    for (const u64_t faults : {u64_t{0}, u64_t{1}, u64_t{3}}) {
        test.constant->computation = [&](s32_t, RunTimeParameters& run) {
            for (u64_t i = 0; i < faults; i++) RecoveredErrors::add();
            run.stopwatch.stop();
        };
        u64_t told = 99;
        console_output([&] { told = run(test.settings); });
        EXPECT_EQ(told, faults);
    }
}

// ---- What cannot run --------------------------------------------------------------------------------------

// Refused in one fatal error, before the heading and before anything is reserved.
void expect_refusal(const ComputeParameters& settings, const std::string& text) {
    EXPECT_EQ(run_refusal(settings), text);
    EXPECT_EXIT(dying([&] { run(settings); }), ::testing::ExitedWithCode(1),
                "^\n[^\n]*" + text + "[^\n]*\n[^\n]*$");
}

TEST(RunRefusal, NothingKeepsAGoodRecordFromRunning) {
    EXPECT_EQ(run_refusal(TestSettings().settings), "");
}

TEST(RunRefusal, AConstantWithoutItsFormula) {
    TestSettings test;
    test.constant->has_run_B = false;
    expect_refusal(test.settings, "The computation of Test is not available in this version yet.");
}

TEST(RunRefusal, SwapMode) {
    TestSettings test;
    ASSERT_EQ(test.settings.set_dec(1'000'000), nullptr);
    ASSERT_EQ(test.settings.set_mode(1), nullptr);
    expect_refusal(test.settings, "Swap Mode is not available in this version yet.");
}

TEST(RunRefusal, CompressedOutput) {
    TestSettings test;
    ASSERT_EQ(test.settings.set_dec(2'000'000), nullptr);
    ASSERT_EQ(test.settings.set_digits_per_file(1'000'000), nullptr);
    expect_refusal(test.settings, "Compressed output is not available in this version yet.");
}

TEST(RunRefusal, SettingsWithoutAnEstimate) {
    TestSettings test;
    test.constant->memory_B = [](s32_t, upL_t, u64_t, u64_t, upL_t&) -> bool {
        throw zn_exception(error_code::unspecified, nullptr, "No multiplier reaches this size.");
    };
    SettingsAccess::update(test.settings);
    expect_refusal(test.settings, "No multiplier reaches this size.");
}

TEST(Run, WarnsOfTooLittleMemoryAndFailsAtTheReservation) {
    TestSettings test;
    test.constant->memory_B = [](s32_t, upL_t, u64_t, u64_t, upL_t& bytes) {
        bytes = upL_t{1} << 62;
        return true;
    };
    SettingsAccess::update(test.settings);
    if (available_memory() == 0) GTEST_SKIP() << "the system does not say what is available";
    EXPECT_EXIT(dying([&] { run(test.settings); }, "\n\n"), ::testing::ExitedWithCode(1),
                "insufficient available memory(.|\n)*Press ENTER(.|\n)*Constant:(.|\n)*"
                "Reserving Working Memory(.|\n)*Insufficient Memory or address space\\.");
}

// ---- The report -------------------------------------------------------------------------------------------

TEST(PrintStage, NameAndTime) {
    Time start = Time::now();
    start.seconds -= 3600;
    const std::string text = console_output([&] { print_stage("Pi", start); });
    EXPECT_EQ(text.rfind("\n" + G + "Pi" + W + "  :  " + Y + "3600.", 0), 0u) << text;
    EXPECT_TRUE(text.ends_with(" seconds  ( 1.000 hours )" + W + "\n")) << text;
}

std::string last_digits_of(u64_t count, u64_t index) {
    RunSettings settings;
    settings.name.push_back('N');
    RunTimeParameters run(settings);
    run.last_digits_index = index;
    for (u64_t i = 0; i < count; i++) run.last_digits += static_cast<char>('0' + i % 10);
    return console_output([&] { print_last_digits(run); });
}

const std::string line_of_50 =
    ten('0') + " " + ten('0') + " " + ten('0') + " " + ten('0') + " " + ten('0') + " :  " + G;

TEST(LastDigits, ShowAll100) {
    EXPECT_EQ(last_digits_of(100, 0),
              "Last Digits:  N\n" + line_of_50 + "50" + W + "\n" + line_of_50 + "100" + W + "\n");
}

TEST(LastDigits, StartAt50With101) {
    EXPECT_EQ(last_digits_of(51, 50), "Last Digits:  N\n" + line_of_50 + "100" + W + "\n0\n");
}

TEST(LastDigits, StartAt50With150AndAt100With151) {
    EXPECT_EQ(last_digits_of(100, 50),
              "Last Digits:  N\n" + line_of_50 + "100" + W + "\n" + line_of_50 + "150" + W + "\n");
    EXPECT_EQ(last_digits_of(51, 100), "Last Digits:  N\n" + line_of_50 + "150" + W + "\n0\n");
}

TEST(LastDigits, IndexHasCommasAndAPartialLineItsGroups) {
    EXPECT_EQ(last_digits_of(75, 1'000'000), "Last Digits:  N\n" + line_of_50 + "1,000,050" + W + "\n" +
                                                 ten('0') + " " + ten('0') + " 01234\n");
}

TEST(RunTimes, AResumedRunHasNoTotalTime) {
    const RunTimeParameters run{RunSettings()};
    const std::string output = console_output([&] { print_run_times(run, 5, true); });
    EXPECT_NE(output.find("Total Time (with output + verify):  N/A\n"), std::string::npos) << output;
}

TEST(RunTimes, NoProcessorTimeIsNotAvailableTwice) {
    const RunTimeParameters run{RunSettings()};  // its stopwatch never ran
    const std::string output = console_output([&] { print_run_times(run, 5, false); });
    EXPECT_NE(output.find("CPU Utilization:        " + Y + "Not Available\n" + W +
                          "Multi-core Efficiency:  " + Y + "Not Available\n" + W),
              std::string::npos)
        << output;
    EXPECT_NE(output.find("5.000 seconds  ( 0.001 hours )"), std::string::npos);
}

TEST(RunTimes, EfficiencyIsTheUtilizationOfOneProcessor) {
    RunTimeParameters run{RunSettings()};
    run.stopwatch.start();
    const double end = cpu_seconds() + 0.02;
    while (cpu_seconds() < end) {
    }
    run.stopwatch.stop();
    const std::string output = console_output([&] { print_run_times(run, 5, false); });
    const double used = 100 * run.stopwatch.cpu_seconds() / run.stopwatch.wall_seconds();
    const auto shown = [](double percentage) {
        const std::string text = Console::format_seconds(percentage, 2);
        return std::string(text.size() < 6 ? 6 - text.size() : 0, ' ') + text;
    };
    EXPECT_NE(output.find("CPU Utilization:        "), std::string::npos) << output;
    EXPECT_NE(output.find(shown(used)), std::string::npos) << output;
    EXPECT_NE(output.find(shown(used / static_cast<double>(logical_cores()))), std::string::npos) << output;
}

}  // namespace
}  // namespace znp
