// The program from end to end: what it prints, byte for byte, and its exit code.
#include "program.hpp"

#include <gtest/gtest.h>

#include "compute/run/run.hpp"
#include "expected_text.hpp"
#include "shell/build_targets.hpp"
#include "temporary_folder.hpp"

namespace znp {
namespace {

using namespace testing::sent;
using testing::ProgramResult;
using testing::TemporaryFolder;

const std::string& start = start_of_program;
const std::string end = reset + "\n";

const std::string disclaimer =
    "Disclaimer:\n"
    "This software is provided \"as is\", without any guarantee made to its\n"
    "suitability or fitness for any particular use. It may contain bugs so use\n"
    "of this program is at your own risk. I take no responsibility for any\n"
    "damage that may unintentionally be caused through its use.\n";

const std::string about = "\n" + G + "Zelmar - Mathematical Constants to Many Digits\n" + "\n" + W +
                          "Version: " + g + "0.6.7 Build 9457" + W + "\n" +
                          "Written and maintained by The Zelmar developers\n"
                          "\n" +
                          T +
                          "Zelmar computes mathematical constants to millions, billions, and\n"
                          "trillions of digits, in memory or on disk.\n"
                          "\n"
                          "It began as a program for the Euler-Mascheroni Constant alone. Once its\n"
                          "arithmetic was fast enough for that, other constants were a small step:\n"
                          "Pi, e, logarithms, Zeta(3), Catalan's Constant, and several more.\n"
                          "\n"
                          "For all overclockers:\n"
                          "Zelmar is also a multi-threaded Pi benchmark, whose digits are checked\n"
                          "against known ones, so that an unstable machine cannot score.\n"
                          "\n" +
                          disclaimer + W;

const std::string warning = "\n" + Y + "A Word of Warning...\n" + "\n" + T +
                            "Performing large multi-threaded computations using this program may\n"
                            "subject your computer to extremely high levels of stress for extended\n"
                            "periods of time. To protect your computer, MAKE SURE that your hardware\n"
                            "is stable and fit before performing large computations. I will take\n"
                            "absolutely no responsibility for any damage that may be caused by this\n"
                            "program.\n"
                            "\n" +
                            disclaimer + W;

const std::string menu =
    "Zelmar v" + g + "0.6.7 Build 9457" + W + "  ( The Zelmar developers )\n" +
    "Written and maintained by The Zelmar developers\n"
    "\n" +
    W + "Distribute Freely - Please Report any Bugs\n" + "\n" + W + "Tuning: " + G +
    " Linux - x64 AVX2 ~ Fennic" + W + "\n" + "\n" + T + "  0         Benchmark Pi  (all in ram)\n" + T +
    "  1         Component Stress Tester\n" + T + "  2         Run I/O Performance Analysis\n" + "\n" + Y +
    "  3         Custom Compute a Constant\n"
    "                -   Compute other constants (e, Golden Ratio, etc...)\n"
    "                -   Choose your own settings (use disk for large computations)\n" +
    "\n" + G + "  4         Benchmark Validator\n" + G + "  5         Advanced Options\n" + "\n" + t +
    "  6         About\n" + t + "  7         A Word of Warning...\n" + W + "Enter your choice:\n";
const std::string option_prompt = W + "option: " + G + W;

const std::string advanced_options =
    P + "Advanced Options\n" + "\n" + T + "  0" + W + "         Log(n) Formula Generator\n" + T + "  1" + W +
    "         Hardware Features\n" + T + "  2" + W + "         Compilation Options\n" + Y + "  3" + W +
    "         Test Swap Multiply\n" + "\n";

std::string fatal(const std::string& text) {
    return "\n" + R + text + W + "\n" + testing::sent::pause + reset;
}
// The fatal error of a piece that is not there yet.
std::string not_there(const std::string& what) {
    return fatal(what + " is not available in this version yet.");
}
const std::string expected_more = W + "Uncaught std exception: " + R + "Expected more parameters." + W + "\n";

class Program : public ::testing::Test {
  protected:
    void SetUp() override {
        CPUFeatures features;
        read_features(features);
        if (!supports_this_build(features)) GTEST_SKIP() << "the screens begin with a warning here";
    }

    ProgramResult run(const std::vector<std::string>& arguments, std::string_view input = {}) {
        return testing::run_program(arguments, input, folder_.path());
    }
    void expect(const std::vector<std::string>& arguments, std::string_view input, int exit_code,
                const std::string& output) {
        const ProgramResult result = run(arguments, input);
        EXPECT_FALSE(result.timed_out);
        EXPECT_EQ(result.exit_code, exit_code);
        EXPECT_EQ(result.output, start + output);
        EXPECT_EQ(folder_.is_empty(), files_ == 0);
    }
    void write(const std::string& name) {
        folder_.write(name, "");
        files_++;
    }
    const TemporaryFolder& folder() const { return folder_; }

  private:
    TemporaryFolder folder_;
    int files_ = 0;
};

TEST_F(Program, About) {
    expect({"about"}, "", 0, about + end);
}
TEST_F(Program, Warning) {
    expect({"warning"}, "", 0, warning + end);
}

TEST_F(Program, FurtherWordsOfAFixedScreenAreIgnored) {
    expect({"about", "-x", "bench"}, "", 0, about + end);
    expect({"warning:5", "y"}, "", 0, warning + end);
}

TEST_F(Program, AnUnknownCommandIsSkippedAndGives1) {
    expect({"nonsense"}, "", 1, skip_line("nonsense") + end);
    expect({"nonsense:5", "about"}, "", 1, skip_line("nonsense:5") + end);
    expect({""}, "", 1, skip_line("") + end);
    expect({"About"}, "", 1, skip_line("About") + end);
}

TEST_F(Program, NoArgumentShowsTheMenuAndRunsOneAction) {
    expect({}, "6\n", 0, menu + option_prompt + about + end);
    expect({}, "7\n", 0, menu + option_prompt + warning + end);
    expect({}, "6", 0, menu + option_prompt + about + end);  // a last line without a line feed
}

TEST_F(Program, TheMenuAsksAgainUntilTheNumberIsInRange) {
    expect({}, "8\n-1\n99999999999999999999\n6x\n", 0,
           menu + option_prompt + option_prompt + option_prompt + option_prompt + about + end);
}

TEST_F(Program, NoInputAtAllEndsTheMenuWith1) {
    const ProgramResult result = run({});
    EXPECT_FALSE(result.timed_out);
    EXPECT_EQ(result.exit_code, 1);
    const std::string shown = start + menu + W + "option: " + G;
    ASSERT_EQ(result.output.substr(0, shown.size()), shown);
    // One line that says so, the reset and a line feed.
    const std::string rest = result.output.substr(shown.size());
    EXPECT_NE(rest.find("input"), std::string::npos);
    ASSERT_GE(rest.size(), end.size());
    EXPECT_EQ(rest.substr(rest.size() - end.size()), end);
}

TEST_F(Program, EndOfInputBehindARefusedChoiceEndsTheMenuToo) {
    const ProgramResult result = run({}, "8\n9\n");
    EXPECT_FALSE(result.timed_out);
    EXPECT_EQ(result.exit_code, 1);
}

TEST_F(Program, MenuEntriesThatWaitForTheirEngine) {
    expect({}, "2\n", 1, menu + option_prompt + not_there("The I/O performance analysis"));
    expect({}, "4\n", 1, menu + option_prompt + not_there("The Benchmark Validator"));
}

TEST_F(Program, TheStressScreenOpensFromTheMenuAndEndsWithTheInput) {
    const ProgramResult result = run({}, "1\n");
    EXPECT_FALSE(result.timed_out);
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_NE(result.output.find("Component Stress Tester\n", start.size() + menu.size()), std::string::npos);
}

TEST_F(Program, HardwareFeaturesOfTheAdvancedOptions) {
    const ProgramResult result = run({}, "5\n1\n");
    EXPECT_EQ(result.exit_code, 0);
    CPUFeatures features;
    read_features(features);
    const std::string report = testing::console_output([&] { print_features(features); });
    const std::string head = start + menu + option_prompt + advanced_options + option_prompt + "\n" + P +
                             "Hardware Features:\n\n" + W + "Processor: " + G + processor_name() + W + "\n\n";
    EXPECT_EQ(result.output, head + report + "\n  * = used by some build of this program.\n" + end);
}

TEST_F(Program, OtherAdvancedOptionsWaitForTheirEngine) {
    const std::string shown = menu + option_prompt + advanced_options + option_prompt;
    expect({}, "5\n2\n", 1, shown + "\n" + not_there("The report of the Compilation Options"));
    expect({}, "5\n4\n-1\n3\n", 1,
           shown + option_prompt + option_prompt + "\n" + not_there("Test Swap Multiply"));
}

TEST_F(Program, AFatalErrorWaitsForEnter) {
    expect({"validate", "x"}, "\n", 1, not_there("The Benchmark Validator"));
    expect({"validate"}, "", 1, not_there("The Benchmark Validator"));
}

TEST_F(Program, ACheckpointFileGoesBeforeAllArguments) {
    write("Zelmar Checkpoint File.txt");
    const std::string resuming = Y + "An unfinished computation has been found.\nResuming...\n" +
                                 testing::sent::pause +
                                 not_there("The resuming of an unfinished computation");
    expect({"about"}, "\n\n", 1, resuming);
    expect({"nonsense"}, "", 1, resuming);
    expect({}, "6\n", 1, resuming);
}

TEST_F(Program, OtherFilesAreNoCheckpoint) {
    write("Zelmar Checkpoint File (new).txt");
    expect({"about"}, "", 0, about + end);
}

// The default digits take long: the heading and the first stage are enough.
TEST_F(Program, CustomPiWithNoMoreWordsComputesAtOnce) {
    if (const std::string refusal = run_refusal(ComputeParameters()); !refusal.empty()) {
        expect({"custom", "pi"}, "", 1, fatal(refusal));
        return;
    }
    const std::string stage = "Reserving Working Memory...";
    const ProgramResult result =
        testing::run_program({"custom", "pi"}, "", folder().path(), std::chrono::seconds(60), stage);
    EXPECT_TRUE(result.stopped);
    EXPECT_NE(result.output.find("Constant:   " + G + "Pi" + W), std::string::npos);
    EXPECT_NE(result.output.find("Decimal Digits:       " + G + "50,000,000" + W), std::string::npos);
}

TEST_F(Program, CustomWithAnUnknownKeyword) {
    expect({"custom", "foo:3"}, "", 1, skip_line("foo:3") + end);
}

TEST_F(Program, CustomWithARefusedParameter) {
    expect({"custom", "sqrt:16", "-T:0"}, "", 1, error_line("This is a perfect square.") + end);
    expect({"custom", "arccoth:1"}, "", 1, error_line("Parameter out of range") + end);
    expect({"custom", "log:2147483648"}, "", 1, error_line("Parameter out of range") + end);
}

TEST_F(Program, CustomBrentIsReservedAndClosed) {
    expect({"custom", "brent:20"}, "", 1, error_line("Invalid constant, or not yet implemented.") + end);
}

TEST_F(Program, MissingParametersReachTheOutermostHandlerAndGive0) {
    expect({"custom", "pi", "-swap:raid0"}, "", 0, expected_more + end);
    expect({"custom", "pi", "-o"}, "", 0, expected_more + end);
    expect({"benchio", "-swap:raid3"}, "", 0, expected_more + end);
}

TEST_F(Program, APathThatIsNotAsciiEndsTheProcessThroughTheRuntime) {
    const ProgramResult result = run({"custom", "pi", "-o", "\xc3\xa4"});
    EXPECT_EQ(result.exit_code, -1);
    EXPECT_FALSE(result.timed_out);
    EXPECT_NE(result.output.find("a_to_w_direct(): Direct Conversion of > 127 char to wchar_t."),
              std::string::npos);
    EXPECT_NE(result.output.find(testing::sent::reset), std::string::npos);
}

TEST_F(Program, CustomAloneOpensItsScreen) {
    const std::string title = P + "Custom Compute a Constant\n\n";
    for (const auto& [words, input] : {std::pair<std::vector<std::string>, const char*>{{"custom"}, ""},
                                       {{"custom:x"}, ""},
                                       {{}, "3\n"}}) {
        const ProgramResult result = run(words, input);
        EXPECT_FALSE(result.timed_out);
        EXPECT_EQ(result.exit_code, 1);
        EXPECT_EQ(result.output.find("\n" + title),
                  start.size() + (words.empty() ? menu + option_prompt : "").size());
        EXPECT_TRUE(result.output.ends_with(testing::sent::end_of_input)) << result.output;
    }
}

TEST_F(Program, BenchWithoutASize) {
    const std::string refusal = "\n" + R + "No benchmark size selected.\n" + W;
    expect({"bench", "-T:4"}, "", 1, refusal + end);
    expect({"bench", "1Q"}, "", 1, skip_line("1Q") + refusal + end);
}

TEST_F(Program, BenchAloneOpensItsMenu) {
    const std::string title = P + "Benchmark Pi:\n\n";
    for (const auto& [words, input] :
         {std::pair<std::vector<std::string>, const char*>{{"bench"}, ""}, {{"bench:x"}, ""}, {{}, "0\n"}}) {
        const ProgramResult result = run(words, input);
        EXPECT_FALSE(result.timed_out);
        EXPECT_EQ(result.exit_code, 1);
        EXPECT_EQ(result.output.find(title),
                  start.size() + (words.empty() ? menu + option_prompt : "").size());
        EXPECT_TRUE(result.output.ends_with(testing::sent::end_of_input)) << result.output;
    }
}

TEST_F(Program, BenchioReadsItsOptions) {
    expect({"benchio", "-T:0", "-M:1G", "-foo:1"}, "", 1,
           skip_line("-foo:1") + not_there("The I/O performance analysis"));
    expect({"benchio", "-swap:raid0", "/nonexistent folder/of this test"}, "", 1,
           error_line("This path is not writable.") + not_there("The I/O performance analysis"));
}

TEST_F(Program, StressWithoutATestSaysSo) {
    const ProgramResult result = run({"stress", "-D:1", "-q"});
    EXPECT_FALSE(result.timed_out);
    EXPECT_EQ(result.output.find(start + skip_line("-q")), 0u);
    EXPECT_NE(result.output.find("You must select at least one test."), std::string::npos);
    EXPECT_EQ(result.output.substr(result.output.size() - end.size()), end);
}

}  // namespace
}  // namespace znp
