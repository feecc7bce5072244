// Output stages on hardware that errs between the words and the file, and under the number: what is written
// once more, and what ends the run.
#include <gtest/gtest.h>

#include "compute/run/digit_output.hpp"
#include "compute/run/output_test_support.hpp"
#include "foundation/strings.hpp"
#include "multiply/table_holder.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::dying;
using testing::exact_conversion;
using testing::exact_verification;
using testing::expect_digits;
using testing::Number;
using testing::output;
using testing::OutputRun;
using testing::root;
using testing::UseCalls;
using namespace testing::sent;
using ::testing::ExitedWithCode;

// What happens to the digits of one radix on their way, in the first `times` files of it.
enum class Damage { digits, digits_and_words, length, number_behind_it };
struct Fault {
    Damage damage = Damage::digits;
    u64_t radix = 10;
    int times = 0;
    u64_t bit = 0;         // of the digits
    cdi* words = nullptr;  // the last conversion's
    Number* number = nullptr;
} fault;

class FaultyWriter final : public DigitWriter {
  public:
    FaultyWriter(std::unique_ptr<DigitWriter> file, std::string path)
        : file_(std::move(file)), path_(std::move(path)) {}

    void write(char* digits, upL_t count) override {
        if (fault.damage == Damage::digits || fault.damage == Damage::digits_and_words) {
            digits[fault.bit / 8 % count] ^= static_cast<char>(1 << fault.bit % 8);
        }
        if (fault.damage == Damage::digits_and_words) fault.words[7] ^= 1;
        file_->write(digits, count);
        if (fault.damage == Damage::number_behind_it) fault.number->words[fault.bit] ^= 4;
    }
    void close() override {
        file_->close();
        if (fault.damage == Damage::length) {
            std::filesystem::resize_file(path_, std::filesystem::file_size(path_) - 1);
        }
    }
    bool holds(u64_t count, u64_t hash) const override { return file_->holds(count, hash); }
    void publish() override { file_->publish(); }

  private:
    std::unique_ptr<DigitWriter> file_;
    std::string path_;
};

std::unique_ptr<DigitWriter> faulty_writer(const DigitFileParameters& parameters, u64_t radix,
                                           const std::string& first_digits) {
    std::unique_ptr<DigitWriter> file = open_digit_writer(parameters, radix, first_digits);
    if (radix != fault.radix || fault.times-- <= 0) return file;
    const std::wstring path = digit_file_stem(parameters, radix) + L".txt.unverified";
    return std::make_unique<FaultyWriter>(std::move(file), w_to_a_direct(path));
}

int remembering_conversion(const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction,
                           upL_t L, StatusLine* status) {
    fault.words = out;
    return exact_conversion(bp, radix, out, n, fraction, L, status);
}

class OutputFileFaultsTest : public ::testing::Test {
    const UseCalls calls_{remembering_conversion, exact_verification, faulty_writer};
};
using OutputFileFaultsDeathTest = OutputFileFaultsTest;

const std::string told = R + "Digit Output Failed - Reattempting...\n" + W;

void expect_told_once(const OutputRun& state, const std::string& printed) {
    const upL_t at = printed.find(told);
    ASSERT_NE(at, std::string::npos) << printed;
    EXPECT_EQ(printed.find(told, at + 1), std::string::npos) << printed;
    EXPECT_NE(state.run.events.text().find("\tDigit Output Failed - Reattempting...\r\n"), std::string::npos);
    EXPECT_EQ(state.run.recovered_errors(), 1u);
}

TEST_F(OutputFileFaultsTest, DigitsThatChangeOnTheirWayAreWrittenOnceMore) {
    auto rng = testing::make_rng(6);
    for (const u64_t radix : {u64_t{10}, u64_t{16}}) {
        for (int round = 0; round < 30; ++round) {
            OutputRun state(500);
            const Number number = root(state, 2);
            fault = {.damage = Damage::digits, .radix = radix, .times = 1, .bit = rng() % 100'000};
            const std::string printed = output(state, number);
            expect_digits(state, number);
            expect_told_once(state, printed);
        }
    }
}

TEST_F(OutputFileFaultsTest, AFileOfAnotherLengthIsWrittenOnceMore) {
    for (const u64_t radix : {u64_t{10}, u64_t{16}}) {
        OutputRun state(500);
        const Number number = root(state, 2);
        fault = {.damage = Damage::length, .radix = radix, .times = 1};
        const std::string printed = output(state, number);
        expect_digits(state, number);
        expect_told_once(state, printed);
    }
}

// With the words gone the conversion is made once more.
TEST_F(OutputFileFaultsTest, WordsThatChangeBeforeTheyAreDigits) {
    OutputRun state(500);
    const Number number = root(state, 2);
    fault = {.damage = Damage::digits_and_words, .radix = 10, .times = 1, .bit = 8 * 111};
    const std::string printed = output(state, number);
    expect_digits(state, number);
    expect_told_once(state, printed);
}

TEST_F(OutputFileFaultsDeathTest, ASecondFailureEndsTheRun) {
    for (const u64_t radix : {u64_t{10}, u64_t{16}}) {
        for (const Damage damage : {Damage::digits, Damage::digits_and_words, Damage::length}) {
            if (radix == 16 && damage == Damage::digits_and_words) continue;  // there are no words of its own
            OutputRun state(500);
            const Number number = root(state, 2);
            const std::string file = radix == 10 ? state.decimal_file() : state.hexadecimal_file();
            fault = {.damage = damage, .radix = radix, .times = 2, .bit = 8 * 77};
            EXPECT_EXIT(dying([&] {
                            write_hex(state.memory, number.view());
                            convert_and_write_B(state.memory, number.view());
                        }),
                        ExitedWithCode(1),
                        "Digit Output Failed - Reattempting(.|\n)*Digit Output Failed: Checksum Mismatch");
            EXPECT_FALSE(std::filesystem::exists(file));
            EXPECT_TRUE(std::filesystem::exists(file + ".unverified"));
        }
    }
}

// ---- The number -------------------------------------------------------------------------------------------

TEST_F(OutputFileFaultsDeathTest, ANumberThatChangesUnderTheHexadecimalDigits) {
    OutputRun state(500);
    for (const upL_t word : {upL_t{0}, upL_t{5}, state.run.settings.p}) {
        Number number = root(state, 2);
        fault = {.damage = Damage::number_behind_it, .radix = 16, .times = 1, .bit = word, .number = &number};
        EXPECT_EXIT(dying([&] { write_hex(state.memory, number.view()); }), ExitedWithCode(1),
                    "Computed Number Damaged: Checksum Mismatch");
        EXPECT_FALSE(std::filesystem::exists(state.hexadecimal_file()));
    }
}

// The digits of the file agree with the number as it is then, or with the one that it was.
TEST_F(OutputFileFaultsDeathTest, ANumberThatChangesUnderTheDecimalDigits) {
    OutputRun state(500);
    static Number number;
    static upL_t word;
    for (word = 0; word < state.run.settings.p; word += 5) {
        number = root(state, 2);
        fault = {.damage = Damage::number_behind_it, .radix = 10, .times = 1, .bit = word, .number = &number};
        EXPECT_EXIT(dying([&] { convert_and_write_B(state.memory, number.view()); }), ExitedWithCode(1),
                    "Computed Number Damaged: Checksum Mismatch");
        EXPECT_FALSE(std::filesystem::exists(state.decimal_file()));

        fault = {};
        const UseCalls calls(
            [](const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction, upL_t L,
               StatusLine* status) {
                number.words[word] ^= 1;
                return exact_conversion(bp, radix, out, n, fraction, L, status);
            },
            exact_verification);
        EXPECT_EXIT(dying([&] { convert_and_write_B(state.memory, number.view()); }), ExitedWithCode(1),
                    "Computed Number Damaged: Checksum Mismatch");
        EXPECT_FALSE(std::filesystem::exists(state.decimal_file()));
    }
}

// ---- Twiddle tables ---------------------------------------------------------------------------------------

// A fault in them would let every further attempt fail.
TEST(OutputTableFaults, TablesAreBuiltAnewBeforeAnotherAttempt) {
    static std::byte* memory;
    static upL_t bytes;
    static int damages;
    const u64_t dec = 50'000;
    OutputRun state(dec);
    const u64_t limit_bits = (state.run.settings.p + 100) * 128;
    bytes = table_size(limit_bits);
    const GuardedArray<std::byte> tables = make_guarded_array<std::byte>(nullptr, bytes);
    memory = tables.get();
    build_tables(state.run.tables, limit_bits, memory);
    damages = 1;
    const UseCalls calls(
        [](const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction, upL_t L,
           StatusLine* status) {
            // Mantissa bits of the tables' numbers: the records before them hold addresses.
            if (damages-- > 0) {
                for (upL_t at = bytes / 16; at + 8 < bytes; at += 8) memory[at + 3] ^= std::byte{0x5a};
            }
            return convert(bp, radix, out, n, fraction, L, status);
        },
        power_check);
    const Number number = root(state, 2);
    output(state, number);
    expect_digits(state, number);
    EXPECT_EQ(state.run.recovered_errors(), 1u);
}

}  // namespace
}  // namespace znp
