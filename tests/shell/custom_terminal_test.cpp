// The Custom Compute a Constant screen as a user has it: the program in a terminal, every option of a run in
// memory, all of its text.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "compute/settings/compute_parameters.hpp"
#include "expected_text.hpp"
#include "foundation/memory.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"
#include "shell/cpu_features.hpp"
#include "temporary_folder.hpp"
#include "terminal.hpp"

namespace znp {
namespace {

using namespace testing::sent;
using testing::TemporaryFolder;
using testing::Terminal;

const std::string y = "\033[22;33m";
const std::string option_prompt = W + "option: " + G;
const std::string digits_prompt = W + "Digits: " + G;
const std::string pause_prompt = W + "Press ENTER to continue . . ." + T;

// What the test wants to see of the settings. The estimates are those of a record that it changes alongside.
struct Shown {
    std::string constant = G + "Pi";
    std::string algorithm = "Chudnovsky Formula";
    std::string dec = "50,000,000", hex = "41,524,102";
    std::string threads;
    std::string path = "Default Path";
    std::string output = T + "No - Write digits to a text file." + W + "\n";  // all lines of it
    u64_t output_bytes = 91'524'102;
};

std::string thread_text(u32_t threads) {
    return T + to_string_u64(threads) + W + T + (threads == 1 ? " thread\n" : " threads\n") + W;
}

std::string start_text(u64_t needed) {
    std::string text = "  0     " + G + "Start Computation!\n" + W;
    const u64_t free = available_memory(), all = physical_memory();
    if (free != 0 && free < needed) {
        text += R + "        Warning: There is insufficient physical memory.\n" + W;
    } else if (all != 0 && all < needed) {
        text += R + "        Warning: There is insufficient available physical memory.\n" + W;
    }
    return text;
}

class CustomTerminal : public ::testing::Test {
  protected:
    CustomTerminal() { shown.threads = thread_text(record.tds()); }

    std::string screen() const {
        const u64_t needed = record.Osize() + record.ML();
        return "\n" + P + "Custom Compute a Constant\n\n" + W +
               "Current Settings: (select option # to change setting)\n\n"
               "  1     Constant:    " +
               shown.constant + "\n" + W + "  2     Algorithm:   " + Y + shown.algorithm + "\n" + W +
               "\n"
               "  3     Decimal Digits:         " +
               G + shown.dec + W + "\n" + "  4     Hexadecimal Digits:     " + G + shown.hex + W +
               "\n\n"
               "  5     Multi-Threading:    " +
               shown.threads + "  6     Write Digits To:    " + T + shown.path + W + "\n" +
               "  7     Compress Output:    " + shown.output +
               "\n"
               "  8     Computation Mode:   " +
               T + "Ram Only" + W + "\n" + "        Memory Needed       " + Y +
               Console::format_bytes(needed) + W + "\n" + "        Disk Needed         " + y + "0 bytes" + W +
               "  +  " + P + Console::format_bytes(shown.output_bytes) + W + " for output\n\n" +
               start_text(needed) + "\n" + option_prompt;
    }
    // Types a line; what follows it, up to the next prompt, must be this.
    void answer(const std::string& line, const std::string& expected) {
        terminal.type(line);
        const std::string text = line + "\n" + W + expected;
        ASSERT_EQ(terminal.read(text), text);
    }
    // The same for a line behind which the screen comes again.
    void finish(const std::string& line) { answer(line, screen()); }

  public:
    void choose_sqrt_200_and_pi_again();
    void choose_ramanujan();
    void choose_digits();
    void choose_compression();
    void choose_no_hexadecimal_digits();
    void choose_one_thread();
    void choose_path();
    void choose_mode();
    void start();

  protected:
    const TemporaryFolder folder, target;
    ComputeParameters record;
    Shown shown;
    Terminal terminal{{"custom"}, folder.path()};
};

void CustomTerminal::choose_sqrt_200_and_pi_again() {
    terminal.type("1");
    const std::string menu = terminal.read_until(option_prompt);
    ASSERT_TRUE(menu.starts_with("1\n" + W + P + "Compute a Constant: (in ascending order")) << menu;
    const std::string n_prompt = W + "n = " + G;
    answer("11", option_prompt);
    answer("0", "\n" + W + "Square Root of n\n" + n_prompt);
    answer("1", n_prompt);
    answer("4", W + "\nThis number is a perfect square.\nPlease choose something more interesting :)\n\n" +
                    n_prompt);
    ASSERT_EQ(record.choose_constant(constant_id::sqrt, 200), nullptr);
    shown.constant = P + "Sqrt(200)";
    shown.algorithm = "Newton's Method";
    finish("200");

    terminal.type("1");
    terminal.read_until(option_prompt);
    ASSERT_EQ(record.choose_constant(constant_id::pi, 0), nullptr);
    shown.constant = G + "Pi";
    shown.algorithm = "Chudnovsky Formula";
    answer("3", "\n" + screen());
}

void CustomTerminal::choose_ramanujan() {
    const std::string prompt = W + "Algorithm: " + G;
    answer("2", W + "\n\nSelect the algorithm:\n\n   0    " + T + "Chudnovsky Formula      (fastest)\n\n" +
                    W + "   1    " + T + "Ramanujan's Formula     (~40% slower)\n\n" + W + prompt);
    answer("2", prompt);
    ASSERT_EQ(record.set_algorithm(1), nullptr);
    shown.algorithm = "Ramanujan's Formula";
    finish("1");
}

void CustomTerminal::choose_digits() {
    answer("3", W + "Select the # of decimal digits to compute:\n" + digits_prompt);
    answer("99", error_line("# of digits is out of range") + digits_prompt);
    answer("two", error_line("# of digits is out of range") + digits_prompt);
    ASSERT_EQ(record.set_dec(2'000'000), nullptr);
    shown.dec = "2,000,000";
    shown.hex = "1,660,965";
    shown.output_bytes = 3'660'965;
    finish("2000000");
}

void CustomTerminal::choose_compression() {
    const std::string formats = W + "Select an Output Format:\n\n" + G +
                                "  0     Write to a text file. Do not compress.\n"
                                "  1     Compress digits into a single .zld file.\n"
                                "  2     Compress digits into multiple .zld files with a user-specified\n"
                                "        number of digits per file.\n\n" +
                                W + option_prompt;
    const std::string prompt = W + "Digits per file: " + G;
    answer("7", formats);
    answer("3", option_prompt);
    answer("2", prompt);
    answer("2000001", prompt);
    shown.output = T + "Yes - Compress digits and split them into multiple" + W + "\n" + T +
                   "                            files with  " + W + Y + "1,000,000" + W + T +
                   "  digits per file.\n" + W;
    shown.output_bytes = 1'660'965 / 2 + 8 * (2'000'000 / 19);
    finish("1000000");
    answer("0", "\n" + R + "Compressed output is not available in this version yet.\n" + W + pause_prompt);
    finish("");
    answer("7", formats);
    shown.output = T + "Yes - Compress digits into one .zld file." + W + "\n";
    finish("1");
    answer("7", formats);
    shown.output = Shown().output;
    shown.output_bytes = 3'660'965;
    finish("0");
}

void CustomTerminal::choose_no_hexadecimal_digits() {
    answer("4", W + "Select the # of hexadecimal digits to compute: (0 to disable)\n" + digits_prompt);
    answer("1", error_line("# of digits is out of range") + digits_prompt);
    ASSERT_EQ(record.set_hex(0), nullptr);
    shown.hex = "Disabled";
    shown.output_bytes = record.dec();
    finish("0");
}

void CustomTerminal::choose_one_thread() {
    const std::string prompt = W + "Threads: " + G;
    answer("5", W + "Select the # of threads to use:\n" + prompt);
    answer("257", Y + "Please choose a number between 1 and 256.\n" + W + prompt);
    record.set_threads(1);
    shown.threads = thread_text(1);
    finish("1");
}

void CustomTerminal::choose_path() {
    const std::string prompt = W + "Path: " + G;
    answer("6", W + "Enter the path to write the digits to. (e.g. \"C:\" or \"C:/temp\" )\n\n" + prompt);
    answer(target.path() + "/missing", error_line("Unable to write to path.") + prompt);
    answer("\xc3\xa4", error_line("Unable to write to path.") + prompt);
    shown.path = target.path();
    finish(target.path());
}

void CustomTerminal::choose_mode() {
    answer("8", W + "Select a Mode:\n\nOption      Mode            Memory    Disk Memory\n\n" +
                    " 1      Ram Only            " + Y + Console::format_bytes(record.Osize() + record.ML()) +
                    W + "\n" + G + " 2      Disk Swapping      >" + Y + "N/A     " + W + "    " + T +
                    "N/A     " + W + "\n" + option_prompt);
    answer("0", option_prompt);
    answer("2", error_line("Swap Mode is not available in this version yet.") + option_prompt);
    finish("1");
}

void CustomTerminal::start() {
    answer("3", W + "Select the # of decimal digits to compute:\n" + digits_prompt);
    ASSERT_EQ(record.set_dec(100), nullptr);
    shown.dec = "100";
    shown.hex = "84";
    shown.output_bytes = 184;
    finish("100");
    answer("7", W + "Computation is too small for compression.\n\n" + pause_prompt);
    finish("");
    terminal.type("0");
    const std::string run = terminal.read_rest();
    EXPECT_TRUE(run.starts_with("0\n" + W + "\nConstant:   " + G + "Pi" + W + "\nAlgorithm:  " + Y +
                                "Ramanujan's Formula" + W + "\n\nDecimal Digits:       " + G + "100" + W +
                                "\n"))
        << run;
    EXPECT_TRUE(run.ends_with("3421170679 :  " + G + "100" + W + "\n" + reset + "\n")) << run;
    EXPECT_EQ(terminal.exit_code(), 0);
}

TEST_F(CustomTerminal, AWalkThroughEveryOption) {
    const std::string first = start_of_program + screen();
    ASSERT_EQ(terminal.read(first), first);
    answer("9", option_prompt);
    answer("-1", option_prompt);
    for (const auto step :
         {&CustomTerminal::choose_sqrt_200_and_pi_again, &CustomTerminal::choose_ramanujan,
          &CustomTerminal::choose_digits, &CustomTerminal::choose_compression,
          &CustomTerminal::choose_no_hexadecimal_digits, &CustomTerminal::choose_one_thread,
          &CustomTerminal::choose_path, &CustomTerminal::choose_mode, &CustomTerminal::start}) {
        (this->*step)();
        if (HasFatalFailure()) return;
    }
    EXPECT_TRUE(folder.is_empty());
    std::ifstream file(target.path() + "/Pi - Dec - Ramanujan.txt", std::ios::binary);
    const std::string digits{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(digits.size(), 102u);
    EXPECT_TRUE(digits.ends_with("3421170679")) << digits;
}

TEST_F(CustomTerminal, TheEndOfTheInputIsOneLineAndExitCode1) {
    ASSERT_TRUE(terminal.read_until(option_prompt).ends_with(option_prompt));
    terminal.type_end_of_input();
    EXPECT_EQ(terminal.read_rest(), end_of_input);
    EXPECT_EQ(terminal.exit_code(), 1);
}

// The pause counts as pressed; the prompt behind it ends the program.
TEST_F(CustomTerminal, TheEndOfTheInputAtAPause) {
    terminal.read_until(option_prompt);
    terminal.type("3");
    terminal.read_until(digits_prompt);
    terminal.type("100");
    terminal.read_until(option_prompt);
    terminal.type("7");
    terminal.read_until(pause_prompt);
    terminal.type_end_of_input();
    const std::string rest = terminal.read_rest();
    EXPECT_TRUE(rest.starts_with(W + "\n" + P + "Custom Compute a Constant\n")) << rest;
    EXPECT_TRUE(rest.ends_with(option_prompt + end_of_input)) << rest;
    EXPECT_EQ(terminal.exit_code(), 1);
}

TEST_F(CustomTerminal, ANarrowTerminalGetsTheSameText) {
    Terminal narrow({"custom"}, folder.path(), 1);
    const std::string first = start_of_program + screen();
    EXPECT_EQ(narrow.read(first), first);
}

TEST_F(CustomTerminal, ItIsOption3OfTheMainMenu) {
    Terminal menu({}, folder.path());
    menu.read_until(option_prompt);
    menu.type("3");
    const std::string text = "3\n" + W + screen();
    EXPECT_EQ(menu.read(text), text);
}

}  // namespace
}  // namespace znp
