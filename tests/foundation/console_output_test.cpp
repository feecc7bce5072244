#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <functional>
#include <iostream>
#include <string>

#include "console_capture.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

using testing::console_output;
using namespace testing::sent;

TEST(ConsoleColors, SequenceOfEachLetter) {
    const std::pair<char, const char*> table[] = {
        {'R', "\033[01;31m"}, {'G', "\033[01;32m"}, {'Y', "\033[01;33m"}, {'B', "\033[01;34m"},
        {'P', "\033[01;35m"}, {'T', "\033[01;36m"}, {'w', "\033[01;37m"}, {'W', "\033[01;37m"},
        {'r', "\033[22;31m"}, {'g', "\033[22;32m"}, {'y', "\033[22;33m"}, {'b', "\033[22;34m"},
        {'p', "\033[22;35m"}, {'t', "\033[22;36m"},
    };
    for (const auto& [letter, sequence] : table) EXPECT_STREQ(Console::color_sequence(letter), sequence);
}

TEST(ConsoleColors, EveryOtherCharacterIsBrightWhite) {
    const std::string colored = "RGYBPTrgybpt";
    for (int c = -128; c < 256; ++c) {
        const char letter = static_cast<char>(c);
        if (colored.find(letter) != std::string::npos) continue;
        EXPECT_EQ(Console::color_sequence(letter), W) << c;
    }
}

TEST(ConsoleColors, SetColorLeavesBlankAloneAndResetUsesTheDefaults) {
    EXPECT_EQ(console_output([] { Console::set_color(' '); }), "");
    EXPECT_EQ(console_output([] { Console::set_color('y'); }), "\033[22;33m");
    EXPECT_EQ(console_output([] { Console::reset_color(); }), "\033[39;49m");
}

TEST(ConsoleOutput, PrintSwitchesTheColorAndLeavesIt) {
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print("abc"), 3u); }), "abc");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print("abc", 'G'), 3u); }), G + "abc");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print(std::string("ab"), 'R'), 2u); }), R + "ab");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print(L"wide", 'Y'), 4u); }), Y + "wide");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print(std::wstring(L"wide")), 4u); }), "wide");
}

TEST(ConsoleOutput, PrintlnCountsItsLineFeed) {
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::println("abc", 'G'), 4u); }), G + "abc\n");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::println(std::string("abc")), 4u); }), "abc\n");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::println(L"abc"), 4u); }), "abc\n");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::println(std::wstring(L""), 'R'), 1u); }), R + "\n");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_newline(), 1u); }), "\n");
}

TEST(ConsoleOutput, EachPrintIsFlushed) {
    testing::StdoutCapture capture;
    Console::print("visible at once");
    const std::string seen = capture.text_so_far();
    capture.text();
    EXPECT_EQ(seen, "visible at once");
}

// A null text fails the stream as the library does: nothing comes out until the state is cleared.
void expect_bad_bit(const std::function<upL_t()>& body) {
    bool bad = false;
    const std::string output = console_output([&] {
        EXPECT_EQ(body(), 0u);
        bad = std::cout.bad();
        Console::print("lost");
        std::cout.clear();
        Console::print("back");
    });
    std::cout.clear();
    EXPECT_TRUE(bad);
    EXPECT_EQ(output, "back");
}

TEST(ConsoleOutput, NullTextSetsTheBadBit) {
    expect_bad_bit([] { return Console::print(static_cast<const char*>(nullptr)); });
    expect_bad_bit([] { return Console::print(static_cast<const wchar_t*>(nullptr)); });
    expect_bad_bit([] { return Console::println(static_cast<const char*>(nullptr)); });
    expect_bad_bit([] { return Console::println(static_cast<const wchar_t*>(nullptr)); });
}

TEST(ConsoleOutput, WideTextAbove127OnNarrowOutputIsReportedAndThrown) {
    std::string thrown;
    const std::string output = console_output([&] {
        try {
            Console::print(std::wstring(L"a\u0080"));
        } catch (const char* text) {
            thrown = text;
        }
    });
    EXPECT_EQ(thrown, "w_to_a_direct(): Direct Conversion of > 127 wchar_t to char.");
    EXPECT_EQ(output, "\n" + R + thrown + "\n" + W);
}

TEST(ConsoleOutput, YesNoAndPassFail) {
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_yes_no(true), 4u); }), G + "Yes" + W + "\n");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_yes_no(false), 3u); }), R + "No" + W + "\n");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_pass_fail(true), 6u); }), G + "Passed" + W);
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_pass_fail(false), 6u); }), R + "Failed" + W);
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_pass_fail_line(false), 7u); }),
              R + "Failed" + W + "\n");
}

TEST(ConsoleOutput, LabelledValues) {
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_labelled("Size", "5", 'G'), 7u); }),
              W + "Size: " + G + "5" + W);
    EXPECT_EQ(
        console_output([] { EXPECT_EQ(Console::print_labelled_line("Size", std::string("5"), 'G'), 8u); }),
        W + "Size: " + G + "5" + W + "\n");
    EXPECT_EQ(console_output([] { Console::print_labelled_line("Path", std::wstring(L"/x"), 'T'); }),
              W + "Path: \033[01;36m/x" + W + "\n");
    EXPECT_EQ(console_output([] { Console::print_labelled_line("errno", std::string("2")); }), "errno: 2\n");
}

TEST(ConsoleOutput, FieldsAlignTheirValues) {
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_field(8, "Name", std::string("x"), 'G'), 9u); }),
              "Name    " + G + "x" + W);
    EXPECT_EQ(console_output([] { Console::print_field("Name", "x"); }), "Name            x");
    EXPECT_EQ(console_output([] { Console::print_field_line("Name", "x"); }), "Name            x\n");
    EXPECT_EQ(console_output([] { Console::print_field(6, "Path", std::wstring(L"/"), 'R'); }),
              "Path  " + R + "/" + W);
    EXPECT_EQ(console_output([] { Console::print_field_line(6, "Path", std::wstring(L"/")); }), "Path  /\n");
    EXPECT_EQ(console_output([] { Console::print_field_line(6, "Path", std::string("/"), 'Y'); }),
              "Path  " + Y + "/" + W + "\n");
}

TEST(ConsoleOutput, FieldLabelAsLongAsTheWidthLosesItsLastCharacter) {
    EXPECT_EQ(console_output([] { Console::print_field(4, "Name", std::string("x")); }), "Nam x");
    EXPECT_EQ(console_output([] { Console::print_field(4, "Longer name", std::string("x")); }), "Lon x");
    EXPECT_EQ(console_output([] { Console::print_field(1, "Name", std::string("x")); }), " x");
    EXPECT_EQ(console_output([] { Console::print_field(0, "Name", std::string("x")); }), "x");
}

TEST(ConsoleOutput, Padding) {
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_padded(5, "abc", 'G'), 5u); }), G + "abc  " + W);
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_padded_left(5, "abc", 'G'), 5u); }),
              G + "  abc" + W);
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_padded(2, "abc"), 3u); }), "abc");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_padded_left(3, "abc"), 3u); }), "abc");
}

TEST(ConsoleOutput, ClearLineBlanksOneColumnMoreThanItsWidth) {
    EXPECT_EQ(console_output([] { Console::clear_line(3); }), "\r    \r");
    EXPECT_EQ(console_output([] { Console::clear_line(); }), '\r' + std::string(80, ' ') + '\r');
}

TEST(ConsoleOutput, Errors) {
    EXPECT_EQ(console_output([] { Console::print_error("It broke."); }), "\n" + R + "It broke.\n" + W);
    EXPECT_EQ(console_output([] { Console::print_error("It broke.", true); }), "\n" + R + "It broke.\n");
}

TEST(ConsoleOutput, EntryErrors) {
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_entry_error(nullptr), 0); }), "");
    EXPECT_EQ(console_output([] { EXPECT_EQ(Console::print_entry_error("Too large."), 1); }),
              W + "Error: " + Y + "Too large." + W + "\n\n");
}

// A child process whose standard streams have the wide orientation; gives its output.
std::string wide_console_output(const std::function<void()>& body, std::string_view input = {}) {
    const int output = testing::temporary_file();
    const int source = testing::temporary_file(input);
    const auto descriptor_path = [](int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); };
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        // Opening the streams anew takes their orientation away.
        if (std::freopen(descriptor_path(output).c_str(), "r+", stdout) == nullptr) std::_Exit(2);
        if (std::freopen(descriptor_path(source).c_str(), "r", stdin) == nullptr) std::_Exit(3);
        if (std::fwide(stdout, 1) <= 0 || std::fwide(stdin, 1) <= 0) std::_Exit(4);
        body();
        std::fflush(stdout);
        std::_Exit(std::fwide(stdout, 0) > 0 ? 0 : 5);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    std::string text = testing::file_contents(output);
    ::close(output);
    ::close(source);
    return text;
}

TEST(ConsoleWideOutput, NarrowAndWideTextGoToTheWideStream) {
    EXPECT_EQ(wide_console_output([] {
                  Console::print("narrow ", 'G');
                  Console::println(L"wide", 'R');
                  Console::print_labelled_line("Path", std::wstring(L"/x"), 'Y');
              }),
              G + "narrow " + R + "wide\n" + W + "Path: " + Y + "/x" + W + "\n");
}

TEST(ConsoleWideOutput, NullTextSetsTheBadBitOfTheWideStream) {
    EXPECT_EQ(wide_console_output([] {
                  Console::print(static_cast<const wchar_t*>(nullptr));
                  if (!std::wcout.bad()) std::_Exit(6);
                  std::wcout.clear();
                  Console::print(static_cast<const char*>(nullptr));
                  if (!std::wcout.bad()) std::_Exit(7);
                  std::wcout.clear();
                  Console::print("back");
              }),
              "back");
}

TEST(ConsoleWideInput, LinesOfEitherFormAreRead) {
    EXPECT_EQ(wide_console_output(
                  [] {
                      Console::println(Console::read_line());
                      Console::println(Console::read_line_wide('G'));
                      Console::println(Console::read_line_wide());
                  },
                  "first\nsecond\nlast without line feed"),
              "first\n" + G + W + "second\nlast without line feed\n");
}

}  // namespace
}  // namespace znp
