// Every option of the Custom Compute a Constant screen: its dialog as text, and what it changes.
#include "shell/custom_menu.hpp"

#include <gtest/gtest.h>

#include "compute/constants/test_constant.hpp"
#include "expected_text.hpp"
#include "foundation/basic_file.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/memory.hpp"
#include "foundation/threads.hpp"
#include "shell/console.hpp"
#include "shell/custom_dialogs.hpp"
#include "temporary_folder.hpp"

namespace znp {
namespace {

using namespace testing::sent;
using testing::SettingsAccess;
using testing::TemporaryFolder;
using testing::TestConstant;

constexpr MachineMemory plenty{u64_t{1} << 50, u64_t{1} << 50};
const std::string option_prompt = W + "option: " + G + W;
const std::string digits_prompt = W + "Digits: " + G + W;
const std::string out_of_range = error_line("# of digits is out of range");

class CustomMenu : public ::testing::Test {
  protected:
    // The dialog of an option with these lines typed.
    std::string dialog(s64_t option, std::string_view input) {
        return testing::console_output([&] { run_custom_dialog(settings, option); }, input);
    }
    // A whole turn; gives what follows the screen's prompt.
    std::string turn(std::string_view input, const MachineMemory& machine = plenty) {
        const std::string screen =
            testing::console_output([&] { print_custom_screen(settings, machine); }) + option_prompt;
        const std::string all =
            testing::console_output([&] { started = custom_menu_turn(settings, machine); }, input);
        EXPECT_TRUE(all.starts_with(screen)) << all;
        return all.substr(std::min(screen.size(), all.size()));
    }
    // Settings whose constant is the tests' own.
    TestConstant& use_test_constant() {
        auto constant = std::make_unique<TestConstant>();
        TestConstant& test = *constant;
        SettingsAccess::set_constant(settings, std::move(constant));
        return test;
    }
    // On disk: half of the working memory as disk, at least 3 MiB of memory, and a limit of 1 GiB.
    TestConstant& use_swap_mode() {
        TestConstant& test = use_test_constant();
        test.has_run_S = true;
        test.memory_S = [](upL_t ML, upL_t minIO, u64_t& disk, upL_t& memory) {
            disk = ML / 2 + minIO;
            memory = 3 << 20;
            return true;
        };
        settings.set_memory_limit(u64_t{1} << 30);
        EXPECT_EQ(settings.set_mode(1), nullptr);
        return test;
    }
    u64_t outside() const { return settings.memTW() + RaidFileSettings::default_buffer; }

    ComputeParameters settings;
    bool started = false;
};

// ---- The turn ---------------------------------------------------------------------------------------------

TEST_F(CustomMenu, OptionsOutOfRangeAreAskedForAgain) {
    EXPECT_EQ(turn("9\n-1\n13\n0\n"), option_prompt + option_prompt + option_prompt);
    EXPECT_TRUE(started);
    use_swap_mode();
    EXPECT_EQ(turn("14\n-1\n0\n"), option_prompt + option_prompt + "\n" + R +
                                       "Swap Mode is not available in this version yet.\n" + W + pause);
    EXPECT_FALSE(started);
}

TEST_F(CustomMenu, ATurnChangesOneSetting) {
    EXPECT_EQ(turn("5\n7\n"), W + "Select the # of threads to use:\n" + W + "Threads: " + G + W);
    EXPECT_FALSE(started);
    EXPECT_EQ(settings.tds(), 7u);
}

TEST_F(CustomMenu, TooLittleMemoryIsWarnedOfAndStarts) {
    EXPECT_EQ(turn("0\n", {1, 1}), "");
    EXPECT_TRUE(started);
}

TEST_F(CustomMenu, ANegativeAmountOfMemoryCannotStart) {
    use_test_constant().memory_B = [](s32_t, upL_t, u64_t, u64_t, upL_t& bytes) {
        bytes = u64_t{1} << 63;
        return true;
    };
    SettingsAccess::update(settings);
    EXPECT_EQ(turn("0\n5\n1\n"),
              option_prompt + W + "Select the # of threads to use:\n" + W + "Threads: " + G + W);
    EXPECT_FALSE(started);
}

// What cannot run is told, and the screen goes on.
TEST_F(CustomMenu, SettingsThatCannotRunDoNotStart) {
    const auto expect_refusal = [&](const std::string& text) {
        EXPECT_EQ(turn("0\n\n"), "\n" + R + text + "\n" + W + pause);
        EXPECT_FALSE(started);
    };
    ASSERT_EQ(settings.set_digits_per_file(1'000'000), nullptr);
    expect_refusal("Compressed output is not available in this version yet.");
    ASSERT_EQ(settings.set_digits_per_file(0), nullptr);
    TestConstant& test = use_test_constant();
    test.has_run_B = false;
    expect_refusal("The computation of Test is not available in this version yet.");
    test.has_run_B = true;
    test.memory_B = [](s32_t, upL_t, u64_t, u64_t, upL_t&) -> bool {
        throw zn_exception(error_code::unspecified, nullptr, "No multiplier reaches this size.");
    };
    SettingsAccess::update(settings);
    expect_refusal("No multiplier reaches this size.");
}

TEST_F(CustomMenu, TheLoopEndsWithTheRun) {
    const TemporaryFolder folder;
    const std::string output = testing::console_output(
        [&] { custom_menu(settings); }, "3\n100\n4\n0\n5\n1\n6\n" + folder.path() + "\n0\n0\n3\n");
    EXPECT_TRUE(
        output.ends_with("5820974944 5923078164 0628620899 8628034825 3421170679 :  " + G + "100" + W + "\n"))
        << output;
    EXPECT_TRUE(file_exists(folder.wide_path() + L"/Pi - Dec - Chudnovsky.txt"));
}

// ---- 1: the constant --------------------------------------------------------------------------------------

TEST_F(CustomMenu, ConstantOpensItsMenu) {
    const std::string menu = testing::without_colors(dialog(1, "2\n"));
    EXPECT_TRUE(menu.starts_with("Compute a Constant: (in ascending order of difficulty to compute)\n\n"));
    EXPECT_EQ(settings.id(), constant_id::e);
}

TEST_F(CustomMenu, AConstantWithOneAlgorithmResetsTheAlgorithm) {
    dialog(2, "1\n");
    EXPECT_EQ(settings.algorithm(), 1);
    dialog(1, "0\n200\n");
    EXPECT_EQ(settings.constant().get_name(), "Sqrt(200)");
    EXPECT_EQ(settings.algorithm(), 0);
}

TEST_F(CustomMenu, ARefusedConstantLeavesTheOldOne) {
    EXPECT_TRUE(
        dialog(1, "10\n20\n\n").ends_with(error_line("Invalid constant, or not yet implemented.") + pause));
    EXPECT_EQ(settings.id(), constant_id::pi);
}

// ---- 2: the algorithm -------------------------------------------------------------------------------------

TEST_F(CustomMenu, AlgorithmsOfPi) {
    EXPECT_EQ(dialog(2, "1\n"), W + "\n\nSelect the algorithm:\n\n" + "   0    " + T +
                                    "Chudnovsky Formula      (fastest)\n\n" + W + "   1    " + T +
                                    "Ramanujan's Formula     (~40% slower)\n\n" + W + W + "Algorithm: " + G +
                                    W);
    EXPECT_EQ(settings.algorithm(), 1);
}

TEST_F(CustomMenu, AlgorithmNumbersOutOfRangeAreAskedForAgain) {
    const std::string prompt = W + "Algorithm: " + G + W;
    EXPECT_TRUE(dialog(2, "2\n-1\n4294967296\n1\n").ends_with(prompt + prompt + prompt + prompt));
    EXPECT_EQ(settings.algorithm(), 1);
    settings.choose_constant(constant_id::sqrt, 2);
    EXPECT_EQ(dialog(2, "1\n0\n"), W + "\n\nSelect the algorithm:\n\n" + "   0    " + T +
                                       "1st order Newton's Method\n" + W + prompt + prompt);
}

TEST_F(CustomMenu, TheAlgorithmChangesTheEstimate) {
    use_test_constant().memory_B = [](s32_t algorithm, upL_t, u64_t, u64_t, upL_t& bytes) {
        bytes = 1000 + static_cast<upL_t>(algorithm);
        return true;
    };
    dialog(2, "1\n");
    EXPECT_EQ(settings.ML(), 1001u);
    dialog(2, "0\n");
    EXPECT_EQ(settings.ML(), 1000u);
}

// ---- 3 and 4: digits --------------------------------------------------------------------------------------

const std::string decimal_question = W + "Select the # of decimal digits to compute:\n";
const std::string hexadecimal_question =
    W + "Select the # of hexadecimal digits to compute: (0 to disable)\n";

TEST_F(CustomMenu, DecimalDigits) {
    EXPECT_EQ(dialog(3, "1000000\n"), decimal_question + digits_prompt);
    EXPECT_EQ(settings.dec(), 1'000'000u);
    EXPECT_EQ(settings.hex(), 830'483u);
}

TEST_F(CustomMenu, NinetyNineDigitsAreOutOfRangeAnd100Accepted) {
    EXPECT_EQ(dialog(3, "99\n100\n"), decimal_question + digits_prompt + out_of_range + digits_prompt);
    EXPECT_EQ(settings.dec(), 100u);
}

TEST_F(CustomMenu, DigitsThatAreNoneAreAskedForAgain) {
    std::string expected = decimal_question;
    for (int i = 0; i < 7; i++) expected += digits_prompt + out_of_range;
    EXPECT_EQ(dialog(3, "\nabc\n-1000\n1,000,000\n2.5b\n90000000000051\n91 t\n90000000000050\n"),
              expected + digits_prompt);
    EXPECT_EQ(settings.dec(), 90'000'000'000'050u);
}

TEST_F(CustomMenu, HexadecimalDigitsSetTheDecimalOnes) {
    EXPECT_EQ(dialog(4, "1000000\n"), hexadecimal_question + digits_prompt);
    EXPECT_EQ(settings.hex(), 1'000'000u);
    EXPECT_EQ(settings.dec(), 1'204'119u);
    EXPECT_EQ(dialog(4, "82\n-1\n83\n84\n"), hexadecimal_question + digits_prompt + out_of_range +
                                                 digits_prompt + out_of_range + digits_prompt + out_of_range +
                                                 digits_prompt);
    EXPECT_EQ(settings.dec(), 101u);
}

TEST_F(CustomMenu, NoHexadecimalDigits) {
    EXPECT_EQ(dialog(4, "0\n"), hexadecimal_question + digits_prompt);
    EXPECT_EQ(settings.hex(), 0u);
    EXPECT_EQ(settings.dec(), 50'000'000u);
}

TEST_F(CustomMenu, DigitsChangeTheEstimate) {
    use_test_constant().memory_B = [](s32_t, upL_t, u64_t digits, u64_t, upL_t& bytes) {
        bytes = digits;
        return true;
    };
    dialog(3, "5000\n");
    EXPECT_EQ(settings.ML(), 5000u);
    dialog(4, "5000\n");
    EXPECT_EQ(settings.ML(), 6020u);
}

TEST_F(CustomMenu, FewerDigitsThanCompressionNeedsTurnItOff) {
    ASSERT_EQ(settings.set_digits_per_file(1'000'000), nullptr);
    dialog(3, "1300000\n");
    EXPECT_EQ(settings.digits_per_file(), 1'000'000u);
    dialog(3, "1048575\n");
    EXPECT_EQ(settings.digits_per_file(), 0u);
}

// The decimal digits would do, their hexadecimal ones would not.
TEST_F(CustomMenu, FewerHexadecimalDigitsThanCompressionNeedsTurnItOffToo) {
    ASSERT_EQ(settings.set_digits_per_file(1'000'000), nullptr);
    dialog(4, "1048576\n");
    EXPECT_EQ(settings.digits_per_file(), 1'000'000u);
    dialog(4, "1048575\n");
    EXPECT_EQ(settings.dec(), 1'262'610u);
    EXPECT_EQ(settings.digits_per_file(), 0u);
}

TEST_F(CustomMenu, NineMillionDigitsEndSwapModeSilently) {
    use_swap_mode();
    EXPECT_EQ(dialog(3, "10000000\n"), decimal_question + digits_prompt);
    EXPECT_EQ(settings.mode(), ComputeMode::swap);
    EXPECT_EQ(dialog(3, "9999999\n"), decimal_question + digits_prompt);
    EXPECT_EQ(settings.mode(), ComputeMode::ram_only);
    EXPECT_EQ(settings.Fsize(), 0u);
    dialog(3, "10000000\n");
    EXPECT_EQ(settings.mode(), ComputeMode::ram_only);
}

// ---- 5: threads -------------------------------------------------------------------------------------------

TEST_F(CustomMenu, ThreadsAreAskedForUntilTheyAreInRange) {
    const std::string prompt = W + "Threads: " + G + W;
    const std::string again = prompt + Y + "Please choose a number between 1 and 256.\n" + W;
    EXPECT_EQ(dialog(5, "0\n257\n-1\n\nx\n256\n"),
              W + "Select the # of threads to use:\n" + again + again + again + again + again + prompt);
    EXPECT_EQ(settings.tds(), 256u);
}

TEST_F(CustomMenu, ThreadsChangeTheEstimate) {
    use_test_constant().memory_B = [](s32_t, upL_t, u64_t, u64_t threads, upL_t& bytes) {
        bytes = 1000 * threads;
        return true;
    };
    dialog(5, "3\n");
    EXPECT_EQ(settings.ML(), 3000u);
}

// ---- 6: the path ------------------------------------------------------------------------------------------

const std::string path_question =
    W + "Enter the path to write the digits to. (e.g. \"C:\" or \"C:/temp\" )\n\n";
const std::string path_prompt = W + "Path: " + G + W;
const std::string unwritable = error_line("Unable to write to path.");

TEST_F(CustomMenu, Path) {
    const TemporaryFolder folder;
    EXPECT_EQ(dialog(6, folder.path() + "\n"), path_question + path_prompt);
    EXPECT_EQ(settings.path(), folder.wide_path());
    EXPECT_TRUE(folder.is_empty());
    EXPECT_EQ(dialog(6, "\n"), path_question + path_prompt);  // the current folder
    EXPECT_EQ(settings.path(), L"");
}

TEST_F(CustomMenu, APathThatCannotBeWrittenIsAskedForAgainAndLeavesTheOldOne) {
    const TemporaryFolder folder;
    ASSERT_EQ(settings.set_path(folder.wide_path()), nullptr);
    // The last of them is no text of this system: it must not end the program.
    EXPECT_EXIT(testing::dying([&] { run_custom_dialog(settings, 6); },
                               folder.path() + "/missing\n/proc\n\xc3\xa4\n"),
                ::testing::ExitedWithCode(1), "(Unable to write to path(.|\n)*){3}The input has ended");
    EXPECT_EQ(dialog(6, folder.path() + "/missing\n\xc3\xa4\n" + folder.path() + "/\n"),
              path_question + path_prompt + unwritable + path_prompt + unwritable + path_prompt);
    EXPECT_EQ(settings.path(), folder.wide_path() + L"/");
}

TEST_F(CustomMenu, APathWithBlanksIsTheWholeLine) {
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/a folder";
    std::filesystem::create_directory(path);
    dialog(6, path + "\n");
    EXPECT_EQ(settings.path(), folder.wide_path() + L"/a folder");
}

// ---- 7: the output ----------------------------------------------------------------------------------------

const std::string format_question =
    W + "Select an Output Format:\n\n" + G + "  0     Write to a text file. Do not compress.\n" +
    "  1     Compress digits into a single .zld file.\n" +
    "  2     Compress digits into multiple .zld files with a user-specified\n" +
    "        number of digits per file.\n\n" + W;
const std::string per_file_prompt = W + "Digits per file: " + G + W;

TEST_F(CustomMenu, OutputInOneCompressedFile) {
    EXPECT_EQ(dialog(7, "3\n-1\n1\n"), format_question + option_prompt + option_prompt + option_prompt);
    EXPECT_EQ(settings.digits_per_file(), ~u64_t{0});
    EXPECT_EQ(dialog(7, "0\n"), format_question + option_prompt);
    EXPECT_EQ(settings.digits_per_file(), 0u);
}

TEST_F(CustomMenu, OutputInManyCompressedFiles) {
    EXPECT_EQ(dialog(7, "2\n999999\n50000001\n0\n50000000\n"), format_question + option_prompt +
                                                                   per_file_prompt + per_file_prompt +
                                                                   per_file_prompt + per_file_prompt);
    EXPECT_EQ(settings.digits_per_file(), 50'000'000u);
    dialog(7, "2\n1000000\n");
    EXPECT_EQ(settings.digits_per_file(), 1'000'000u);
}

TEST_F(CustomMenu, TooSmallForCompression) {
    const std::string told = W + "Computation is too small for compression.\n\n" + pause;
    ASSERT_EQ(settings.set_dec(1'048'575), nullptr);
    EXPECT_EQ(dialog(7, "\n"), told);
    ASSERT_EQ(settings.set_dec(1'048'576), nullptr);  // 870,824 hexadecimal digits
    EXPECT_EQ(dialog(7, "\n"), told);
    ASSERT_EQ(settings.set_hex(0), nullptr);
    EXPECT_EQ(dialog(7, "1\n"), format_question + option_prompt);
    EXPECT_EQ(settings.digits_per_file(), ~u64_t{0});
    SettingsAccess::set_hex(settings, 1);
    EXPECT_EQ(dialog(7, "\n"), told);
    EXPECT_EQ(settings.digits_per_file(), 0u);
}

// ---- 8: the mode ------------------------------------------------------------------------------------------

const std::string mode_question =
    W + "Select a Mode:\n\n" + "Option      Mode            Memory    Disk Memory\n\n";

std::string mode_row_1(u64_t memory) {
    return " 1      Ram Only            " + Y + Console::format_bytes(memory) + W + "\n";
}
std::string mode_row_2(const std::string& memory, const std::string& disk) {
    return G + " 2      Disk Swapping      >" + Y + memory + W + "    " + T + disk + W + "\n";
}

TEST_F(CustomMenu, SwapModeIsRefusedAsLongAsItHasNoEstimates) {
    const std::string refused = error_line("Swap Mode is not available in this version yet.");
    EXPECT_EQ(dialog(8, "2\n0\n3\n2\n1\n"), mode_question + mode_row_1(settings.Osize() + settings.ML()) +
                                                mode_row_2("N/A     ", "N/A     ") + option_prompt + refused +
                                                option_prompt + option_prompt + option_prompt + refused +
                                                option_prompt);
    EXPECT_EQ(settings.mode(), ComputeMode::ram_only);
}

TEST_F(CustomMenu, ModesWithTheirCosts) {
    use_swap_mode();
    ASSERT_EQ(settings.set_mode(0), nullptr);
    const std::string memory = Console::format_bytes(outside() + (3 << 20));
    const std::string disk = Console::format_bytes(((u64_t{1} << 30) - outside()) / 2 + settings.minIO());
    const std::string screen = mode_question + mode_row_1(settings.memTW() + TestConstant::default_memory) +
                               mode_row_2(memory, disk);
    EXPECT_EQ(dialog(8, "2\n"), screen + option_prompt);
    EXPECT_EQ(settings.mode(), ComputeMode::swap);
    EXPECT_EQ(settings.ML(), (u64_t{1} << 30) - outside());
    EXPECT_EQ(Console::format_bytes(settings.Osize() + settings.Msize()), memory);
    EXPECT_EQ(Console::format_bytes(settings.Fsize()), disk);
    EXPECT_EQ(dialog(8, "0\n1\n"), screen + option_prompt + option_prompt);  // the same on disk
    EXPECT_EQ(settings.mode(), ComputeMode::ram_only);
    EXPECT_EQ(settings.ML(), TestConstant::default_memory);
    EXPECT_EQ(settings.Fsize(), 0u);
}

TEST_F(CustomMenu, TooFewDigitsForSwapMode) {
    use_swap_mode();
    ASSERT_EQ(settings.set_dec(999'999), nullptr);
    const std::string screen = dialog(8, "2\n1\n");
    EXPECT_TRUE(screen.ends_with(option_prompt + error_line("Too few digits for swap mode.") + option_prompt))
        << screen;
    ASSERT_EQ(settings.set_dec(1'000'000), nullptr);
    dialog(8, "2\n");
    EXPECT_EQ(settings.mode(), ComputeMode::swap);
}

TEST_F(CustomMenu, AnAlgorithmWithoutSwapModeHasOneRow) {
    use_test_constant();
    SettingsAccess::set_algorithm(settings, 2);  // beyond those that the constant knows
    EXPECT_EQ(dialog(8, "2\n1\n"),
              mode_question + mode_row_1(settings.Osize() + settings.ML()) + option_prompt + option_prompt);
}

TEST_F(CustomMenu, AModeWithoutAnEstimateHasNoCost) {
    use_test_constant().memory_B = [](s32_t, upL_t, u64_t, u64_t, upL_t&) -> bool {
        throw zn_exception(error_code::unspecified, nullptr, "No multiplier reaches this size.");
    };
    EXPECT_NE(dialog(8, "1\n").find("Ram Only            " + Y + "N/A     " + W + "\n"), std::string::npos);
}

// ---- 9 to 13: on disk -------------------------------------------------------------------------------------

std::string not_available(const std::string& what) {
    return "\n" + R + what + " is not available in this version yet.\n" + W + pause;
}

TEST_F(CustomMenu, WithoutASwapConfigurationTheDefaultPathIsTold) {
    use_swap_mode();
    EXPECT_EQ(turn("9\n\n"), R + "\n\nNo swap configuration set. Will use default path.\n\n" + pause);
}

TEST_F(CustomMenu, WhatTheSwapConfigurationWaitsForIsTold) {
    const TemporaryFolder folder;
    use_swap_mode();
    EXPECT_EQ(turn("10\n\n"), not_available("The change of the swap configuration"));
    EXPECT_EQ(turn("11\n\n"), not_available("The I/O performance analysis"));
    EXPECT_EQ(turn("12\n\n"), not_available("The choice of the minimum I/O size"));
    settings.change_swap(
        [&](SwapConfiguration& swap) { return swap.set_paths("raid0", {folder.wide_path()}); });
    EXPECT_EQ(turn("9\n\n"), not_available("The view of the swap configuration"));
    EXPECT_FALSE(started);
}

TEST_F(CustomMenu, MemoryLimit) {
    use_swap_mode();
    EXPECT_EQ(turn("13\n768MB\n"), W + "Please Select a Memory Cap:\n\n" +
                                       "Enter a memory limit: (e.g. 768MB, 2.5GB, etc...)\n" + W +
                                       "Bytes: " + G + W);
    EXPECT_EQ(settings.memory_limit(), u64_t{768} << 20);
    EXPECT_EQ(settings.ML(), (u64_t{768} << 20) - outside());
    turn("13\n1\n");  // the least that works
    EXPECT_EQ(settings.ML(), u64_t{3} << 20);
    turn("13\n2.5 g\n");
    EXPECT_EQ(settings.memory_limit(), 2'684'354'560u);
    turn("13\n8E\n");
    EXPECT_EQ(settings.memory_limit(), 0x77fffffffffffff1u);
}

TEST_F(CustomMenu, MemoryLimitInMemoryIsNotOffered) {
    EXPECT_EQ(turn("13\n9\n5\n1\n").find("Memory Cap"), std::string::npos);
}

// ---- The end of the input ---------------------------------------------------------------------------------

using CustomMenuDeathTest = CustomMenu;

TEST_F(CustomMenuDeathTest, TheEndOfTheInputEndsTheProgramAtEveryPrompt) {
    const char* const ended = "The input has ended before an answer was given\\.";
    for (const char* input : {"",
                              "9\n",
                              "1\n",
                              "1\n11\n",
                              "1\n0\n",
                              "1\n0\n4\n",
                              "1\n4\n1\n",
                              "1\n10\n",
                              "1\n10\n20\n",
                              "2\n",
                              "2\n2\n",
                              "3\n",
                              "3\n99\n",
                              "4\n",
                              "4\n1\n",
                              "5\n",
                              "5\n0\n",
                              "6\n",
                              "6\n/missing folder\n",
                              "7\n",
                              "7\n3\n",
                              "7\n2\n",
                              "7\n2\n1\n",
                              "3\n100\n7\n",
                              "8\n",
                              "8\n2\n",
                              "7\n1\n0\n"}) {
        EXPECT_EXIT(testing::dying([&] { custom_menu(settings); }, input), ::testing::ExitedWithCode(1),
                    ended)
            << input;
    }
    use_swap_mode();
    for (const char* input : {"9\n", "10\n", "11\n", "12\n", "13\n", "0\n"}) {
        EXPECT_EXIT(testing::dying([&] { custom_menu(settings); }, input), ::testing::ExitedWithCode(1),
                    ended)
            << input;
    }
}

}  // namespace
}  // namespace znp
