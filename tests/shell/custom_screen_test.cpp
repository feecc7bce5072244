// The text of the Custom Compute a Constant screen: fields, widths and colours.
#include "shell/custom_screen.hpp"

#include <gtest/gtest.h>

#include "compute/constants/test_constant.hpp"
#include "expected_text.hpp"
#include "foundation/memory.hpp"
#include "shell/console.hpp"
#include "temporary_folder.hpp"

namespace znp {
namespace {

using namespace testing::sent;
using testing::SettingsAccess;
using testing::TemporaryFolder;
using testing::TestSettings;

const std::string y = "\033[22;33m";

constexpr MachineMemory plenty{u64_t{1} << 50, u64_t{1} << 50};

std::string screen(const ComputeParameters& settings, const MachineMemory& machine = plenty) {
    return testing::console_output([&] { print_custom_screen(settings, machine); });
}
bool shows(const ComputeParameters& settings, const std::string& text) {
    return screen(settings).find(text) != std::string::npos;
}
// What stands behind the output's size.
std::string end_of(const ComputeParameters& settings, const MachineMemory& machine) {
    const std::string text = screen(settings, machine);
    const std::string last = " for output\n\n";
    const upL_t at = text.find(last);
    return at == std::string::npos ? text : text.substr(at + last.size());
}

// 1000 digits on one thread in 64 KiB and the tables.
TEST(CustomScreen, InMemory) {
    const TestSettings test;
    const std::string needed = Console::format_bytes(test.settings.memTW() + 65536);
    const std::string head = "\n" + P + "Custom Compute a Constant\n\n" + W +
                             "Current Settings: (select option # to change setting)\n\n"
                             "  1     Constant:    " +
                             P + "Constant of the Tests\n" + W + "  2     Algorithm:   " + Y + "long 0\n" +
                             W + "\n";
    const std::string digits = "  3     Decimal Digits:         " + G + "1,000" + W +
                               "\n"
                               "  4     Hexadecimal Digits:     " +
                               G + "831" + W + "\n\n";
    const std::string run = "  5     Multi-Threading:    " + T + "1" + W + T + " thread\n" + W +
                            "  6     Write Digits To:    " + T + "Default Path" + W +
                            "\n"
                            "  7     Compress Output:    " +
                            T + "No - Write digits to a text file." + W + "\n\n";
    const std::string needs = "  8     Computation Mode:   " + T + "Ram Only" + W +
                              "\n"
                              "        Memory Needed       " +
                              Y + needed + W +
                              "\n"
                              "        Disk Needed         " +
                              y + "0 bytes" + W + "  +  " + P + "1.79 KiB" + W + " for output\n\n";
    EXPECT_EQ(screen(test.settings),
              head + digits + run + needs + "  0     " + G + "Start Computation!\n" + W + "\n");
}

// On disk: half of the working memory as disk, at least 3 MiB of memory, and a limit of 1 GiB.
struct SwapScreen : TestSettings {
    SwapScreen() {
        constant->has_run_S = true;
        constant->memory_S = [](upL_t ML, upL_t, u64_t& disk, upL_t& memory) {
            disk = ML / 2;
            memory = 3 << 20;
            return true;
        };
        settings.set_min_io(1 << 20);
        settings.change_swap([](SwapConfiguration& swap) {
            swap.minIO_logical = 2 << 20;
            return 0;
        });
        SettingsAccess::set_mode(settings, ComputeMode::swap);
        settings.set_memory_limit(u64_t{1} << 30);
    }
};

TEST(CustomScreen, OnDisk) {
    const SwapScreen test;
    const u64_t outside = test.settings.memTW() + (64 << 20);
    const std::string least = Console::format_bytes(outside + (3 << 20));
    const std::string disk = Console::format_bytes(((u64_t{1} << 30) - outside) / 2);
    const std::string rows = "  8     Computation Mode:   " + T + "Swap Mode" + W + "\n" + "  9     " + g +
                             "View Swap Configuration" + W + "\n" + " 10     " + g +
                             "Change Swap Configuration" + W + "\n" + " 11     " + Y + "Run I/O Benchmark" +
                             W + "\n\n";
    const std::string needs = " 12     Min I/O Size        " + G + "1.00 MiB" + W +
                              "  per smallest unit. ( " + P + "2.00 MiB" + W + " global )\n\n" +
                              " 13     Memory Needed       " + Y + "1.00 GiB" + W + "  ( Minimum = " + Y +
                              least + W + " )\n" + "        Disk Needed         " + Y + disk + W + "  +  " +
                              P + "1.79 KiB" + W + " for output\n\n";
    const std::string text = screen(test.settings);
    EXPECT_TRUE(text.ends_with("\n\n" + rows + needs + "  0     " + G + "Start Computation!\n" + W)) << text;
}

TEST(CustomScreen, TheConstantHasItsOwnColorAndItsLongName) {
    ComputeParameters settings;
    EXPECT_TRUE(shows(settings, "  1     Constant:    " + G + "Pi\n" + W));
    settings.choose_constant(constant_id::sqrt, 200);
    EXPECT_TRUE(shows(settings, "  1     Constant:    " + P + "Sqrt(200)\n" + W +
                                    "  2     Algorithm:   " + Y + "Newton's Method\n" + W));
    settings.choose_constant(constant_id::euler_gamma, 0);
    EXPECT_TRUE(
        shows(settings, "  1     Constant:    " + testing::sent::B + "Euler-Mascheroni Constant\n" + W));
}

TEST(CustomScreen, DigitsHaveCommasAndHexadecimalOnesCanBeDisabled) {
    ComputeParameters settings;
    settings.set_dec(90'000'000'000'050);
    EXPECT_TRUE(shows(settings, "  3     Decimal Digits:         " + G + "90,000,000,000,050" + W + "\n"));
    settings.set_hex(0);
    EXPECT_TRUE(shows(settings, "  4     Hexadecimal Digits:     " + G + "Disabled" + W + "\n"));
}

TEST(CustomScreen, OneThreadAndMore) {
    TestSettings test;
    EXPECT_TRUE(shows(test.settings, "5     Multi-Threading:    " + T + "1" + W + T + " thread\n" + W));
    test.settings.set_threads(2);
    EXPECT_TRUE(shows(test.settings, "5     Multi-Threading:    " + T + "2" + W + T + " threads\n" + W));
    test.settings.set_threads(256);
    EXPECT_TRUE(shows(test.settings, "5     Multi-Threading:    " + T + "256" + W + T + " threads\n" + W));
}

TEST(CustomScreen, ThePathAsItWasGiven) {
    const TemporaryFolder folder;
    TestSettings test;
    ASSERT_EQ(test.settings.set_path(folder.wide_path()), nullptr);
    EXPECT_TRUE(shows(test.settings, "  6     Write Digits To:    " + T + folder.path() + W + "\n"));
    ASSERT_EQ(test.settings.set_path(folder.wide_path() + L"/"), nullptr);
    EXPECT_TRUE(shows(test.settings, T + folder.path() + "/" + W + "\n"));
    ASSERT_EQ(test.settings.set_path(L""), nullptr);
    EXPECT_TRUE(shows(test.settings, T + "Default Path" + W + "\n"));
}

TEST(CustomScreen, ThreeFormsOfOutput) {
    TestSettings test;
    test.settings.set_dec(38'000'000);
    const u64_t hex = test.settings.hex();
    EXPECT_TRUE(shows(test.settings, T + "No - Write digits to a text file." + W + "\n\n"));
    EXPECT_TRUE(
        shows(test.settings, "  +  " + P + Console::format_bytes(38'000'000 + hex) + W + " for output\n"));
    const std::string compressed =
        "  +  " + P + Console::format_bytes(16'000'000 + hex / 2) + W + " for output\n";
    ASSERT_EQ(test.settings.set_digits_per_file(~u64_t{0}), nullptr);
    EXPECT_TRUE(shows(test.settings, T + "Yes - Compress digits into one .zld file." + W + "\n\n"));
    EXPECT_TRUE(shows(test.settings, compressed));
    ASSERT_EQ(test.settings.set_digits_per_file(12'345'678), nullptr);
    EXPECT_TRUE(shows(test.settings, "  7     Compress Output:    " + T +
                                         "Yes - Compress digits and split them into multiple" + W + "\n" + T +
                                         "                            files with  " + W + Y + "12,345,678" +
                                         W + T + "  digits per file.\n" + W + "\n"));
    EXPECT_TRUE(shows(test.settings, compressed));
}

// Compressed words of 19 digits that are not full take no bytes of their own.
TEST(CustomScreen, OutputWithoutHexadecimalDigits) {
    TestSettings test;
    test.settings.set_dec(18'999'999);
    test.settings.set_hex(0);
    EXPECT_TRUE(shows(test.settings, P + Console::format_bytes(18'999'999) + W + " for output\n"));
    ASSERT_EQ(test.settings.set_digits_per_file(~u64_t{0}), nullptr);
    EXPECT_TRUE(shows(test.settings, P + Console::format_bytes(8 * 999'999) + W + " for output\n"));
}

// ---- The start line ---------------------------------------------------------------------------------------

const std::string start = "  0     " + G + "Start Computation!\n" + W;
const std::string too_little = start + R + "        Warning: There is insufficient physical memory.\n" + W;
const std::string too_little_available =
    start + R + "        Warning: There is insufficient available physical memory.\n" + W;

TEST(CustomScreenStart, WarnsOfTooLittleMemory) {
    const TestSettings test;
    const u64_t needed = test.settings.Osize() + test.settings.ML();
    const struct {
        MachineMemory machine;
        const std::string& text;
    } rows[] = {
        {{needed, needed}, start},
        {{needed + 1, needed + 1}, start},
        {{needed, needed - 1}, too_little},
        {{needed - 1, needed - 1}, too_little},
        {{needed - 1, needed}, too_little_available},
        {{needed - 1, 0}, too_little_available},  // what is not known warns of nothing
        {{0, needed - 1}, too_little},
        {{0, needed}, start},
        {{needed, 0}, start},
        {{0, 0}, start},
        {{1, 1}, too_little},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(end_of(test.settings, row.machine), row.text + "\n")
            << row.machine.physical - needed << " " << row.machine.available - needed;
        EXPECT_EQ(offered_options(test.settings).low, 0);
    }
}

TEST(CustomScreenStart, WarnsOnDiskWithoutABlankLine) {
    const SwapScreen test;
    EXPECT_EQ(end_of(test.settings, plenty), start);
    EXPECT_EQ(end_of(test.settings, {1, 1}), too_little);
}

TEST(CustomScreenStart, CountsTheTables) {
    const TestSettings test;
    EXPECT_EQ(end_of(test.settings, {0, test.settings.ML()}), too_little + "\n");
}

TEST(CustomScreenStart, ANegativeAmountCannotStart) {
    TestSettings test;
    u64_t bytes = u64_t{1} << 63;
    test.constant->memory_B = [&](s32_t, upL_t, u64_t, u64_t, upL_t& need) {
        need = bytes;
        return true;
    };
    SettingsAccess::update(test.settings);
    const std::string refused =
        "  0     " + R + "Cannot Start: 64-bit is required to use more than 2GB of memory.\n" + W + "\n";
    EXPECT_EQ(end_of(test.settings, plenty), refused);
    EXPECT_EQ(end_of(test.settings, {1, 1}), refused);
    EXPECT_EQ(offered_options(test.settings).low, 1);
    bytes--;
    SettingsAccess::update(test.settings);
    EXPECT_EQ(end_of(test.settings, {0, 0}), start + "\n");
    EXPECT_EQ(offered_options(test.settings).low, 0);
}

TEST(CustomScreenStart, OptionsEndAt8InMemoryAndAt13OnDisk) {
    EXPECT_EQ(offered_options(TestSettings().settings).high, 8);
    EXPECT_EQ(offered_options(SwapScreen().settings).high, 13);
}

TEST(MachineMemory, IsTheSystems) {
    const MachineMemory machine = machine_memory();
    EXPECT_EQ(machine.physical, physical_memory());
    EXPECT_LE(machine.available, machine.physical);
    EXPECT_EQ(machine.available == 0, available_memory() == 0);
}

}  // namespace
}  // namespace znp
