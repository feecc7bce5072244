// The command "custom" from end to end: options, screen, exit code and digit files.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "digit_oracle.hpp"
#include "foundation/types.hpp"
#include "golden.hpp"
#include "sha256.hpp"
#include "shell/expected_text.hpp"
#include "shell/program.hpp"
#include "temporary_folder.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using namespace testing::sent;
using testing::ProgramResult;
using testing::TemporaryFolder;

using Words = std::vector<std::string>;

class Custom : public ::testing::Test {
  protected:
    ProgramResult run(Words words, std::string_view input = {}) const {
        words.insert(words.begin(), "custom");
        return testing::run_program(words, input, folder_.path());
    }
    // The digits of a run that must succeed.
    std::string output_of(const Words& words) const {
        const ProgramResult result = run(words);
        EXPECT_FALSE(result.timed_out);
        EXPECT_EQ(result.exit_code, 0) << result.output;
        return result.output;
    }
    // One fatal error, nothing reserved and nothing written.
    void expect_refusal(const Words& words, const std::string& what) const {
        const ProgramResult result = run(words);
        EXPECT_EQ(result.exit_code, 1);
        EXPECT_NE(result.output.find("\n" + R + what + " is not available in this version yet." + W + "\n"),
                  std::string::npos)
            << result.output;
        EXPECT_EQ(result.output.find("Reserving"), std::string::npos);
        EXPECT_EQ(result.output.find("Constant:"), std::string::npos);
        EXPECT_TRUE(folder_.is_empty());
    }
    std::string file(const std::string& name) const { return text_of(folder_.path() + "/" + name); }
    static std::string text_of(const std::string& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    Words files() const {
        Words names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    const TemporaryFolder& folder() const { return folder_; }

  private:
    TemporaryFolder folder_;
};

std::string pi_digits(u64_t count, int radix = 10) {
    return testing::DigitOracle(count).pi().text(count, radix);
}

std::string heading_digits(const std::string& count) {
    return "Decimal Digits:       " + G + count + W + "\n";
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST_F(Custom, PiWritesBothFilesAndTellsItsStages) {
    const std::string output = output_of({"pi", "-dec:1000", "-T:2"});
    EXPECT_EQ(files(), (Words{"Pi - Dec - Chudnovsky.txt", "Pi - Hex - Chudnovsky.txt"}));
    EXPECT_EQ(file("Pi - Dec - Chudnovsky.txt"), pi_digits(1000));
    EXPECT_EQ(file("Pi - Hex - Chudnovsky.txt"), pi_digits(831, 16));
    const Words stages{"Constant:   " + G + "Pi",
                       "Algorithm:  " + Y + "Chudnovsky Formula",
                       "Decimal Digits:       " + G + "1,000",
                       "Hexadecimal Digits:   " + G + "831",
                       "Threads:    " + T + "2",
                       "Mode:       " + T + "Ram Only",
                       "Start Time: ",
                       "Reserving Working Memory...         ",
                       "Constructing Twiddle Tables...      ",
                       "Allocating I/O Buffers...           " + g + "0 bytes",
                       "Begin Computation:",
                       "Summing Series...  ",
                       "Division...",
                       "InvSqrt...",
                       "Final Multiply...",
                       "Pi",
                       "Writing Hexadecimal Digits:   ",
                       G + "831" + W + "  digits written",
                       "Base Converting:",
                       "Writing Decimal Digits:   ",
                       G + "1,000" + W + "  digits written",
                       "Verifying Base Conversion...",
                       "Start Time: ",
                       "End Time:   ",
                       "Total Computation Time:             ",
                       "Total Time (with output + verify):  ",
                       "CPU Utilization:        ",
                       "Multi-core Efficiency:  ",
                       "Last Digits:  Pi\n",
                       " :  " + G + "1,000"};
    upL_t position = 0;
    for (const std::string& stage : stages) {
        const upL_t found = output.find(stage, position);
        ASSERT_NE(found, std::string::npos) << stage << " in:\n" << output;
        position = found + stage.size();
    }
    EXPECT_FALSE(contains(output, "Memory leak detected"));
    EXPECT_FALSE(contains(output, "Reattempting"));
}

TEST_F(Custom, WithoutHexadecimalDigitsThereIsNoFile) {
    const std::string output = output_of({"pi", "-dec:300", "-hex:0"});
    EXPECT_EQ(files(), Words{"Pi - Dec - Chudnovsky.txt"});
    EXPECT_TRUE(contains(output, "Hexadecimal Digits:   " + G + "Disabled" + W + "\n"));
    EXPECT_FALSE(contains(output, "Writing Hexadecimal"));
}

TEST_F(Custom, EveryConstantOfThisVersion) {
    testing::DigitOracle oracle(200);
    const struct {
        Words words;
        std::string file, digits;
    } rows[] = {
        {{"sqrt:2"}, "Sqrt(2) - Dec - Newton.txt", oracle.sqrt(2).text(200)},
        {{"sqrt:18446744073709551615"},
         "Sqrt(18446744073709551615) - Dec - Newton.txt",
         oracle.sqrt(18446744073709551615u).text(200)},
        {{"phi"}, "Golden Ratio - Dec - Newton.txt", oracle.golden_ratio().text(200)},
        {{"goldenratio:7"}, "Golden Ratio - Dec - Newton.txt", oracle.golden_ratio().text(200)},
        {{"e"}, "e - Dec - exp(1).txt", oracle.e().text(200)},
        {{"e", "-algorithm:1"}, "e - Dec - exp(-1).txt", oracle.e().text(200)},
        {{"pi", "-algorithm:1"}, "Pi - Dec - Ramanujan.txt", oracle.pi().text(200)},
    };
    for (const auto& row : rows) {
        Words words = row.words;
        words.insert(words.end(), {"-dec:200", "-hex:0"});
        output_of(words);
        EXPECT_EQ(file(row.file), row.digits) << row.file;
    }
}

// ---- Digits -----------------------------------------------------------------------------------------------

TEST_F(Custom, RefusedDigitsKeepTheOldOnes) {
    for (const char* digits :
         {"", "abc", "0", "99", "-100", "90000000000051", "91t", "2.5b", "2.5k", "0k", "k"}) {
        const std::string output = output_of({"pi", "-dec:200", std::string("-dec:") + digits, "-hex:0"});
        EXPECT_TRUE(contains(output, error_line("# of digits is out of range"))) << digits;
        EXPECT_TRUE(contains(output, heading_digits("200"))) << digits << output;
        EXPECT_EQ(file("Pi - Dec - Chudnovsky.txt"), pi_digits(200)) << digits;
    }
    EXPECT_TRUE(contains(output_of({"pi", "-dec:200", "-dec"}), error_line("# of digits is out of range")));
}

TEST_F(Custom, DigitsWithSuffixes) {
    const struct {
        const char* value;
        const char* shown;
        u64_t digits;
    } rows[] = {{"100", "100", 100},  {"101", "101", 101},  {"1k", "1,000", 1000}, {"2K", "2,000", 2000},
                {"300x", "300", 300}, {"0400", "400", 400}, {"150 m", "150", 150}};
    for (const auto& row : rows) {
        const std::string output = output_of({"pi", std::string("-dec:") + row.value});
        EXPECT_TRUE(contains(output, heading_digits(row.shown))) << output;
        EXPECT_EQ(file("Pi - Dec - Chudnovsky.txt"), pi_digits(row.digits)) << row.value;
    }
}

TEST_F(Custom, HexadecimalDigitsSetTheDecimalOnes) {
    const std::string output = output_of({"pi", "-hex:1k"});
    EXPECT_TRUE(contains(output, heading_digits("1,204"))) << output;
    EXPECT_EQ(file("Pi - Hex - Chudnovsky.txt"), pi_digits(1000, 16));
    EXPECT_EQ(file("Pi - Dec - Chudnovsky.txt"), pi_digits(1204));
}

// ---- Options ----------------------------------------------------------------------------------------------

TEST_F(Custom, OptionsInAnyOrderAndCombination) {
    const TemporaryFolder target;
    std::vector<Words> options{{"-dec:333"}, {"-T:3"},      {"-algorithm:1"}, {"-o", target.path()},
                               {"-C:0"},     {"-mode:ram"}, {"-M:1G"},        {"-minIO:1M"},
                               {"-zzz"}};
    auto rng = testing::make_rng(1);
    for (int round = 0; round < 20; round++) {
        std::shuffle(options.begin(), options.end(), rng);
        Words words{"pi"};
        for (const Words& option : options) words.insert(words.end(), option.begin(), option.end());
        const std::string output = output_of(words);
        EXPECT_TRUE(contains(output, skip_line("-zzz")));
        EXPECT_TRUE(contains(output, heading_digits("333"))) << output;
        EXPECT_TRUE(contains(output, "Threads:    " + T + "3" + W));
        EXPECT_TRUE(contains(output, "Algorithm:  " + Y + "Ramanujan's Formula" + W));
        EXPECT_TRUE(folder().is_empty());
        EXPECT_EQ(text_of(target.path() + "/Pi - Dec - Ramanujan.txt"), pi_digits(333));
        EXPECT_EQ(text_of(target.path() + "/Pi - Hex - Ramanujan.txt"), pi_digits(277, 16));
    }
}

TEST_F(Custom, TheLastOfARepeatedOptionWins) {
    const std::string output = output_of(
        {"pi", "-dec:500", "-T:7", "-dec:250", "-algorithm:1", "-T:2", "-algorithm:0", "-hex:0", "-dec:260"});
    EXPECT_TRUE(contains(output, heading_digits("260")));
    EXPECT_TRUE(contains(output, "Hexadecimal Digits:   " + G + "216"));  // digits bring them back
    EXPECT_TRUE(contains(output, "Threads:    " + T + "2" + W));
}

TEST_F(Custom, CarriesOnAfterEveryRefusal) {
    const std::string output =
        output_of({"pi", "-dec:200", "-dec:2.5b", "-hex:5", "-mode:disk", "-mode:swap", "-algorithm:2",
                   "-algorithm:x", "-C:5", "-o", "missing/folder", "-zzz:1:2", "-T:0"});
    const Words refusals{
        error_line("# of digits is out of range") + error_line("# of digits is out of range") +
            skip_line("disk") + error_line("Too few digits for swap mode.") +
            error_line("Invalid Algorithm") + error_line("Too few digits to compress.") +
            error_line("Unable to write to path.") + skip_line("-zzz:1:2") + clip_line("1"),
        heading_digits("200"), "Threads:    " + T + "1" + W, "Algorithm:  " + Y + "Chudnovsky Formula"};
    for (const std::string& refusal : refusals) EXPECT_TRUE(contains(output, refusal)) << output;
    EXPECT_EQ(file("Pi - Dec - Chudnovsky.txt"), pi_digits(200));
}

TEST_F(Custom, SwapPathsDoNotChangeARunInMemory) {
    const TemporaryFolder swap;
    output_of({"pi", "-dec:200", "-swap:raid0", swap.path(), swap.path()});
    EXPECT_EQ(file("Pi - Dec - Chudnovsky.txt"), pi_digits(200));
    EXPECT_TRUE(swap.is_empty());
}

// The limit rules runs on disk; in memory a run takes what it needs.
TEST_F(Custom, AMemoryLimitBelowTheNeedDoesNotStopARunInMemory) {
    output_of({"pi", "-dec:200", "-M:1"});
    EXPECT_EQ(file("Pi - Dec - Chudnovsky.txt"), pi_digits(200));
}

// ---- What this version does not compute -------------------------------------------------------------------

TEST_F(Custom, SwapModeIsRefusedBeforeAnythingIsReserved) {
    expect_refusal({"pi", "-dec:1m", "-mode:swap"}, "Swap Mode");
}

TEST_F(Custom, CompressedOutputIsRefusedBeforeAnythingIsReserved) {
    expect_refusal({"pi", "-dec:2m", "-C:1m"}, "Compressed output");
}

// ---- Files ------------------------------------------------------------------------------------------------

TEST_F(Custom, AFileOfAnEarlierRunIsReplaced) {
    output_of({"pi", "-dec:500"});
    output_of({"pi", "-dec:200"});
    EXPECT_EQ(file("Pi - Dec - Chudnovsky.txt"), pi_digits(200));
}

// Each constant by each of its formulas, as a user asks for it.
TEST_F(Custom, EveryConstantWritesItsFiles) {
    const struct {
        const char *keyword, *golden, *algorithm, *stem, *ending;
    } cases[] = {{"arccoth:2", "arccoth:2", "0", "ArcCoth(2)", "Taylor"},
                 {"arccoth:4294967295", "arccoth:4294967295", "0", "ArcCoth(4294967295)", "Taylor"},
                 {"zeta(3)", "zeta(3)", "0", "Zeta(3)", "Amdeberhan-Zeiberger 2"},
                 {"apery", "zeta(3)", "1", "Zeta(3)", "Amdeberhan-Zeiberger 1"},
                 {"lemniscate", "lemniscate", "0", "Lemniscate", "Gauss"},
                 {"lemniscate", "lemniscate", "1", "Lemniscate", "Sebah"},
                 {"catalan", "catalan", "0", "Catalan", "Lupas"},
                 {"catalan", "catalan", "1", "Catalan", "Huvent"},
                 {"gamma", "gamma", "0", "Euler's Constant", "Brent-McMillan (Refined)"},
                 {"gamma", "gamma", "1", "Euler's Constant", "Brent-McMillan"}};
    int checked = 0;
    for (const auto& [keyword, golden, algorithm, stem, ending] : cases) {
        const std::string output =
            output_of({keyword, "-dec:1000", std::string("-algorithm:") + algorithm, "-T:2"});
        EXPECT_TRUE(contains(output, "Last Digits:  "));
        const std::string name = std::string(stem) + " - Dec - " + ending + ".txt";
        for (const testing::GoldenDecimal& row : testing::golden_decimal()) {
            if (row.constant != golden || row.dec != 1000) continue;
            EXPECT_EQ(testing::sha256(file(name)), row.sha256) << name;
            checked++;
        }
        EXPECT_EQ(file(std::string(stem) + " - Hex - " + ending + ".txt").size(), 833u) << name;
    }
    EXPECT_EQ(checked, 10);
    EXPECT_EQ(files().size(), 20u);
}

TEST_F(Custom, GammaTellsItsStages) {
    const std::string output = output_of({"gamma", "-dec:1000", "-T:1"});
    const Words stages{"Constant:   \033[01;34mEuler-Mascheroni Constant",
                       "Algorithm:  " + Y + "Brent-McMillan with Refinement ( n = 2^9 )",
                       "Begin Computation:\n\nSumming Series A and B...  ",
                       " terms #S\n",
                       "Time:    ",
                       "Division...\n",
                       "\n\nSumming Series C...  ",
                       " terms\n",
                       "Division...\n",
                       "\n\n-162 ArcCoth( 26 )\nSumming Series...  ",
                       "Division...\n",
                       "\n\n18 ArcCoth( 4801 )\nSumming Series...  ",
                       "Division...\n",
                       "\n\n-72 ArcCoth( 8749 )\nSumming Series...  ",
                       "Division...\n",
                       "\n\n" + G + "Euler-Mascheroni Constant" + W + "  :  ",
                       "Writing Hexadecimal Digits:   ",
                       "Last Digits:  Euler-Mascheroni Constant\n"};
    upL_t position = 0;
    for (const std::string& stage : stages) {
        const upL_t found = output.find(stage, position);
        ASSERT_NE(found, std::string::npos) << stage << " in:\n" << output;
        position = found + stage.size();
    }
}

// What a run left that failed gives way; what a run of another radix left stays.
TEST_F(Custom, AnUnverifiedFileOfAnEarlierRunIsReplaced) {
    folder().write("Pi - Dec - Chudnovsky.txt.unverified", std::string(1000, 'x'));
    folder().write("Pi - Hex - Chudnovsky.txt.unverified", std::string(1000, 'x'));
    output_of({"pi", "-dec:200", "-hex:0"});
    EXPECT_EQ(files(), (Words{"Pi - Dec - Chudnovsky.txt", "Pi - Hex - Chudnovsky.txt.unverified"}));
    EXPECT_EQ(file("Pi - Dec - Chudnovsky.txt"), pi_digits(200));
}

// An exception ends the run; it claims no digits, and its exit code is 0 as that of any exception.
TEST_F(Custom, AFolderInTheWayOfTheFile) {
    std::filesystem::create_directory(folder().path() + "/Pi - Dec - Chudnovsky.txt");
    const ProgramResult result = run({"pi", "-dec:200", "-hex:0"});
    EXPECT_FALSE(result.timed_out);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_TRUE(contains(result.output, "Exception Encountered")) << result.output;
    EXPECT_TRUE(contains(result.output, "Pi - Dec - Chudnovsky.txt"));
    EXPECT_FALSE(contains(result.output, "digits written"));
    EXPECT_FALSE(contains(result.output, "Last Digits"));
    EXPECT_FALSE(contains(result.output, "Memory leak detected"));
}

}  // namespace
}  // namespace znp
