#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "console_capture.hpp"
#include "shell/console.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::dying;
using namespace testing::sent;
using ::testing::Eq;
using ::testing::ExitedWithCode;

TEST(ConsoleInput, LinesAndTheirColors) {
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::read_line(), "some text"); }, "some text\nmore"), "");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::read_line('G'), ""); }, "\n"), G + W);
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::read_line_wide('T'), L"/a path"); }, "/a path\n"),
              T + W);
}

TEST(ConsoleInput, LastLineWithoutLineFeedIsALine) {
    console_output([] { EXPECT_EQ(Console::read_line(), "last"); }, "last");
    console_output([] { EXPECT_EQ(Console::read_line_wide(), L"last"); }, "last");
}

TEST(ConsoleInput, NarrowAndWideLinesMix) {
    console_output(
        [] {
            EXPECT_EQ(Console::read_line_wide(), L"one");
            EXPECT_EQ(Console::read_line(), "two");
            EXPECT_EQ(Console::read_line_wide(), L"three");
        },
        "one\ntwo\nthree\n");
}

TEST(ConsoleInput, PauseReadsALineAndEndsInWhite) {
    const std::string output = console_output(
        [] {
            Console::pause();
            EXPECT_EQ(Console::read_line(), "next");
        },
        "anything\nnext\n");
    EXPECT_EQ(output, pause);
    EXPECT_EQ(console_output([] { Console::pause('G'); }, "\n"), G + "Press ENTER to continue . . ." + T + W);
    EXPECT_EQ(console_output([] { Console::wait_for_retry(); }, "\n"), pause);
}

TEST(ConsoleInput, EndOfInputCountsAsPressedAtAPause) {
    EXPECT_EQ(console_output([] { Console::pause(); }), pause);
}

TEST(ConsoleInput, IntegersStopAtTheFirstOtherCharacter) {
    EXPECT_EQ(Console::parse_int("123"), 123);
    EXPECT_EQ(Console::parse_int("-45"), -45);
    EXPECT_EQ(Console::parse_int("12,345"), 12);
    EXPECT_EQ(Console::parse_int("7 apples"), 7);
    EXPECT_EQ(Console::parse_int(""), 0);
    EXPECT_EQ(Console::parse_int("-"), 0);
    EXPECT_EQ(Console::parse_int("abc"), 0);
    EXPECT_EQ(Console::parse_int(" 5"), 0);
    EXPECT_EQ(Console::parse_int("+5"), 0);
    EXPECT_EQ(Console::parse_int("--5"), 0);
    EXPECT_EQ(Console::parse_int("9223372036854775807"), std::numeric_limits<s64_t>::max());
    EXPECT_EQ(Console::parse_int("-9223372036854775808"), std::numeric_limits<s64_t>::min());
}

TEST(ConsoleInput, IntegerOverflowWraps) {
    EXPECT_EQ(Console::parse_int("9223372036854775808"), std::numeric_limits<s64_t>::min());
    EXPECT_EQ(Console::parse_int("18446744073709551616"), 0);
    EXPECT_EQ(Console::parse_int("-18446744073709551621"), -5);
}

TEST(ConsoleInput, AskInt) {
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::ask_int("option: "), 3); }, "3\n"),
              W + "option: " + G + W);
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::ask_int("n = ", 'T'), -3); }, "-3"), W + "n = " + T + W);
}

TEST(ConsoleInput, AskIntRangeRepeatsThePromptOnly) {
    const std::string round = W + "option: " + G + W;
    EXPECT_EQ(
        console_output([] { EXPECT_EQ(Console::ask_int_range("option: ", 1, 4), 4); }, "0\n5\n-1\n4\n1\n"),
        round + round + round + round);
}

TEST(ConsoleInput, AskIntRangeTakesAnEmptyLineAsZero) {
    console_output([] { EXPECT_EQ(Console::ask_int_range("option: ", 0, 4), 0); }, "\n");
    console_output([] { EXPECT_EQ(Console::ask_int_range("option: ", 1, 4), 2); }, "\n2\n");
}

TEST(ConsoleInput, SizesWithAndWithoutUnits) {
    EXPECT_EQ(Console::parse_size("768"), 768u);
    EXPECT_EQ(Console::parse_size("768MB"), 805306368u);
    EXPECT_EQ(Console::parse_size("2.5GB"), 2684354560u);
    EXPECT_EQ(Console::parse_size("2.5 G"), 2684354560u);
    EXPECT_EQ(Console::parse_size("2.5g"), 2684354560u);
    EXPECT_EQ(Console::parse_size(".5K"), 512u);
    EXPECT_EQ(Console::parse_size("1t"), u64_t{1} << 40);
    EXPECT_EQ(Console::parse_size("3P"), u64_t{3} << 50);
    EXPECT_EQ(Console::parse_size("1e"), u64_t{1} << 60);
    EXPECT_EQ(Console::parse_size("5  K"), 5120u);
    EXPECT_EQ(Console::parse_size("5.K"), 5120u);
}

TEST(ConsoleInput, SizesWithoutAUnitIgnoreTheFraction) {
    EXPECT_EQ(Console::parse_size("2.9"), 2u);
    EXPECT_EQ(Console::parse_size("2.9X"), 2u);
    EXPECT_EQ(Console::parse_size("2.9 bytes"), 2u);
    EXPECT_EQ(Console::parse_size(""), 0u);
    EXPECT_EQ(Console::parse_size("hello"), 0u);
    EXPECT_EQ(Console::parse_size("1..5K"), 1u);
    EXPECT_EQ(Console::parse_size("1.5.5K"), 1u);
    EXPECT_EQ(Console::parse_size("MB"), 0u);
}

TEST(ConsoleInput, SizeFractionsRoundHalfAwayFromZero) {
    EXPECT_EQ(Console::parse_size(".00048828125K"), 1u);  // half a byte
    EXPECT_EQ(Console::parse_size(".0004K"), 0u);         // 0.41 bytes
    EXPECT_EQ(Console::parse_size("1.0015K"), 1026u);     // 1.54 bytes above
    EXPECT_EQ(Console::parse_size("0.3M"), 314573u);      // 314572.8
}

TEST(ConsoleInput, SizesFrom2To63AreKept) {
    EXPECT_EQ(Console::parse_size("8E"), u64_t{1} << 63);
    EXPECT_EQ(Console::parse_size("15.5E"), (u64_t{31} << 59));
    EXPECT_EQ(Console::parse_size("18446744073709551615"), ~u64_t{0});
}

TEST(ConsoleInput, RandomSizesMatchADirectCalculation) {
    auto rng = testing::make_rng(1201);
    const char letters[] = "KMGTPE";
    for (int i = 0; i < 2000; ++i) {
        const u64_t unit = rng() % 6;
        const u64_t whole = rng() % 15;
        const u64_t digits = rng() % 1000;
        char text[32];
        std::snprintf(text, sizeof text, "%lu.%03lu%c", whole, digits, letters[unit]);
        const long double scale = std::ldexp(1.0L, static_cast<int>(10 * (unit + 1)));
        const long double expected =
            static_cast<long double>(whole) * scale + static_cast<long double>(digits) * scale / 1000;
        const long double actual = static_cast<long double>(Console::parse_size(text));
        // Half a byte of rounding, and the double's error of the fraction.
        EXPECT_LE(std::fabs(actual - expected), 0.5L + scale * 1e-15L) << text;
    }
}

TEST(ConsoleInput, AskSize) {
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::ask_size("Bytes: "), 2048u); }, "2K\n"),
              W + "Bytes: " + G + W);
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::read_size(), 12u); }, "12"), "");
}

using ConsoleInputDeathTest = ::testing::Test;

TEST(ConsoleInputDeathTest, EndOfInputEndsThePromptsWithOneLine) {
    EXPECT_EXIT(dying([] { Console::end_of_input(); }), ExitedWithCode(1), Eq(end_of_input));
    EXPECT_EXIT(dying([] { Console::read_line(); }), ExitedWithCode(1), Eq(end_of_input));
    EXPECT_EXIT(dying([] { Console::read_line_wide('G'); }), ExitedWithCode(1), Eq(G + end_of_input));
    EXPECT_EXIT(dying([] { Console::read_int(); }), ExitedWithCode(1), Eq(end_of_input));
    EXPECT_EXIT(dying([] { Console::ask_int("n = "); }), ExitedWithCode(1),
                Eq(W + "n = " + G + end_of_input));
    EXPECT_EXIT(dying([] { Console::read_size(); }), ExitedWithCode(1), Eq(end_of_input));
    EXPECT_EXIT(dying([] { Console::ask_size("Bytes: "); }), ExitedWithCode(1),
                Eq(W + "Bytes: " + G + end_of_input));
}

TEST(ConsoleInputDeathTest, AskIntRangeDoesNotSpinAtTheEndOfInput) {
    EXPECT_EXIT(dying([] { Console::ask_int_range("n = ", 1, 2); }, "7\n"), ExitedWithCode(1),
                Eq(W + "n = " + G + W + W + "n = " + G + end_of_input));
}

TEST(ConsoleInputDeathTest, WaitForRetryEndsAtTheEndOfInput) {
    EXPECT_EXIT(dying([] { Console::wait_for_retry(); }), ExitedWithCode(1), Eq(pause + end_of_input));
}

}  // namespace
}  // namespace znp
