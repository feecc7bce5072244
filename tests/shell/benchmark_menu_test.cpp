// The interactive benchmark: its menus as text, its answers, and the program in a terminal.
#include "shell/benchmark_menu.hpp"

#include <gtest/gtest.h>

#include "expected_text.hpp"
#include "foundation/memory.hpp"
#include "foundation/threads.hpp"
#include "shell/console.hpp"
#include "temporary_folder.hpp"
#include "terminal.hpp"

namespace znp {
namespace {

using namespace testing::sent;
using testing::Terminal;
using testing::without_colors;

const std::string y = "\033[22;33m";
const std::string prompt = W + "option: " + G;

constexpr u64_t all_memory = ~u64_t{0};

u64_t memory_of(u64_t digits, u64_t threads) {
    ComputeParameters settings;
    settings.choose_constant(constant_id::pi, 0);
    settings.set_dec(digits);
    settings.set_threads(threads);
    return settings.Osize() + settings.ML();
}
std::string memory(u64_t digits, u64_t threads) {
    return Console::format_bytes(memory_of(digits, threads));
}

const std::string title = P + "Benchmark Pi:\n\n" + W;
const std::string types = W + "Select a Benchmark Type:\n" + W + "  0     " + G + "Single-Threaded\n" + W +
                          W + "  1     " + G + "Multi-Threaded\n" + W + "\n";
const std::string header = "Option      Decimal Digits          Approx. Memory Needed\n";

struct Row {
    const char* text;
    u64_t digits;
};

const Row decimal_rows[] = {
    {"  1             25,000,000                ", 25'000'000},
    {"  2             50,000,000                ", 50'000'000},
    {"  3            100,000,000                ", 100'000'000},
    {"  4            250,000,000                ", 250'000'000},
    {"  5            500,000,000                ", 500'000'000},
    {"  6          1,000,000,000                ", 1'000'000'000},
    {"  7          2,500,000,000                ", 2'500'000'000},
    {"  8          5,000,000,000                ", 5'000'000'000},
    {"  9         10,000,000,000                ", 10'000'000'000},
    {" 10         25,000,000,000                ", 25'000'000'000},
    {" 11         50,000,000,000                ", 50'000'000'000},
    {" 12        100,000,000,000                ", 100'000'000'000},
    {" 13        250,000,000,000                ", 250'000'000'000},
    {" 14        500,000,000,000                ", 500'000'000'000},
    {" 15      1,000,000,000,000                ", 1'000'000'000'000},
    {" 16      2,500,000,000,000                ", 2'500'000'000'000},
};
const Row binary_rows[] = {
    {" 20   1M   -         1,048,576    ", u64_t{1} << 20},
    {" 21   2M   -         2,097,152    ", u64_t{1} << 21},
    {" 22   4M   -         4,194,304    ", u64_t{1} << 22},
    {" 23   8M   -         8,388,608    ", u64_t{1} << 23},
    {" 24  16M   -        16,777,216    ", u64_t{1} << 24},
    {" 25  32M   -        33,554,432    ", u64_t{1} << 25},
    {" 26  64M   -        67,108,864    ", u64_t{1} << 26},
    {" 27 128M   -       134,217,728    ", u64_t{1} << 27},
    {" 28 256M   -       268,435,456    ", u64_t{1} << 28},
    {" 29 512M   -       536,870,912    ", u64_t{1} << 29},
    {" 30   1G   -     1,073,741,824    ", u64_t{1} << 30},
    {" 31   2G   -     2,147,483,648    ", u64_t{1} << 31},
    {" 32   4G   -     4,294,967,296    ", u64_t{1} << 32},
    {" 33   8G   -     8,589,934,592    ", u64_t{1} << 33},
    {" 34  16G   -    17,179,869,184    ", u64_t{1} << 34},
    {" 35  32G   -    34,359,738,368    ", u64_t{1} << 35},
    {" 36  64G   -    68,719,476,736    ", u64_t{1} << 36},
    {" 37 128G   -   137,438,953,472    ", u64_t{1} << 37},
};

// A menu, on so many threads, whose first `bright` sizes fit in the machine.
template <upL_t count>
std::string rows_text(const Row (&rows)[count], u64_t threads, upL_t bright = count) {
    std::string text = header;
    for (upL_t i = 0; i < count; i++) {
        const bool fits = i < bright;
        // The memory has eight columns, of which the blanks in front belong to its colour.
        std::string row = rows[i].text, blanks;
        if (row.find(" - ") != std::string::npos) {
            blanks = "    ";
            row.resize(row.size() - blanks.size());
        }
        text += (fits ? G : g) + row + (fits ? Y : y) + blanks + memory(rows[i].digits, threads) + "\n" + W;
    }
    return text;
}
std::string decimal_menu(u64_t threads, upL_t bright = 16) {
    return rows_text(decimal_rows, threads, bright) + "\n" + W + "  0     " + T +
           "I prefer SuperPi sizes... (1M, 2M, 4M...)\n" + W;
}
std::string binary_menu(u64_t threads, upL_t bright = 18) {
    return rows_text(binary_rows, threads, bright);
}
std::string available(u64_t physical_memory) {
    return "Available Memory:   " + Y + Console::format_bytes(physical_memory) + "\n\n" + W;
}

class BenchmarkMenu : public ::testing::Test {
  protected:
    std::string choose(std::string_view input, u64_t physical_memory = all_memory) {
        return testing::console_output([&] { choose_benchmark(parameters, physical_memory); }, input);
    }
    // Both questions, and the menu for the threads that the first answer leaves.
    void expect_whole_dialogue(std::string_view input, u64_t threads) {
        EXPECT_EQ(choose(input), title + types + prompt + W + "\n" + available(all_memory) +
                                     decimal_menu(threads) + prompt + W);
        EXPECT_EQ(parameters.threads, threads);
    }
    std::string_view chosen() const { return parameters.size == nullptr ? "" : parameters.size->key; }

    BenchmarkParameters parameters;
};

TEST_F(BenchmarkMenu, AllOfItOnOneThread) {
    parameters.threads = 2;
    expect_whole_dialogue("0\n3\n", 1);
    EXPECT_EQ(chosen(), "100m");
}

TEST_F(BenchmarkMenu, AllOfItOnAllThreads) {
    parameters.threads = 24;
    expect_whole_dialogue("1\n1\n", 24);
    EXPECT_EQ(chosen(), "25m");
}

TEST_F(BenchmarkMenu, TheMemoryIsThatOfTheThreads) {
    EXPECT_NE(decimal_menu(1), decimal_menu(24));
    EXPECT_NE(binary_menu(1), binary_menu(24));
}

// A machine with a single processor.
TEST_F(BenchmarkMenu, OnOneThreadTheTypeIsNotAsked) {
    parameters.threads = 1;
    EXPECT_EQ(choose("16\n"), title + available(all_memory) + decimal_menu(1) + prompt + W);
    EXPECT_EQ(chosen(), "2.5t");
    EXPECT_EQ(parameters.threads, 1u);
}

TEST_F(BenchmarkMenu, TheMenuOfPowersOfTwo) {
    parameters.threads = 1;
    EXPECT_EQ(choose("0\n20\n"), title + available(all_memory) + decimal_menu(1) + prompt + W + "\n" +
                                     binary_menu(1) + prompt + W);
    EXPECT_EQ(chosen(), "1M");
}

TEST_F(BenchmarkMenu, EveryOptionIsItsSize) {
    const char* const decimal[] = {"25m", "50m", "100m", "250m", "500m", "1b",   "2.5b", "5b",
                                   "10b", "25b", "50b",  "100b", "250b", "500b", "1t",   "2.5t"};
    const char* const binary[] = {"1M",   "2M", "4M", "8M", "16M", "32M", "64M", "128M", "256M",
                                  "512M", "1G", "2G", "4G", "8G",  "16G", "32G", "64G",  "128G"};
    parameters.threads = 1;
    for (upL_t i = 0; i < std::size(decimal); i++) {
        choose(std::to_string(i + 1) + "\n");
        EXPECT_EQ(chosen(), decimal[i]);
    }
    for (upL_t i = 0; i < std::size(binary); i++) {
        choose("0\n" + std::to_string(i + 20) + "\n");
        EXPECT_EQ(chosen(), binary[i]);
        EXPECT_EQ(binary_rows[i].digits, parameters.size->digits);
    }
}

TEST_F(BenchmarkMenu, ASizeBeyondTheMemoryIsDarkAndCanBeChosen) {
    parameters.threads = 1;
    const u64_t physical = memory_of(100'000'000, 1);  // not below itself
    EXPECT_EQ(choose("3\n", physical), title + available(physical) + decimal_menu(1, 2) + prompt + W);
    EXPECT_EQ(chosen(), "100m");
    EXPECT_EQ(choose("3\n", physical + 1), title + available(physical + 1) + decimal_menu(1, 3) + prompt + W);
    EXPECT_EQ(choose("0\n37\n", 1),
              title + available(1) + decimal_menu(1, 0) + prompt + W + "\n" + binary_menu(1, 0) + prompt + W);
    EXPECT_EQ(chosen(), "128G");
}

TEST_F(BenchmarkMenu, AnUnknownMemoryIsNotShown) {
    parameters.threads = 1;
    EXPECT_EQ(choose("1\n", 0), title + decimal_menu(1, 0) + prompt + W);
}

TEST_F(BenchmarkMenu, NumbersOutOfRangeAreAskedForAgain) {
    parameters.threads = 2;
    const std::string screen = without_colors(choose("2\n-1\n0\n17\n-1\n0\n19\n38\n0\n21\n"));
    EXPECT_NE(screen.find("option: option: option: \nAvailable"), std::string::npos) << screen;
    EXPECT_NE(screen.find("option: option: option: \nOption"), std::string::npos);
    EXPECT_TRUE(screen.ends_with("option: option: option: option: "));
    EXPECT_EQ(chosen(), "2M");
}

// What is no number is 0.
TEST_F(BenchmarkMenu, AnEmptyLineIsTheFirstChoice) {
    parameters.threads = 2;
    choose("\n\n\n25\n");
    EXPECT_EQ(parameters.threads, 1u);
    EXPECT_EQ(chosen(), "32M");
}

TEST_F(BenchmarkMenu, ThreadsAreClippedWithTheirWarning) {
    parameters.threads = 999;
    EXPECT_EQ(choose("1\n1\n"), title + types + prompt + W + "\n" + clip_line("256") + available(all_memory) +
                                    decimal_menu(256) + prompt + W);
    EXPECT_EQ(parameters.threads, 999u);  // the run clips them, too
    parameters.threads = 0;
    EXPECT_EQ(choose("1\n"), title + clip_line("1") + available(all_memory) + decimal_menu(1) + prompt + W);
}

using BenchmarkMenuDeathTest = BenchmarkMenu;

TEST_F(BenchmarkMenuDeathTest, TheEndOfTheInputEndsTheProgramAtEveryPrompt) {
    parameters.threads = 2;
    for (const char* input : {"", "2\n", "1\n", "1\n17\n", "1\n0\n", "1\n0\n1\n"}) {
        EXPECT_EXIT(testing::dying([&] { benchmark_menu(parameters); }, input), ::testing::ExitedWithCode(1),
                    "The input has ended before an answer was given\\.")
            << input;
    }
}

// ---- In a terminal ----------------------------------------------------------------------------------------

const std::string main_menu_prompt = "Enter your choice:\n" + prompt;
// What a line that was typed leaves behind it.
std::string typed(const std::string& line) {
    return line + "\n" + W;
}

class BenchmarkTerminal : public ::testing::Test {
  protected:
    const std::string shown = available(physical_memory());
    upL_t fitting(const Row* rows, upL_t count, u64_t threads) const {
        upL_t n = 0;
        while (n < count && memory_of(rows[n].digits, threads) < physical_memory()) n++;
        return n;
    }
    std::string decimal(u64_t threads) const {
        return decimal_menu(threads, fitting(decimal_rows, std::size(decimal_rows), threads));
    }
    std::string binary(u64_t threads) const {
        return binary_menu(threads, fitting(binary_rows, std::size(binary_rows), threads));
    }
    // Answers, compares what comes up to the next prompt.
    void answer(Terminal& terminal, const std::string& line, const std::string& expected) {
        terminal.type(line);
        const std::string text = typed(line) + expected;
        EXPECT_EQ(terminal.read(text), text);
    }

    const testing::TemporaryFolder folder;
};

TEST_F(BenchmarkTerminal, FromTheMainMenuToTheVerdict) {
    Terminal terminal({}, folder.path());
    ASSERT_TRUE(terminal.read_until(main_menu_prompt).ends_with(main_menu_prompt));
    u64_t threads = logical_cores();
    if (threads > 1) {
        answer(terminal, "0", title + types + prompt);
        answer(terminal, "5", prompt);
        threads = 1;
        answer(terminal, "0", "\n" + shown + decimal(1) + prompt);
    } else {
        answer(terminal, "0", title + shown + decimal(1) + prompt);
    }
    answer(terminal, "99", prompt);
    answer(terminal, "0", "\n" + binary(1) + prompt);
    answer(terminal, "x", prompt);
    terminal.type("20");
    const std::string run = terminal.read_rest();
    EXPECT_TRUE(run.starts_with(typed("20") + "\nConstant:   " + G + "Pi" + W + "\n")) << run;
    EXPECT_NE(run.find("Threads:    " + T + "1" + W + "\n"), std::string::npos);
    EXPECT_TRUE(run.ends_with("4907353317 0994591637 429204\n\n" + G +
                              "Benchmark Successful. The digits appear to be OK.\n" + W + reset + "\n"))
        << run;
    EXPECT_EQ(terminal.exit_code(), 0);
}

TEST_F(BenchmarkTerminal, ALabelOnTheCommandLineAsksNothing) {
    Terminal terminal({"bench", "1M", "-T:1"}, folder.path());
    const std::string output = terminal.read_rest();
    EXPECT_EQ(output.find("option:"), std::string::npos);
    EXPECT_EQ(output.find("ENTER"), std::string::npos);
    EXPECT_NE(output.find("Benchmark Successful."), std::string::npos) << output;
    EXPECT_EQ(terminal.exit_code(), 0);
}

TEST_F(BenchmarkTerminal, TheEndOfTheInputIsOneLineAndExitCode1) {
    Terminal terminal({"bench"}, folder.path());
    ASSERT_TRUE(terminal.read_until(prompt).ends_with(prompt));
    terminal.type_end_of_input();
    EXPECT_EQ(terminal.read_rest(), end_of_input);
    EXPECT_EQ(terminal.exit_code(), 1);
}

}  // namespace
}  // namespace znp
