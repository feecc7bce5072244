// The generator of formulas for Log(n) from the menu, and Log(n) from the command line.
#include <gtest/gtest.h>

#include "program.hpp"
#include "temporary_folder.hpp"

namespace znp {
namespace {

using testing::ProgramResult;

// Without colours and times.
std::string plain(const std::string& output) {
    std::string text;
    for (std::size_t i = 0; i < output.size(); i++) {
        if (output[i] == '\033') {
            i = output.find('m', i);
        } else {
            text += output[i];
        }
    }
    for (std::size_t at = 0; (at = text.find(" seconds\n", at)) != std::string::npos;) {
        const std::size_t number = text.find_last_not_of("0123456789.", at - 1) + 1;
        text.replace(number, at - number, 1, '#');
        at = number + 1;
    }
    return text;
}

std::string generated(const std::string& input, int exit_code = 0) {
    const testing::TemporaryFolder folder;
    const ProgramResult result = testing::run_program({}, input, folder.path());
    EXPECT_EQ(result.exit_code, exit_code);
    const std::string text = plain(result.output);
    const std::size_t title = text.rfind("Log(n) Formula Generator\n");
    EXPECT_NE(title, std::string::npos);
    return text.substr(std::min(title, text.size()));
}

TEST(LogFormulaTool, ShowsBothFormulasInThreeForms) {
    const std::string text = generated("5\n0\n2\n");
    const auto cost_at = [&](std::size_t from) {
        const std::size_t at = text.find("Cost = ", from) + 7;
        return text.substr(at, text.find('\n', at) - at);
    };
    const std::string first = cost_at(0);
    const std::string second = cost_at(text.find("ArcCoth[449]"));
    EXPECT_EQ(text,
              "Log(n) Formula Generator\n"
              "\n"
              "n = \n"
              "Generating Primary Formula...        # seconds\n"
              "Generating Secondary Formula...      # seconds\n"
              "\n"
              "Log[2] = \n"
              "                     +18 * ArcCoth[26]\n"
              "                     -2 * ArcCoth[4801]\n"
              "                     +8 * ArcCoth[8749]\n"
              "\n"
              "        Cost = " +
                  first +
                  "\n"
                  "\n"
                  "\tLog[2] = 18*ArcCoth[26] + -2*ArcCoth[4801] + 8*ArcCoth[8749]\n"
                  "\tLog[2] = 18 /2*Log[1.0800000] + -2 /2*Log[1.0004167] + 8 /2*Log[1.0002286]\n"
                  "\n"
                  "Log[2] = \n"
                  "                     +144 * ArcCoth[251]\n"
                  "                     +54 * ArcCoth[449]\n"
                  "                     -38 * ArcCoth[4801]\n"
                  "                     +62 * ArcCoth[8749]\n"
                  "\n"
                  "        Cost = " +
                  second +
                  "\n"
                  "\n"
                  "\tLog[2] = 144*ArcCoth[251] + 54*ArcCoth[449] + -38*ArcCoth[4801] + 62*ArcCoth[8749]\n"
                  "\tLog[2] = 144 /2*Log[1.0080000] + 54 /2*Log[1.0044643] + -38 /2*Log[1.0004167] + 62 "
                  "/2*Log[1.0002286]\n"
                  "\n");
    EXPECT_LT(std::stod(first), std::stod(second));
}

TEST(LogFormulaTool, TakesNumbersFrom2To2147483647) {
    const std::string text = generated("5\n0\n1\n0\n2147483648\n2147483647\n");
    EXPECT_NE(text.find("Log[2147483647] = \n"), std::string::npos);
    EXPECT_NE(text.find("-2 * ArcCoth[4294967295]\n"), std::string::npos);
    generated("5\n0\n1\n", 1);  // the input ends before an answer
}

TEST(LogOfTheCommandLine, ComputesByBothFormulas) {
    const testing::TemporaryFolder folder;
    for (const char* algorithm : {"-algorithm:0", "-algorithm:1"}) {
        const ProgramResult result =
            testing::run_program({"custom", "log:2147483647", algorithm, "-dec:1000"}, "", folder.path());
        EXPECT_EQ(result.exit_code, 0);
        const std::string text = plain(result.output);
        EXPECT_NE(text.find("\nConstant:   Log(2147483647)\n"), std::string::npos) << text;
        EXPECT_NE(text.find("-2 ArcCoth( 4294967295 )\n"), std::string::npos);
        EXPECT_NE(text.find("4468516656 7968708990 :  1,000\n"), std::string::npos);
    }
}

}  // namespace
}  // namespace znp
