#include "foundation/strings.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "console_capture.hpp"

namespace znp {
namespace {

TEST(Strings, ConversionsCopyUnitByUnit) {
    std::string all;
    std::wstring wide;
    for (int c = 0; c < 128; ++c) {
        all.push_back(static_cast<char>(c));
        wide.push_back(static_cast<wchar_t>(c));
    }
    EXPECT_EQ(w_to_a_direct(wide), all);
    EXPECT_EQ(a_to_w_direct(all), wide);
    EXPECT_EQ(w_to_a_direct(L""), "");
}

template <class Body>
void expect_conversion_failure(const Body& body, const std::string& text) {
    std::string thrown;
    const std::string output = testing::console_output([&] {
        try {
            body();
        } catch (const char* pointer) {
            thrown = pointer;
        }
    });
    EXPECT_EQ(thrown, text);
    EXPECT_EQ(output, "\n\033[01;31m" + text + "\n\033[01;37m");
}

TEST(Strings, UnitsAbove127AreReportedAndThrownAsBareText) {
    const std::string to_narrow = "w_to_a_direct(): Direct Conversion of > 127 wchar_t to char.";
    for (const wchar_t c : {L'\x80', L'\xff', L'\x100', L'\x10ffff', static_cast<wchar_t>(-1)}) {
        expect_conversion_failure([c] { w_to_a_direct(std::wstring(1, c)); }, to_narrow);
    }
    expect_conversion_failure([] { a_to_w_direct("\x80"); },
                              "a_to_w_direct(): Direct Conversion of > 127 char to wchar_t.");
    expect_conversion_failure([] { a_to_w_direct("ok\xff"); },
                              "a_to_w_direct(): Direct Conversion of > 127 char to wchar_t.");
}

TEST(Strings, NumbersAsText) {
    EXPECT_EQ(to_string_u64(0), "0");
    EXPECT_EQ(to_string_u64(std::numeric_limits<u64_t>::max()), "18446744073709551615");
    EXPECT_EQ(zero_padded_20(0), "00000000000000000000");
    EXPECT_EQ(zero_padded_20(1234), "00000000000000001234");
    EXPECT_EQ(zero_padded_20(std::numeric_limits<u64_t>::max()), "18446744073709551615");
}

TEST(Strings, FormatPrintfCutsAtItsBuffer) {
    EXPECT_EQ(format_printf(16, "%d-%s", 5, "x"), "5-x");
    EXPECT_EQ(format_printf(4, "%s", "abc"), "abc");
    EXPECT_EQ(format_printf(4, "%s", "abcdef"), "abc");
    EXPECT_EQ(format_printf(1, "%s", "abc"), "");
    EXPECT_EQ(format_printf(0, "%s", "abc"), "");
}

TEST(Strings, ParseU64TakesLeadingDigits) {
    EXPECT_EQ(parse_u64("123abc"), 123u);
    EXPECT_EQ(parse_u64(""), 0u);
    EXPECT_EQ(parse_u64("-5"), 0u);
    EXPECT_EQ(parse_u64(" 5"), 0u);
    EXPECT_EQ(parse_u64("18446744073709551615"), std::numeric_limits<u64_t>::max());
    EXPECT_EQ(parse_u64("18446744073709551617"), 1u);
}

TEST(Strings, ParseI64LineTakesANumberUpToTheLineEnd) {
    s64_t value = 99;
    EXPECT_TRUE(parse_i64_line("123", value));
    EXPECT_EQ(value, 123);
    EXPECT_TRUE(parse_i64_line("\t -45\r\nnext line", value));
    EXPECT_EQ(value, -45);
    EXPECT_TRUE(parse_i64_line("7\nx", value));
    EXPECT_EQ(value, 7);
    EXPECT_TRUE(parse_i64_line("-9223372036854775808\r", value));
    EXPECT_EQ(value, std::numeric_limits<s64_t>::min());
}

TEST(Strings, ParseI64LineRejectsAnythingElse) {
    s64_t value = 99;
    for (const char* text : {"", "-", " ", "12a", "12 \r\n", "x", "--1", "+1", "1.5", "\r\n5", "- 5"}) {
        EXPECT_FALSE(parse_i64_line(text, value)) << text;
    }
    EXPECT_EQ(value, 99);
}

}  // namespace
}  // namespace znp
