// The run of the benchmark and its verdict. Its menus are in benchmark_menu_test.cpp.
#include "shell/benchmark.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>

#include "compute/run/output_test_support.hpp"
#include "expected_text.hpp"
#include "foundation/repeat_once.hpp"
#include "working_folder.hpp"

namespace znp {
namespace {

using namespace testing::sent;

const std::string failed =
    "\n" + R + "Benchmark Failed. The digits are not correct. Please check your hardware.\n" + W;
const std::string recovered = "\n" + R +
                              "The digits are correct, but errors were detected and fixed via ECC.\n"
                              "As a computation, it is successful. But as a benchmark, it fails.\n" +
                              W;
const std::string successful = "\n" + G + "Benchmark Successful. The digits appear to be OK.\n" + W;

const BenchmarkSize& size_1M() {
    return *find_benchmark_size("1M");
}

// ---- The verdict ------------------------------------------------------------------------------------------

BenchmarkVerdict judge(const char* label, const std::string& digits, u64_t recovered_errors = 0) {
    return judge_benchmark(*find_benchmark_size(label), digits, recovered_errors);
}

TEST(BenchmarkVerdict, RightDigitsAreSuccessful) {
    EXPECT_EQ(judge("1M", "1637429204"), BenchmarkVerdict::successful);
    EXPECT_EQ(judge("1M", std::string(66, '3') + "1637429204"), BenchmarkVerdict::successful);
}

TEST(BenchmarkVerdict, Row100mMatchesItsDigitsWithTheirLeadingZero) {
    EXPECT_EQ(judge("100m",
                    "9999999999"
                    "0187751592"),
              BenchmarkVerdict::successful);
    EXPECT_EQ(judge("100m",
                    "9999999999"
                    "1187751592"),
              BenchmarkVerdict::failed);
    EXPECT_EQ(judge("100m", "187751592"), BenchmarkVerdict::failed);  // fewer than ten characters are 0
}

TEST(BenchmarkVerdict, EveryDamagedDigitFails) {
    for (upL_t i = 0; i < 10; i++) {
        for (const char damaged : {'0', '7', 'x', '\0'}) {
            std::string digits =
                "1234567890"
                "1637429204";
            if (digits[10 + i] == damaged) continue;
            digits[10 + i] = damaged;
            EXPECT_EQ(judge("1M", digits), BenchmarkVerdict::failed) << digits;
            EXPECT_EQ(judge("1M", digits, 1), BenchmarkVerdict::failed) << digits;
        }
    }
}

TEST(BenchmarkVerdict, DigitsInFrontOfTheLastTenAreNotJudged) {
    EXPECT_EQ(judge("1M",
                    "x"
                    "1637429204"),
              BenchmarkVerdict::successful);
}

TEST(BenchmarkVerdict, TooFewDigitsFail) {
    EXPECT_EQ(judge("1M", ""), BenchmarkVerdict::failed);
    EXPECT_EQ(judge("1M", "637429204"), BenchmarkVerdict::failed);
    EXPECT_EQ(judge("100m", "187751592"), BenchmarkVerdict::failed);
}

TEST(BenchmarkVerdict, RightDigitsBehindRepairedErrorsAreNoSuccess) {
    EXPECT_EQ(judge("1M", "1637429204", 1), BenchmarkVerdict::recovered);
    EXPECT_EQ(judge("1M", "1637429204", 1000), BenchmarkVerdict::recovered);
}

// ---- The run ----------------------------------------------------------------------------------------------

// A conversion whose last digit of 1M digits is one too high, which verification takes for rounding.
int damaging_conversion(const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction, upL_t L,
                        StatusLine* status) {
    const int result = convert(bp, radix, out, n, fraction, L, status);
    const u64_t last = size_1M().digits - 1;
    cdi unit = 1;
    for (u64_t i = last % CVN::decimal_digits; i + 1 < CVN::decimal_digits; i++) unit *= 10;
    out[n - 1 - last / CVN::decimal_digits] += unit;
    return result;
}

// Notices a fault at its next call.
bool falters = false;
int faltering_conversion(const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction,
                         upL_t L, StatusLine* status) {
    return std::exchange(falters, false) ? 1 : convert(bp, radix, out, n, fraction, L, status);
}

class BenchmarkRun : public ::testing::Test {
  protected:
    std::string run(std::vector<std::string> words, std::string_view input = {}) {
        words.insert(words.begin(), {"zelmar", "bench"});
        CommandLine line(words);
        line.advance();
        return testing::console_output([&] { exit_code = benchmark_command(line); }, input);
    }
    std::string last_digits_of_file() const {
        std::ifstream file("Pi - Dec - Chudnovsky.txt", std::ios::binary);
        const std::string digits{std::istreambuf_iterator<char>(file), {}};
        return digits.size() < 10 ? "" : digits.substr(digits.size() - 10);
    }

    const testing::WorkingFolder folder;
    int exit_code = -1;
};

TEST_F(BenchmarkRun, RightDigits) {
    const std::string output = run({"1M", "-T:1"});
    EXPECT_TRUE(output.ends_with(successful)) << output;
    EXPECT_EQ(exit_code, 0);
    EXPECT_NE(output.find("Hexadecimal Digits:   " + G + "Disabled" + W + "\n"), std::string::npos);
    EXPECT_EQ(last_digits_of_file(), "1637429204");
}

TEST_F(BenchmarkRun, ADamagedDigitFailsTheBenchmark) {
    const testing::UseCalls calls(damaging_conversion, power_check);
    const std::string output = run({"1M", "-T:1"});
    EXPECT_TRUE(output.ends_with(failed)) << output;
    EXPECT_EQ(exit_code, 0);
    EXPECT_EQ(last_digits_of_file(), "1637429205");  // it came all the way
}

TEST_F(BenchmarkRun, ARepairedErrorFailsTheBenchmarkAlthoughTheDigitsAreRight) {
    const testing::UseCalls calls(faltering_conversion, power_check);
    falters = true;
    const std::string output = run({"1M", "-T:1"});
    EXPECT_NE(output.find("Radix Conversion Failed - Reattempting..."), std::string::npos);
    EXPECT_TRUE(output.ends_with(recovered)) << output;
    EXPECT_EQ(exit_code, 0);
    EXPECT_EQ(last_digits_of_file(), "1637429204");
}

TEST_F(BenchmarkRun, ErrorsOfAnEarlierRunDoNotCount) {
    RecoveredErrors::add();
    EXPECT_TRUE(run({"1M", "-T:2"}).ends_with(successful));
}

TEST_F(BenchmarkRun, TheLastOfTwoLabelsWins) {
    const std::string output = run({"128G", "1M", "-T:1"});
    EXPECT_NE(output.find("Decimal Digits:       " + G + "1,048,576" + W + "\n"), std::string::npos)
        << output;
    EXPECT_TRUE(output.ends_with(successful));
    EXPECT_NE(run({"1M", "2M", "-T:2"}).find("Decimal Digits:       " + G + "2,097,152" + W + "\n"),
              std::string::npos);
}

TEST_F(BenchmarkRun, ThreadsAreClippedAndTheRunAndItsComparisonGoOn) {
    const std::string output = run({"1M", "-T:999"});
    EXPECT_TRUE(output.starts_with(clip_line("256"))) << output;
    EXPECT_NE(output.find("Threads:    " + T + "256" + W + "\n"), std::string::npos);
    EXPECT_TRUE(output.ends_with(successful));
    EXPECT_TRUE(run({"-T", "1M"}).starts_with(clip_line("1")));
}

TEST_F(BenchmarkRun, UnknownWordsAreSkipped) {
    const std::string output = run({"-hex:100", "1M", "-T:1", "1m"});
    EXPECT_TRUE(output.starts_with(skip_line("-hex:100") + skip_line("1m"))) << output;
    EXPECT_TRUE(output.ends_with(successful));
}

}  // namespace
}  // namespace znp
