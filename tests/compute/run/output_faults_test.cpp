// Output stages on hardware that errs: repeated conversions and verifications, flipped bits, and the rounding
// that is no error.
#include <gtest/gtest.h>

#include <csignal>

#include "compute/run/digit_output.hpp"
#include "compute/run/output_test_support.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/strings.hpp"
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
using testing::residue_of;
using testing::root;
using testing::UseCalls;
using namespace testing::sent;
using ::testing::ExitedWithCode;

// With an exact conversion and verification behind the stages.
class OutputFaultsTest : public ::testing::Test {
    const UseCalls calls_{exact_conversion, exact_verification};
};

using OutputFaultsDeathTest = OutputFaultsTest;

// Stand-ins that fail as often as `failures` says, and change what comes out by what `fault` says.
int failures = 0;
enum class Fault { none, overlap, power, word_beyond_radix };
Fault fault = Fault::none;

int failing_conversion(const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction, upL_t L,
                       StatusLine* status) {
    const int result = exact_conversion(bp, radix, out, n, fraction, L, status);
    if (failures == 0) return result;
    --failures;
    if (fault == Fault::word_beyond_radix) {
        out[n / 2] |= cdi{3} << 62;
        return 0;
    }
    std::fill(out, out + n, ~cdi{0});
    return fault == Fault::overlap ? overlap_error : 1;
}

int failing_verification(const BasicParameters& bp, cdi radix, u64_t e, cdi integer, const cdi* fraction,
                         upL_t L, u64_t& residue, StatusLine* status) {
    exact_verification(bp, radix, e, integer, fraction, L, residue, status);
    if (failures == 0) return 0;
    --failures;
    residue = 12345;
    return 1;
}

upL_t occurrences(const std::string& text, const std::string& piece) {
    upL_t n = 0;
    for (upL_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) ++n;
    return n;
}

TEST_F(OutputFaultsTest, AFailedConversionIsRepeated) {
    const UseCalls calls(failing_conversion, exact_verification);
    for (const Fault kind : {Fault::overlap, Fault::power, Fault::word_beyond_radix}) {
        for (const int times : {1, 3}) {
            fault = kind;
            failures = times;
            OutputRun state(500);
            const Number number = root(state, 2);
            const std::string printed = output(state, number);
            expect_digits(state, number);
            const upL_t n = static_cast<upL_t>(times);
            EXPECT_EQ(occurrences(printed, R + "Radix Conversion Failed - Reattempting...\n" + W), n);
            EXPECT_EQ(occurrences(state.run.events.text(), "\tRadix Conversion Failed - Reattempting...\r\n"),
                      n);
            EXPECT_EQ(state.run.recovered_errors(), n);
        }
    }
}

TEST_F(OutputFaultsTest, AFailedVerificationIsRepeated) {
    const UseCalls calls(exact_conversion, failing_verification);
    for (const int times : {1, 3}) {
        failures = times;
        OutputRun state(500);
        const Number number = root(state, 2);
        const std::string printed = output(state, number);
        expect_digits(state, number);
        const upL_t n = static_cast<upL_t>(times);
        EXPECT_EQ(occurrences(printed, R + "Verification Failed - Reattempting...\n" + W), n);
        EXPECT_EQ(occurrences(state.run.events.text(), "\tVerification Failed - Reattempting...\r\n"), n);
        EXPECT_EQ(state.run.recovered_errors(), n);
    }
}

// A check inside the arithmetic that throws: repeated, but not for ever.
int throws = 0;

void throw_if_wanted() {
    if (throws-- > 0) throw zn_exception(1);
}

int throwing_conversion(const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction, upL_t L,
                        StatusLine* status) {
    throw_if_wanted();
    return exact_conversion(bp, radix, out, n, fraction, L, status);
}

int throwing_verification(const BasicParameters& bp, cdi radix, u64_t e, cdi integer, const cdi* fraction,
                          upL_t L, u64_t& residue, StatusLine* status) {
    throw_if_wanted();
    return exact_verification(bp, radix, e, integer, fraction, L, residue, status);
}

TEST_F(OutputFaultsTest, ACheckThatThrowsIsRepeatedOnce) {
    const ConversionCalls rows[] = {{throwing_conversion, exact_verification, open_digit_writer},
                                    {exact_conversion, throwing_verification, open_digit_writer}};
    for (const ConversionCalls& row : rows) {
        const UseCalls calls(row.conversion, row.verification);
        OutputRun state(500);
        const Number number = root(state, 2);
        throws = 1;
        output(state, number);
        expect_digits(state, number);
        EXPECT_EQ(state.run.recovered_errors(), 1u);

        OutputRun worse(500);
        throws = 2;
        testing::console_output(
            [&] { EXPECT_THROW(convert_and_write_B(worse.memory, number.view()), zn_exception); });
        EXPECT_FALSE(std::filesystem::exists(worse.decimal_file()));
        EXPECT_EQ(worse.run.heap.active, 0u);
    }
}

// A bit of the result, counted from its lowest one, that comes out wrong without anybody noticing, so many
// times.
u64_t flipped_bit = 0;
int flips = 0;
constexpr int always = 1 << 20;

int flipping_conversion(const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction, upL_t L,
                        StatusLine* status) {
    const int result = exact_conversion(bp, radix, out, n, fraction, L, status);
    if (flips-- > 0) out[flipped_bit / 64] ^= cdi{1} << flipped_bit % 64;
    return result;
}

// Words from 3 on hold wanted digits only; a low bit leaves a word below the radix.
u64_t random_wanted_bit(std::mt19937_64& rng, u64_t dec) {
    return 64 * (3 + rng() % (decimal_words(dec) - 3)) + rng() % 40;
}

TEST_F(OutputFaultsTest, AConversionThatDisagreesIsRepeatedOnce) {
    const UseCalls calls(flipping_conversion, exact_verification);
    auto rng = testing::make_rng(5);
    for (int round = 0; round < 10; ++round) {
        OutputRun state(500);
        const Number number = root(state, 2);
        flipped_bit = random_wanted_bit(rng, 500);
        flips = 1;
        const std::string printed = output(state, number);
        expect_digits(state, number);
        EXPECT_EQ(occurrences(printed, "R = "), 1u);
        EXPECT_EQ(occurrences(printed, "B = " + to_string_u64(residue_of(number, 500)) + "\n"), 1u);
        EXPECT_EQ(occurrences(printed, R + "Base Conversion Failed - Reattempting...\n" + W), 1u);
        EXPECT_EQ(occurrences(state.run.events.text(), "\tBase Conversion Failed - Reattempting...\r\n"), 1u);
        EXPECT_EQ(state.run.recovered_errors(), 1u);
    }
}

TEST_F(OutputFaultsTest, AVerificationThatErrsIsRepeatedOnce) {
    static int wrong;
    wrong = 1;
    const UseCalls calls(
        exact_conversion, [](const BasicParameters& bp, cdi radix, u64_t e, cdi integer, const cdi* fraction,
                             upL_t L, u64_t& residue, StatusLine* status) {
            const int result = exact_verification(bp, radix, e, integer, fraction, L, residue, status);
            if (wrong-- > 0) residue ^= 64;
            return result;
        });
    OutputRun state(500);
    const Number number = root(state, 2);
    output(state, number);
    expect_digits(state, number);
    EXPECT_EQ(state.run.recovered_errors(), 1u);
}

// What a run that fails leaves: the file of an earlier run, and its own under the other name.
void expect_old_file(const std::string& path) {
    EXPECT_EQ(testing::file_text(path), "old");
    EXPECT_TRUE(std::filesystem::exists(path + ".unverified"));
}

TEST_F(OutputFaultsDeathTest, AFlippedBitIsFatalTheSecondTime) {
    const UseCalls calls(flipping_conversion, exact_verification);
    auto rng = testing::make_rng(4);
    for (int round = 0; round < 10; ++round) {
        OutputRun state(500);
        const Number number = root(state, 2);
        state.folder.write("X - Dec - Y.txt", "old");
        flipped_bit = random_wanted_bit(rng, 500);
        flips = always;
        EXPECT_EXIT(dying([&] { convert_and_write_B(state.memory, number.view()); }), ExitedWithCode(1),
                    "R = [0-9]+\nB = " + to_string_u64(residue_of(number, 500)) +
                        "\n.*Base Conversion Failed - Reattempting\\.\\.\\.\n.*R = [0-9]+\nB = [0-9]+\n" +
                        ".*Base Conversion Failed: Checksum Mismatch");
        expect_old_file(state.decimal_file());
    }
}

TEST_F(OutputFaultsDeathTest, AKilledRunLeavesNoFileUnderItsName) {
    const UseCalls calls(exact_conversion, [](const BasicParameters&, cdi, u64_t, cdi, const cdi*, upL_t,
                                              u64_t&, StatusLine*) { return std::raise(SIGKILL); });
    OutputRun state(500);
    state.folder.write("X - Dec - Y.txt", "old");
    const Number number = root(state, 2);
    EXPECT_EXIT(dying([&] { convert_and_write_B(state.memory, number.view()); }),
                ::testing::KilledBySignal(SIGKILL), "");
    expect_old_file(state.decimal_file());
}

// The words that hold no wanted digit may be anything.
TEST_F(OutputFaultsTest, DigitsThatAreNotWrittenDoNotMatter) {
    const UseCalls calls(flipping_conversion, exact_verification);
    for (const u64_t bit : {u64_t{0}, u64_t{39}, u64_t{64}, u64_t{64 + 39}}) {
        flipped_bit = bit;
        flips = always;
        OutputRun state(500);
        const Number number = root(state, 2);
        output(state, number);
        expect_digits(state, number);
    }
}

// ---- Rounding: the residues of the digits and of the number -----------------------------------------------

// Added to the number that the digits form without the point.
s64_t rounding = 0;

int rounded_conversion(const BasicParameters& bp, cdi radix, cdi* out, upL_t n, const cdi* fraction, upL_t L,
                       StatusLine* status) {
    const int result = exact_conversion(bp, radix, out, n, fraction, L, status);
    constexpr u64_t dec = 494;  // 26 words and no digit more: words 3 and up are the wanted ones
    static_assert(dec % 19 == 0 && decimal_words(dec) == dec / 19 + 3);
    out[3] += static_cast<cdi>(rounding);
    return result;
}

int rounded_verification(const BasicParameters& bp, cdi radix, u64_t e, cdi integer, const cdi* fraction,
                         upL_t L, u64_t& residue, StatusLine* status) {
    const int result = exact_verification(bp, radix, e, integer, fraction, L, residue, status);
    const u64_t size = static_cast<u64_t>(rounding < 0 ? -rounding : rounding);
    residue = rounding < 0 ? residue::sub(residue, size) : residue::add(residue, size);
    return result;
}

TEST_F(OutputFaultsTest, OneUnitOfRoundingPasses) {
    for (const s64_t by : {-1, 0, 1}) {
        rounding = by;
        OutputRun state(494);
        const UseCalls calls(rounded_conversion, exact_verification);
        output(state, root(state, 2));
        EXPECT_EQ(state.run.binary_hash, residue_of(root(state, 2), 494) + static_cast<u64_t>(by));
        EXPECT_TRUE(state.clean());
    }
}

TEST_F(OutputFaultsDeathTest, TwoUnitsOfRoundingAreFatal) {
    for (const s64_t by : {-2, 2}) {
        rounding = by;
        OutputRun state(494);
        const Number number = root(state, 2);
        const UseCalls calls(rounded_conversion, exact_verification);
        EXPECT_EXIT(dying([&] { convert_and_write_B(state.memory, number.view()); }), ExitedWithCode(1),
                    "Base Conversion Failed: Checksum Mismatch");
    }
}

// The number without its point is one below a multiple of the modulus, or such a multiple.
TEST_F(OutputFaultsTest, OneUnitOfRoundingAcrossTheModulus) {
    const u64_t dec = 494;
    testing::Mpz N;
    mpz_ui_pow_ui(N.z, 10, dec);
    mpz_add_ui(N.z, N.z, residue::p - mpz_fdiv_ui(N.z, residue::p));
    for (const s64_t by : {1, -1}) {
        rounding = by;
        if (by == 1) mpz_sub_ui(N.z, N.z, 1);
        if (by == -1) mpz_add_ui(N.z, N.z, 1);
        const std::unique_ptr<char, void (*)(void*)> text(mpz_get_str(nullptr, 10, N.z), std::free);
        OutputRun state(dec);
        const Number number = testing::decimal_number(text.get(), 1, 2, dec, state.run.settings.p + 1);
        ASSERT_EQ(residue_of(number, dec), by == 1 ? residue::p - 1 : 0);
        const UseCalls calls(exact_conversion, rounded_verification);
        output(state, number);
        expect_digits(state, number);
    }
}

}  // namespace
}  // namespace znp
