#include <gtest/gtest.h>

#include <cerrno>
#include <optional>

#include "compute/run/digit_output.hpp"
#include "compute/run/output_test_support.hpp"
#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/strings.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::dying;
using testing::exact_conversion;
using testing::exact_verification;
using testing::expect_digits;
using testing::file_text;
using testing::Number;
using testing::output;
using testing::OutputRun;
using testing::root;
using testing::square_root;
using testing::text_of;
using testing::UseCalls;
using namespace testing::sent;
using ::testing::ExitedWithCode;

// ---- Memory -----------------------------------------------------------------------------------------------

TEST(OutputMemory, NoHexadecimalDigitsNeedNone) {
    EXPECT_EQ(testing::write_hex_bytes(0), 0u);
    EXPECT_EQ(testing::write_hex_bytes(16), heap_bytes(16));
    EXPECT_EQ(testing::write_hex_bytes(17), heap_bytes(32));
}

TEST(OutputMemory, WordsHoldTheWantedDigits) {
    EXPECT_EQ(hexadecimal_words(1), 1u);
    EXPECT_EQ(hexadecimal_words(16), 1u);
    EXPECT_EQ(hexadecimal_words(17), 2u);
    for (u64_t hex = 1; hex < 2000; ++hex) {
        EXPECT_LE(hexadecimal_words(hex), least_fraction(precision_for(hex))) << hex;
    }
    for (u64_t dec = 0; dec < 2000; ++dec) {
        const u64_t extra = 19 * decimal_words(dec) - dec;
        EXPECT_TRUE(39 <= extra && extra <= 57) << dec;
    }
}

TEST(OutputMemory, SizesBeyondAllMultipliers) {
    const u64_t dec = u64_t{1} << 59;
    s32_t code = 0;
    console_output([&] {
        try {
            static_cast<void>(testing::conversion_bytes(dec, 1));
        } catch (const zn_exception& exception) {
            code = exception.code;
        }
    });
    EXPECT_EQ(code, error_code::size_beyond_tables);
}

// ---- Both stages ------------------------------------------------------------------------------------------

// With an exact conversion and verification behind the stages.
class DigitOutputTest : public ::testing::Test {
    const UseCalls calls_{exact_conversion, exact_verification};
};

using DigitOutputDeathTest = DigitOutputTest;

struct Golden {
    u64_t dec;
    const char* last;
    std::array<u64_t, 10> counts;
    u64_t residue;
};

// sqrt(2), from an independent source.
constexpr Golden golden_rows[] = {
    {100,
     "80731766797379907324784621070388503875343276415727",
     {10, 7, 8, 11, 9, 7, 10, 18, 12, 8},
     890894146615242185},
    {1000,
     "71111683916581726889419758716582152128229518488472",
     {108, 98, 109, 82, 100, 104, 90, 104, 113, 92},
     2205338105395037691},
    {10000,
     "15379048778808300220583350467465553230285873258351",
     {952, 1005, 1004, 980, 1016, 1001, 1032, 964, 1027, 1019},
     2169649888804222622},
};

TEST_F(DigitOutputTest, DigitsFromAnIndependentSource) {
    for (const Golden& golden : golden_rows) {
        OutputRun state(golden.dec);
        const Number number = root(state, 2);
        output(state, number);
        expect_digits(state, number);
        EXPECT_TRUE(state.run.last_digits.ends_with(golden.last)) << golden.dec;
        EXPECT_EQ(state.run.decimal_histogram, golden.counts) << golden.dec;
        EXPECT_EQ(state.run.binary_hash, golden.residue) << golden.dec;
    }
}

TEST_F(DigitOutputTest, EverySizeFromAHundredToFourHundred) {
    for (u64_t dec = 100; dec <= 400; ++dec) {
        OutputRun state(dec);
        const Number number = root(state, dec | 3);
        output(state, number);
        expect_digits(state, number);
        if (HasFailure()) FAIL() << dec;
    }
}

// 0 to 16 hexadecimal digits in the last word that is looked at.
TEST_F(DigitOutputTest, HexadecimalDigitsOfTheirOwnCount) {
    const u64_t dec = 200;
    for (u64_t hex = 1; hex <= hex_digits_for(dec); ++hex) {
        OutputRun state(dec, hex, 1);
        const Number number = root(state, 3);
        console_output([&] { write_hex(state.memory, number.view()); });
        EXPECT_EQ(file_text(state.hexadecimal_file()), text_of(number, 16, hex)) << hex;
    }
}

TEST_F(DigitOutputTest, NoHexadecimalDigitsNoFile) {
    OutputRun state(100, 0, 1);
    const Number number = root(state, 2);
    const std::string printed = output(state, number);
    expect_digits(state, number);
    EXPECT_FALSE(std::filesystem::exists(state.hexadecimal_file()));
    EXPECT_EQ(printed.find("Hexadecimal"), std::string::npos);
    EXPECT_EQ(state.run.events.text().find("exadecimal"), std::string::npos);
}

TEST_F(DigitOutputTest, LastDigits) {
    struct Row {
        u64_t dec, index, count;
    };
    for (const Row row : {Row{100, 0, 100}, Row{101, 50, 51}, Row{150, 50, 100}, Row{151, 100, 51},
                          Row{200, 100, 100}, Row{201, 150, 51}, Row{1234, 1150, 84}}) {
        OutputRun state(row.dec);
        const Number number = root(state, 7);
        output(state, number);
        EXPECT_EQ(state.run.last_digits_index, row.index) << row.dec;
        EXPECT_EQ(state.run.last_digits.size(), row.count) << row.dec;
        EXPECT_EQ(state.run.last_digits, text_of(number, 10, row.dec).substr(2 + row.index)) << row.dec;
    }
}

TEST_F(DigitOutputTest, NumbersAtTheEndsOfTheirRange) {
    const u64_t dec = 150;
    const upL_t fraction = OutputRun(dec).run.settings.p + 1;
    const std::vector<cdi> zeros(fraction + 1), ones(fraction + 1, ~cdi{0});
    const s64_t exp = -static_cast<s64_t>(fraction);
    std::vector<Number> numbers;
    numbers.push_back({zeros, exp});
    numbers.back().words.back() = 3;     // 3.000...
    numbers.push_back({ones, exp});      // next to 2^64
    numbers.push_back({ones, exp - 1});  // 0.999..., no word in front of the point
    numbers.push_back({ones, exp});
    numbers.back().words.back() = 0;  // the same, with one
    numbers.push_back({zeros, exp - 1});
    numbers.back().words.front() = 1;  // next to 0
    for (const Number& number : numbers) {
        OutputRun state(dec);
        output(state, number);
        expect_digits(state, number);
    }
}

// From the fewest words that serve to more than are looked at.
TEST_F(DigitOutputTest, LengthsOfTheNumber) {
    for (const u64_t dec : {u64_t{100}, u64_t{1000}, u64_t{1019}}) {
        const upL_t p = OutputRun(dec).run.settings.p;
        for (upL_t L = least_fraction(p); L <= most_fraction(p) + 3; ++L) {
            OutputRun state(dec);
            const Number number = square_root(5, L);
            output(state, number);
            expect_digits(state, number);
        }
    }
}

TEST_F(DigitOutputTest, RandomNumbers) {
    auto rng = testing::make_rng(3);
    for (int round = 0; round < 50; ++round) {
        OutputRun state(100 + rng() % 1000);
        Number number{std::vector<cdi>(state.run.settings.p + 2),
                      -static_cast<s64_t>(state.run.settings.p + 1)};
        for (cdi& word : number.words) word = rng();
        output(state, number);
        expect_digits(state, number);
    }
}

TEST_F(DigitOutputTest, TextsAndEventsInTheirOrder) {
    OutputRun state(1000);
    const std::string printed = output(state, root(state, 2));
    std::string plain;  // without colours
    for (upL_t i = 0; i < printed.size(); ++i) {
        if (printed[i] == '\033') {
            i = printed.find('m', i);
        } else {
            plain.push_back(printed[i]);
        }
    }
    EXPECT_EQ(plain.rfind("\nWriting Hexadecimal Digits:   831  digits written\n\nBase Converting:\n", 0), 0u)
        << plain;
    EXPECT_NE(plain.find("\n\nWriting Decimal Digits:   1,000  digits written\n"
                         "\nVerifying Base Conversion...\n"),
              std::string::npos)
        << plain;

    upL_t position = 0;
    for (const char* event : {"\tWriting hexadecimal Digits\r\n", "\tBase Converting\r\n",
                              "\tWriting Decimal Digits\r\n", "\tVerifying Base Conversion\r\n"}) {
        position = state.run.events.text().find(event, position);
        ASSERT_NE(position, std::string::npos) << event;
    }
    EXPECT_EQ(state.run.snapshots.size(), 1u);
}

TEST_F(DigitOutputTest, TheConversionAloneCountsAsComputation) {
    static OutputRun* current;
    OutputRun state(100);
    current = &state;
    const UseCalls calls(
        [](const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction, upL_t L,
           StatusLine* status) {
            EXPECT_TRUE(current->run.stopwatch.running());
            EXPECT_NE(status, nullptr);
            return exact_conversion(bp, radix, out, n, fraction, L, status);
        },
        [](const BasicParameters& bp, cdi radix, u64_t e, cdi integer, const cdi* fraction, upL_t L,
           u64_t& residue, StatusLine* status) {
            EXPECT_FALSE(current->run.stopwatch.running());
            EXPECT_NE(status, nullptr);
            return exact_verification(bp, radix, e, integer, fraction, L, residue, status);
        });
    output(state, root(state, 2));
    EXPECT_GT(state.run.stopwatch.wall_seconds(), 0);
}

TEST_F(DigitOutputDeathTest, NumbersOutOfRange) {
    OutputRun state(100);
    const s64_t p = static_cast<s64_t>(state.run.settings.p);
    const std::vector<cdi> words(state.run.settings.p + 2, 1);
    for (const BigFloat& number :
         {BigFloat(words.data(), words.size(), -p),             // two words in front of the point
          BigFloat(words.data(), words.size(), -p - 3),         // a word too far behind it
          BigFloat(words.data(), words.size(), -p - 1, false),  // negative
          BigFloat(words.data(), 0, 0)}) {                      // zero
        EXPECT_EXIT(dying([&] { write_hex(state.memory, number); }), ExitedWithCode(1),
                    "Number is out of range.");
        EXPECT_EXIT(dying([&] { convert_and_write_B(state.memory, number); }), ExitedWithCode(1),
                    "Number is out of range.");
    }
}

TEST_F(DigitOutputDeathTest, NumbersThatAreTooShort) {
    OutputRun state(100);
    const Number number = square_root(2, least_fraction(state.run.settings.p) - 1);
    EXPECT_EXIT(dying([&] { write_hex(state.memory, number.view()); }), ExitedWithCode(1),
                "Fewer words than digits need.");
    EXPECT_EXIT(dying([&] { convert_and_write_B(state.memory, number.view()); }), ExitedWithCode(1),
                "Fewer words than digits need.");

    OutputRun longer(100, 16 * (state.run.settings.p + 1) + 1, 1);
    EXPECT_EXIT(dying([&] { write_hex(longer.memory, root(state, 2).view()); }), ExitedWithCode(1),
                "Fewer words than digits need.");
}

// ---- Files that cannot be written -------------------------------------------------------------------------

template <class Exception>
std::optional<Exception> failure_of(const std::function<void()>& body, std::string& printed) {
    std::optional<Exception> result;
    printed = console_output([&] {
        try {
            body();
        } catch (const Exception& exception) {
            result = exception;
        }
    });
    return result;
}

TEST_F(DigitOutputTest, FullDisk) {
    // Seen when the file is closed, and already at the write.
    for (const u64_t dec : {u64_t{100}, u64_t{20000}}) {
        OutputRun state(dec);
        const Number number = root(state, 2);
        testing::put_on_full_disk(state.folder, "X - Dec - Y.txt");
        testing::put_on_full_disk(state.folder, "X - Hex - Y.txt");
        for (const bool hex : {true, false}) {
            std::string printed;
            const auto failure = failure_of<zn_exception>(
                [&] {
                    if (hex) write_hex(state.memory, number.view());
                    convert_and_write_B(state.memory, number.view());
                },
                printed);
            ASSERT_TRUE(failure) << dec;
            EXPECT_EQ(failure->code, ENOSPC);
            EXPECT_STREQ(failure->message, dec == 100 ? "Unable to close file." : "Error writing to file.");
            EXPECT_EQ(w_to_a_direct(failure->wide_text),
                      hex ? state.hexadecimal_file() : state.decimal_file());
            EXPECT_EQ(printed.find("digits written"), std::string::npos);
            EXPECT_TRUE(state.clean());
        }
    }
}

TEST_F(DigitOutputTest, ADiskThatBecomesFull) {
    const testing::SmallDisk result = testing::on_small_disk(16, [](const std::string& folder) {
        OutputRun state(20000, hex_digits_for(20000), 1, 0, std::wstring(folder.begin(), folder.end()));
        const Number number = root(state, 2);
        std::string printed;
        const auto failure = failure_of<zn_exception>(
            [&] {
                write_hex(state.memory, number.view());  // 16,609 digits and more than 16 KiB
            },
            printed);
        return failure && failure->code == ENOSPC && printed.find("digits written") == std::string::npos &&
               !std::filesystem::exists(folder + "/X - Hex - Y.txt") && state.clean();
    });
    if (result == testing::SmallDisk::not_permitted) GTEST_SKIP() << "file systems cannot be mounted here";
    EXPECT_EQ(result, testing::SmallDisk::passed);
}

TEST_F(DigitOutputTest, PathsThatCannotBeWritten) {
    OutputRun state(100);
    const Number number = root(state, 2);
    std::filesystem::create_directory(state.decimal_file());
    std::string printed;
    auto failure =
        failure_of<FileException>([&] { convert_and_write_B(state.memory, number.view()); }, printed);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, EISDIR);
    EXPECT_STREQ(failure->title, "Unable to create file.");
    EXPECT_EQ(printed.find("digits written"), std::string::npos);
    EXPECT_TRUE(state.clean());

    OutputRun missing(100, hex_digits_for(100), 1, 0, state.folder.wide_path() + L"/missing");
    failure = failure_of<FileException>([&] { write_hex(missing.memory, number.view()); }, printed);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, ENOENT);
    EXPECT_TRUE(missing.clean());
}

}  // namespace
}  // namespace znp
