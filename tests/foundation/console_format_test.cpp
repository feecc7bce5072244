#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <string>

#include "console_capture.hpp"
#include "foundation/status_line.hpp"
#include "shell/console.hpp"
#include "test_seed.hpp"
#include "text_match.hpp"

namespace znp {
namespace {

using Console::IntFormat;
using testing::console_output;

constexpr u64_t max_u64 = std::numeric_limits<u64_t>::max();

TEST(FormatInt, Modes) {
    EXPECT_EQ(Console::format_int(1234567, IntFormat::plain), "1234567");
    EXPECT_EQ(Console::format_int(1234567, IntFormat::commas), "1,234,567");
    EXPECT_EQ(Console::format_int(1048576, IntFormat::bytes), "1.00 MiB");
    EXPECT_EQ(Console::format_int(1048576, IntFormat::commas_and_bytes), "1,048,576 (1.00 MiB)");
}

TEST(FormatInt, CommasAtTheGroupEdges) {
    EXPECT_EQ(Console::format_int(0, IntFormat::commas), "0");
    EXPECT_EQ(Console::format_int(999, IntFormat::commas), "999");
    EXPECT_EQ(Console::format_int(1000, IntFormat::commas), "1,000");
    EXPECT_EQ(Console::format_int(999999, IntFormat::commas), "999,999");
    EXPECT_EQ(Console::format_int(max_u64, IntFormat::commas), "18,446,744,073,709,551,615");
    EXPECT_EQ(Console::format_int(max_u64, IntFormat::plain), "18446744073709551615");
}

TEST(FormatInt, SignedFormsTakeTheMagnitude) {
    EXPECT_EQ(Console::format_int_signed(-1234567, IntFormat::commas), "-1,234,567");
    EXPECT_EQ(Console::format_int_signed(1234, IntFormat::commas), "1,234");
    EXPECT_EQ(Console::format_int_signed(-1000, IntFormat::bytes), "-0.98 KiB");
    EXPECT_EQ(Console::format_int_signed(std::numeric_limits<s64_t>::min(), IntFormat::plain),
              "-9223372036854775808");
}

TEST(FormatBytes, Examples) {
    EXPECT_EQ(Console::format_bytes(0), "0 bytes");
    EXPECT_EQ(Console::format_bytes(999), "999 bytes");
    EXPECT_EQ(Console::format_bytes(1000), "0.98 KiB");
    EXPECT_EQ(Console::format_bytes(1024), "1.00 KiB");
    EXPECT_EQ(Console::format_bytes(1048576), "1.00 MiB");
    EXPECT_EQ(Console::format_bytes(1023999), "0.98 MiB");
    EXPECT_EQ(Console::format_bytes(1024000), "0.98 MiB");
    EXPECT_EQ(Console::format_bytes(u64_t{1} << 30), "1.00 GiB");
    EXPECT_EQ(Console::format_bytes(u64_t{1} << 40), "1.00 TiB");
    EXPECT_EQ(Console::format_bytes(u64_t{1} << 50), "1.00 PiB");
    EXPECT_EQ(Console::format_bytes(u64_t{1} << 60), "1.00 EiB");
    EXPECT_EQ(Console::format_bytes(max_u64), "16.0 EiB");
}

TEST(FormatBytes, ValuesThatRoundUpTakeTheNextForm) {
    EXPECT_EQ(Console::format_bytes(1023), "1.00 KiB");    // 999 thousandths
    EXPECT_EQ(Console::format_bytes(10239), "10.0 KiB");   // 9999 thousandths
    EXPECT_EQ(Console::format_bytes(102399), " 100 KiB");  // 99999 thousandths
    EXPECT_EQ(Console::format_bytes(1034), "1.01 KiB");    // the second decimal keeps its zero
    EXPECT_EQ(Console::format_bytes(10240), "10.0 KiB");
    EXPECT_EQ(Console::format_bytes(102400), " 100 KiB");
    EXPECT_EQ(Console::format_bytes(512 * 1024), " 512 KiB");
}

// The rules once more, with divisions and the library's decimal formats.
std::string format_bytes_model(u64_t value) {
    if (value <= 999) return std::to_string(value) + " bytes";
    const char* const units[] = {" KiB", " MiB", " GiB", " TiB", " PiB", " EiB"};
    unsigned unit = 0;
    while (value >= 1024000) {
        value /= 1024;
        ++unit;
    }
    const u64_t m = value * 1000 / 1024;
    const auto rounded = [m](u64_t step) { return (m + step / 2) / step; };
    char text[32];
    if (m < 9995) {
        std::snprintf(text, sizeof text, "%4.2f", static_cast<double>(rounded(10)) / 100);
    } else if (m < 99950) {
        std::snprintf(text, sizeof text, "%4.1f", static_cast<double>(rounded(100)) / 10);
    } else if (m < 999500) {
        std::snprintf(text, sizeof text, "%4lu", rounded(1000));
    } else {
        std::snprintf(text, sizeof text, "0.98");
        ++unit;
    }
    return std::string(text) + units[unit];
}

TEST(FormatBytes, MatchesTheModelAndKeepsItsWidth) {
    for (u64_t value = 0; value < 1100000; value += value < 200000 ? 1 : 13) {
        ASSERT_EQ(Console::format_bytes(value), format_bytes_model(value)) << value;
    }
    auto rng = testing::make_rng(1202);
    for (int i = 0; i < 200000; ++i) {
        const u64_t value = rng() >> (rng() % 64);
        const std::string text = Console::format_bytes(value);
        ASSERT_EQ(text, format_bytes_model(value)) << value;
        if (value > 999) {
            ASSERT_EQ(text.size(), 8u) << value;
        }
    }
    for (unsigned shift = 10; shift < 64; ++shift) {
        for (u64_t offset = 0; offset < 64; ++offset) {
            for (const u64_t scale : {u64_t{1}, u64_t{10}, u64_t{100}, u64_t{1000}}) {
                const u64_t value = (scale << shift) + offset - 32;
                ASSERT_EQ(Console::format_bytes(value), format_bytes_model(value)) << value;
            }
        }
    }
}

TEST(FormatSeconds, FixedPlaces) {
    EXPECT_EQ(Console::format_seconds(1.23456, 3), "1.235");
    EXPECT_EQ(Console::format_seconds(0, 3), "0.000");
    EXPECT_EQ(Console::format_seconds(1e6, 0), "1000000");
    EXPECT_EQ(Console::format_seconds(-2.5, 1), "-2.5");
}

TEST(PrintSeconds, SecondsAndHours) {
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_seconds(7200.5), 33u); }),
              "7200.500 seconds  ( 2.000 hours )");
    EXPECT_EQ(console_output([] { Console::print_seconds(1, 'T'); }),
              "\033[01;36m1.000 seconds  ( 0.000 hours )\033[01;37m");
    EXPECT_EQ(console_output([] { Console::print_seconds_line(1); }), "1.000 seconds  ( 0.000 hours )\n");
}

TEST(PrintElapsed, ErasesTheLineAndPrintsItsTime) {
    StatusLine line(5);
    line.restart();
    const std::string output = console_output([&] { Console::print_elapsed(line, 'G'); });
    const std::string expected =
        "\r     \rTime:    \033\\[01;32m0\\.[0-9]{3} seconds  \\( 0\\.000 hours \\)\033\\[01;37m\n";
    EXPECT_TRUE(testing::matches(output, expected)) << output;
}

}  // namespace
}  // namespace znp
