// Whole computations by the program itself: what a user gets who types good options, bad ones, or names a
// place that cannot be written.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "expected_text.hpp"
#include "program.hpp"
#include "shell/build_targets.hpp"
#include "shell/cpu_features.hpp"
#include "temporary_folder.hpp"

namespace znp {
namespace {

using testing::ProgramResult;
using testing::TemporaryFolder;
using testing::without_colors;
namespace fs = std::filesystem;

const std::string decimal_file = "Pi - Dec - Chudnovsky.txt";
const std::string hexadecimal_file = "Pi - Hex - Chudnovsky.txt";
const std::string hundred_digits =
    "3.1415926535897932384626433832795028841971693993751058209749445923078164062862089986280348253421170679";

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

upL_t occurrences(const std::string& text, const std::string& piece) {
    upL_t n = 0;
    for (upL_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) ++n;
    return n;
}

class CustomRun : public ::testing::Test {
  protected:
    void SetUp() override {
        CPUFeatures features;
        read_features(features);
        if (!supports_this_build(features)) GTEST_SKIP() << "this build does not run here";
    }

    // "custom pi" and these words, on one thread; the output without its colours.
    std::string run(std::vector<std::string> words, int exit_code = 0) {
        words.insert(words.begin(), {"custom", "pi", "-T:1"});
        const ProgramResult result = testing::run_program(words, "", folder_.path());
        EXPECT_FALSE(result.timed_out);
        EXPECT_EQ(result.exit_code, exit_code);
        return without_colors(result.output);
    }
    std::string path(const std::string& name) const { return folder_.path() + "/" + name; }
    std::string digits(const std::string& name = decimal_file) const { return contents(path(name)); }
    upL_t files() const {
        return static_cast<upL_t>(std::distance(fs::directory_iterator(folder_.path()), {}));
    }

  private:
    TemporaryFolder folder_;
};

TEST_F(CustomRun, WritesItsDigitsInTheCurrentFolder) {
    const std::string output = run({"-dec:100"});
    EXPECT_EQ(digits(), hundred_digits);
    EXPECT_EQ(digits(hexadecimal_file).substr(0, 18), "3.243f6a8885a308d3");
    EXPECT_EQ(digits(hexadecimal_file).size(), 86u);
    EXPECT_EQ(files(), 2u);
    EXPECT_NE(output.find("Last Digits:  Pi\n"
                          "1415926535 8979323846 2643383279 5028841971 6939937510 :  50\n"
                          "5820974944 5923078164 0628620899 8628034825 3421170679 :  100\n"),
              std::string::npos);
}

TEST_F(CustomRun, AnsweringNothingIsEnough) {
    EXPECT_EQ(run({"-dec:100"}).find("Press ENTER"), std::string::npos);
}

TEST_F(CustomRun, WithoutHexadecimalDigitsThereIsOneFile) {
    EXPECT_NE(run({"-dec:100", "-hex:0"}).find("Hexadecimal Digits:   Disabled\n"), std::string::npos);
    EXPECT_EQ(files(), 1u);
}

TEST_F(CustomRun, BadOptionsAreNamedAndTheRunGoesOn) {
    const std::string output =
        run({"-zzz", "-algorithm:2", "-dec:100", "-C:1m", "-mode:swap", "-mode:disk", "-T:0", "-hex:0"});
    const std::string refused[] = {"Skipping unrecognized command: -zzz\n",
                                   "Error: Invalid Algorithm\n",
                                   "Error: Too few digits to compress.\n",
                                   "Error: Too few digits for swap mode.\n",
                                   "Skipping unrecognized command: disk\n",
                                   "Warning: Clipping threads to 1.\n",
                                   "Threads:    1\n"};
    upL_t at = 0;
    for (const std::string& text : refused) {
        at = output.find(text, at);
        ASSERT_NE(at, std::string::npos) << text;
    }
    EXPECT_EQ(digits(), hundred_digits);
}

TEST_F(CustomRun, BadDigitCountsLeaveTheCount) {
    for (const char* bad : {"-dec", "-dec:", "-dec:abc", "-dec:0", "-dec:99", "-dec:-100", "-dec:2.5b",
                            "-dec:90000000000051", "-dec:91t", "-hex:1"}) {
        const std::string output = run({"-dec:100", bad});
        EXPECT_EQ(occurrences(output, "Error: # of digits is out of range\n"), 1u) << bad;
        EXPECT_NE(output.find("Decimal Digits:       100\n"), std::string::npos) << bad;
        EXPECT_EQ(digits(), hundred_digits) << bad;
        fs::remove(path(decimal_file));
    }
}

TEST_F(CustomRun, WritesWhereItIsTold) {
    fs::create_directory(path("sub"));
    for (const char* folder : {"sub", "sub/", "./sub"}) {
        run({"-o", folder, "-dec:100", "-hex:0"});
        EXPECT_EQ(digits("sub/" + decimal_file), hundred_digits) << folder;
        EXPECT_EQ(files(), 1u) << folder;  // no trace of the test for writing
        EXPECT_EQ(std::distance(fs::directory_iterator(path("sub")), {}), 1) << folder;
        fs::remove(path("sub/" + decimal_file));
    }
}

TEST_F(CustomRun, AFolderThatCannotBeWrittenIsRefusedAndTheCurrentOneTaken) {
    const std::string output = run({"-dec:100", "-o", "missing", "-hex:0"});
    EXPECT_EQ(occurrences(output, "Error: Unable to write to path.\n"), 1u);
    EXPECT_EQ(digits(), hundred_digits);
}

TEST_F(CustomRun, ADirectoryInTheWayOfTheDigitsIsReported) {
    fs::create_directory(path(decimal_file));
    const std::string output = run({"-dec:100", "-hex:0"});
    EXPECT_EQ(occurrences(output, "Exception Encountered: Unable to create file.\nError Code: 21\n" +
                                      decimal_file + "\n"),
              1u);
    EXPECT_EQ(output.find("digits written"), std::string::npos);
}

// A failure of writing is reported where it happens, and again as what ended the process.
TEST_F(CustomRun, AFullDiskIsReportedWhereItHappensAndAtTheEnd) {
    for (const char* dec : {"-dec:100", "-dec:20000"}) {
        fs::create_symlink("/dev/full", path(decimal_file));
        const std::string output = run({dec, "-hex:0"});
        EXPECT_EQ(occurrences(output, "Exception Encountered: Generic Exception\nError Code: 28\n"), 2u);
        EXPECT_EQ(output.find("digits written"), std::string::npos);
        EXPECT_EQ(output.find("Total Computation Time"), std::string::npos);
        fs::remove(path(decimal_file));
    }
}

// The allocators of the sanitizers are to answer a reservation that no machine can serve with null, as the
// system's does.
void let_allocators_return_null() {
    for (const char* name : {"ASAN_OPTIONS", "TSAN_OPTIONS"}) {
        const char* const given = std::getenv(name);
        const std::string options = given == nullptr ? "" : std::string(given) + ":";
        ::setenv(name, (options + "allocator_may_return_null=1").c_str(), 1);
    }
}

TEST_F(CustomRun, TooManyDigitsForTheMachineFailBeforeTheyBegin) {
    let_allocators_return_null();
    const std::string output = run({"-dec:90000000000050"}, 1);
    EXPECT_NE(output.find("There is insufficient available memory to perform this operation."),
              std::string::npos);
    EXPECT_NE(output.find("\nInsufficient Memory or address space.\nFailed Allocation: "), std::string::npos);
    EXPECT_EQ(output.find("Begin Computation:"), std::string::npos);
    EXPECT_EQ(files(), 0u);
}

TEST_F(CustomRun, ALaterRunReplacesTheDigitsOfAnEarlierOne) {
    run({"-dec:1000", "-hex:0"});
    EXPECT_EQ(digits().size(), 1002u);
    run({"-dec:100", "-hex:0"});
    EXPECT_EQ(digits(), hundred_digits);
}

}  // namespace
}  // namespace znp
