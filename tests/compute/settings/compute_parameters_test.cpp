#include "compute/settings/compute_parameters.hpp"

#include <gtest/gtest.h>

#include "compute/constants/test_constant.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/memory.hpp"
#include "foundation/threads.hpp"
#include "multiply/table_holder.hpp"
#include "temporary_folder.hpp"

namespace znp {
namespace {

using testing::SettingsAccess;
using testing::TemporaryFolder;
using testing::TestSettings;

constexpr const char* digits_out_of_range = "# of digits is out of range";

TEST(ComputeParameters, Defaults) {
    const ComputeParameters settings;
    EXPECT_EQ(settings.id(), 3u);
    EXPECT_EQ(settings.constant().get_name(), "Pi");
    EXPECT_EQ(settings.param(), 2u);
    EXPECT_EQ(settings.algorithm(), 0);
    EXPECT_EQ(settings.mode(), ComputeMode::ram_only);
    EXPECT_EQ(settings.dec(), 50'000'000u);
    EXPECT_EQ(settings.hex(), 41'524'102u);
    EXPECT_EQ(settings.p(), 41'524'102u / 16 + 2);
    EXPECT_EQ(settings.path(), L"");
    EXPECT_EQ(settings.digits_per_file(), 0u);
    EXPECT_EQ(settings.tds(), std::min(logical_cores(), max_threads));
    EXPECT_EQ(settings.minIO(), 262144u);
    EXPECT_EQ(settings.swap().minIO_physical, 262144u);
    EXPECT_EQ(settings.swap().raid.total_buffer, 67108864u);
    EXPECT_EQ(settings.memory_limit(), physical_memory() / 32 * 31);
}

TEST(DigitRelations, DecimalToHexadecimalAndBack) {
    EXPECT_EQ(hex_digits_for(100), 84u);
    EXPECT_EQ(precision_for(84), 7u);
    EXPECT_EQ(decimal_digits_for(84), 101u);
    EXPECT_EQ(hex_digits_for(0), 1u);
    EXPECT_EQ(hex_digits_for(1'000'000'000), 830'482'024u);
}

TEST(DigitRelations, TheLargestNumbersStayDefined) {
    EXPECT_GT(hex_digits_for(~u64_t{0}), u64_t{1} << 63);
    EXPECT_EQ(decimal_digits_for(~u64_t{0}), ~u64_t{0});
}

TEST(ComputeParameters, Dec99IsRefusedAnd100Accepted) {
    ComputeParameters settings;
    EXPECT_STREQ(settings.set_dec(99), digits_out_of_range);
    EXPECT_EQ(settings.dec(), 50'000'000u);
    EXPECT_EQ(settings.hex(), 41'524'102u);
    EXPECT_EQ(settings.set_dec(100), nullptr);
    EXPECT_EQ(settings.dec(), 100u);
    EXPECT_EQ(settings.hex(), 84u);
    EXPECT_EQ(settings.p(), 7u);
}

TEST(ComputeParameters, DigitsEndAtTheSystemsLimit) {
    ComputeParameters settings;
    EXPECT_EQ(settings.set_dec(90'000'000'000'050), nullptr);
    EXPECT_STREQ(settings.set_dec(90'000'000'000'051), digits_out_of_range);
    EXPECT_STREQ(settings.set_dec(~u64_t{0}), digits_out_of_range);
    EXPECT_STREQ(settings.set_hex(~u64_t{0}), digits_out_of_range);
    EXPECT_EQ(settings.dec(), 90'000'000'000'050u);
}

TEST(ComputeParameters, SetHexDerivesTheDecimalDigits) {
    ComputeParameters settings;
    EXPECT_EQ(settings.set_hex(1'000'000), nullptr);
    EXPECT_EQ(settings.hex(), 1'000'000u);
    EXPECT_EQ(settings.dec(), 1'204'119u);
    EXPECT_EQ(settings.p(), 62'502u);
    EXPECT_STREQ(settings.set_hex(82), digits_out_of_range);  // 98 decimal digits
    EXPECT_EQ(settings.hex(), 1'000'000u);
}

TEST(ComputeParameters, Hex0OnlySwitchesTheOutputOff) {
    ComputeParameters settings;
    const upL_t p = settings.p();
    EXPECT_EQ(settings.set_hex(0), nullptr);
    EXPECT_EQ(settings.hex(), 0u);
    EXPECT_EQ(settings.dec(), 50'000'000u);
    EXPECT_EQ(settings.p(), p);
}

TEST(ComputeParameters, SetPrecisionReachesTheConstant) {
    ComputeParameters settings;
    ASSERT_EQ(settings.choose_constant(constant_id::euler_gamma, 0), nullptr);
    ASSERT_EQ(settings.set_dec(100), nullptr);  // p = 7: X = 87.6...
    EXPECT_EQ(settings.constant().get_algorithm_name(1, settings.p()), "Brent-McMillan ( n = 2^7 )");
    ASSERT_EQ(settings.set_dec(1'000'000), nullptr);
    EXPECT_EQ(settings.constant().get_algorithm_name(1, settings.p()), "Brent-McMillan ( n = 2^20 )");
    EXPECT_NE(settings.set_dec(1), nullptr);
    EXPECT_EQ(settings.constant().get_algorithm_name(1, settings.p()), "Brent-McMillan ( n = 2^20 )");
}

TEST(ComputeParameters, ChangingFromPiWithAlgorithm1ToSqrtResetsTheAlgorithm) {
    ComputeParameters settings;
    ASSERT_EQ(settings.set_algorithm(1), nullptr);
    ASSERT_EQ(settings.choose_constant(constant_id::sqrt, 2), nullptr);
    EXPECT_EQ(settings.algorithm(), 0);
    EXPECT_EQ(settings.id(), 0u);
    EXPECT_EQ(settings.param(), 2u);
}

TEST(ComputeParameters, ChangingFromPiWithAlgorithm1ToEKeepsTheAlgorithm) {
    ComputeParameters settings;
    ASSERT_EQ(settings.set_algorithm(1), nullptr);
    ASSERT_EQ(settings.choose_constant(constant_id::e, 0), nullptr);
    EXPECT_EQ(settings.algorithm(), 1);
}

TEST(ComputeParameters, ARefusedConstantChangesNothing) {
    ComputeParameters settings;
    EXPECT_STREQ(settings.choose_constant(constant_id::sqrt, 16), "This is a perfect square.");
    EXPECT_STREQ(settings.choose_constant(constant_id::euler_gamma_override, 20),
                 "Invalid constant, or not yet implemented.");
    EXPECT_EQ(settings.id(), 3u);
    EXPECT_EQ(settings.param(), 2u);
    EXPECT_EQ(settings.constant().get_name(), "Pi");
}

TEST(ComputeParameters, AlgorithmNumbersEndAtTheCount) {
    ComputeParameters settings;
    EXPECT_EQ(settings.set_algorithm(1), nullptr);
    EXPECT_STREQ(settings.set_algorithm(2), "Invalid Algorithm");
    EXPECT_STREQ(settings.set_algorithm(~u64_t{0}), "Invalid Algorithm");
    EXPECT_STREQ(settings.set_algorithm(u64_t{1} << 32), "Invalid Algorithm");
    EXPECT_EQ(settings.algorithm(), 1);
}

TEST(ComputeParameters, ThreadsAreClipped) {
    ComputeParameters settings;
    settings.set_threads(0);
    EXPECT_EQ(settings.tds(), 1u);
    settings.set_threads(256);
    EXPECT_EQ(settings.tds(), 256u);
    settings.set_threads(~u64_t{0});
    EXPECT_EQ(settings.tds(), 256u);
}

TEST(ComputeParameters, APathThatCannotBeWrittenLeavesTheOldOne) {
    const TemporaryFolder folder;
    ComputeParameters settings;
    EXPECT_EQ(settings.set_path(folder.wide_path()), nullptr);
    EXPECT_STREQ(settings.set_path(folder.wide_path() + L"/missing"), "Unable to write to path.");
    EXPECT_EQ(settings.path(), folder.wide_path());
    EXPECT_TRUE(folder.is_empty());
}

TEST(ComputeParameters, DigitsPerFile) {
    ComputeParameters settings;
    EXPECT_STREQ(settings.set_digits_per_file(999'999), "Too few digits per file.");
    EXPECT_EQ(settings.set_digits_per_file(1'000'000), nullptr);
    EXPECT_EQ(settings.digits_per_file(), 1'000'000u);
    EXPECT_EQ(settings.set_digits_per_file(~u64_t{0}), nullptr);
    EXPECT_EQ(settings.set_digits_per_file(0), nullptr);
    EXPECT_EQ(settings.digits_per_file(), 0u);
}

TEST(ComputeParameters, DigitsPerFile0IsAcceptedWithTooFewDigits) {
    ComputeParameters settings;
    ASSERT_EQ(settings.set_dec(100), nullptr);
    EXPECT_STREQ(settings.set_digits_per_file(5'000'000), "Too few digits to compress.");
    EXPECT_EQ(settings.set_digits_per_file(0), nullptr);
}

TEST(ComputeParameters, LoweringDecBelowTheCompressionLimitTurnsCompressionOff) {
    ComputeParameters settings;
    ASSERT_EQ(settings.set_digits_per_file(1'000'000), nullptr);
    ASSERT_EQ(settings.set_dec(1'300'000), nullptr);
    EXPECT_EQ(settings.digits_per_file(), 1'000'000u);
    ASSERT_EQ(settings.set_dec(1'048'575), nullptr);
    EXPECT_EQ(settings.digits_per_file(), 0u);
}

TEST(ComputeParameters, FewHexadecimalDigitsRefuseCompressionToo) {
    ComputeParameters settings;
    ASSERT_EQ(settings.set_digits_per_file(1'000'000), nullptr);
    ASSERT_EQ(settings.set_dec(1'048'576), nullptr);  // 870,824 hexadecimal digits
    EXPECT_EQ(settings.digits_per_file(), 0u);
    EXPECT_STREQ(settings.set_digits_per_file(1'000'000), "Too few digits to compress.");
    ASSERT_EQ(settings.set_hex(0), nullptr);
    EXPECT_EQ(settings.set_digits_per_file(1'000'000), nullptr);
    SettingsAccess::set_hex(settings, 1);
    EXPECT_STREQ(settings.set_digits_per_file(1'000'000), "Too few digits to compress.");
}

TEST(ComputeParameters, SwapModeNeedsAMillionDigits) {
    ComputeParameters settings;
    ASSERT_EQ(settings.set_dec(999'999), nullptr);
    EXPECT_STREQ(settings.set_mode(1), "Too few digits for swap mode.");
    EXPECT_EQ(settings.mode(), ComputeMode::ram_only);
    ASSERT_EQ(settings.set_dec(1'000'000), nullptr);
    EXPECT_EQ(settings.set_mode(1), nullptr);
    EXPECT_EQ(settings.mode(), ComputeMode::swap);
    EXPECT_STREQ(settings.set_mode(2), "Invalid Mode");
    EXPECT_STREQ(settings.set_mode(~u64_t{0}), "Invalid Mode");
    EXPECT_EQ(settings.mode(), ComputeMode::swap);
    EXPECT_EQ(settings.set_mode(0), nullptr);
    EXPECT_EQ(settings.mode(), ComputeMode::ram_only);
}

TEST(ComputeParameters, NineMillionDigitsTurnSwapModeOffSilently) {
    ComputeParameters settings;
    ASSERT_EQ(settings.set_dec(10'000'000), nullptr);
    ASSERT_EQ(settings.set_mode(1), nullptr);
    ASSERT_EQ(settings.set_dec(10'000'000), nullptr);
    EXPECT_EQ(settings.mode(), ComputeMode::swap);
    ASSERT_EQ(settings.set_dec(9'999'999), nullptr);
    EXPECT_EQ(settings.mode(), ComputeMode::ram_only);
    ASSERT_EQ(settings.set_mode(1), nullptr);  // the lower limit of set_mode
    ASSERT_EQ(settings.set_dec(10'000'000), nullptr);
    EXPECT_EQ(settings.mode(), ComputeMode::swap);
}

TEST(ComputeParameters, RefusedDigitsKeepModeAndCompression) {
    ComputeParameters settings;
    ASSERT_EQ(settings.set_mode(1), nullptr);
    ASSERT_EQ(settings.set_digits_per_file(1'000'000), nullptr);
    EXPECT_NE(settings.set_dec(10), nullptr);
    EXPECT_EQ(settings.mode(), ComputeMode::swap);
    EXPECT_EQ(settings.digits_per_file(), 1'000'000u);
}

TEST(ComputeParameters, MinIOIsKeptAsGivenAndWorksFromASectorUp) {
    ComputeParameters settings;
    settings.set_min_io(100);
    EXPECT_EQ(settings.minIO(), 100u);
    EXPECT_EQ(settings.swap().minIO_physical, 4096u);
    settings.set_min_io(1 << 20);
    EXPECT_EQ(settings.swap().minIO_logical, 1u << 20);
}

TEST(ComputeParameters, MemoryLimitIsStored) {
    ComputeParameters settings;
    settings.set_memory_limit(2'684'354'560);
    EXPECT_EQ(settings.memory_limit(), 2'684'354'560u);
}

// ---- The estimates ----------------------------------------------------------------------------------------

// Estimates that can be told from each other: 1000 bytes a thread, a byte a digit, and the algorithm.
bool distinct_memory(s32_t algorithm, upL_t, u64_t digits, u64_t threads, upL_t& bytes) {
    bytes = digits + 1000 * threads + 100 * static_cast<upL_t>(algorithm);
    return true;
}

TEST(Estimates, InMemoryAreTheConstantsAndTheTables) {
    TestSettings test;
    ComputeParameters& settings = test.settings;
    test.constant->memory_B = distinct_memory;
    SettingsAccess::update(settings);
    EXPECT_EQ(settings.ML(), 2000u);
    EXPECT_EQ(settings.Msize(), 2000u);
    EXPECT_EQ(settings.memTW(), table_size((settings.p() + 100) * 128));
    EXPECT_EQ(settings.memIO(), 0u);
    EXPECT_EQ(settings.Fsize(), 0u);
    EXPECT_EQ(settings.Osize(), settings.memTW());
    EXPECT_EQ(settings.longest_product_bits(), (settings.p() + 100) * 128);
}

TEST(Estimates, FollowEverySetter) {
    TestSettings test;
    ComputeParameters& settings = test.settings;
    test.constant->memory_B = distinct_memory;
    settings.set_threads(2);
    EXPECT_EQ(settings.ML(), 3000u);
    ASSERT_EQ(settings.set_dec(5000), nullptr);
    EXPECT_EQ(settings.ML(), 7000u);
    EXPECT_EQ(settings.memTW(), table_size((settings.p() + 100) * 128));
    ASSERT_EQ(settings.set_hex(5000), nullptr);  // 6020 decimal digits
    EXPECT_EQ(settings.ML(), 8020u);
    ASSERT_EQ(settings.set_algorithm(1), nullptr);
    EXPECT_EQ(settings.ML(), 8120u);
    ASSERT_EQ(settings.choose_constant(constant_id::sqrt, 2), nullptr);
    upL_t bytes = 0;
    if (settings.constant().runs_B(0))
        settings.constant().get_memory_B(0, settings.p(), settings.dec(), 2, bytes);
    EXPECT_EQ(settings.ML(), bytes);
}

TEST(Estimates, ARefusedEntryLeavesThem) {
    TestSettings test;
    ComputeParameters& settings = test.settings;
    test.constant->memory_B = distinct_memory;
    SettingsAccess::update(settings);
    EXPECT_NE(settings.set_dec(99), nullptr);
    EXPECT_NE(settings.set_hex(3), nullptr);
    EXPECT_NE(settings.set_algorithm(2), nullptr);
    EXPECT_EQ(settings.ML(), 2000u);
}

// A run in memory takes what it needs: the limit only rules runs on disk.
TEST(Estimates, TheMemoryLimitDoesNotChangeARunInMemory) {
    TestSettings test;
    test.constant->memory_B = distinct_memory;
    for (const u64_t limit : {u64_t{0}, u64_t{1}, u64_t{1} << 40, ~u64_t{0}}) {
        test.settings.set_memory_limit(limit);
        EXPECT_EQ(test.settings.ML(), 2000u);
    }
}

TEST(Estimates, AConstantWithoutItsComputationTellsWhatItWouldTake) {
    TestSettings test;
    test.constant->memory_B = [](s32_t, upL_t, u64_t, u64_t, upL_t& bytes) {
        bytes = 5;
        return true;
    };
    test.constant->has_run_B = false;
    SettingsAccess::update(test.settings);
    EXPECT_EQ(test.settings.ML(), 5u);
    EXPECT_EQ(test.settings.estimate_refusal(), "");
}

TEST(Estimates, AConstantWithoutAnEstimateNeedsNothing) {
    TestSettings test;
    test.constant->memory_B = [](s32_t, upL_t, u64_t, u64_t, upL_t&) { return false; };
    SettingsAccess::update(test.settings);
    EXPECT_EQ(test.settings.ML(), 0u);
    EXPECT_EQ(test.settings.estimate_refusal(), "");
}

TEST(Estimates, AnExceptionOfTheEstimatorIsKeptUntilItPasses) {
    TestSettings test;
    ComputeParameters& settings = test.settings;
    test.constant->memory_B = [](s32_t, upL_t, u64_t digits, u64_t, upL_t& bytes) -> bool {
        if (digits > 1000) throw zn_exception(error_code::unspecified, "message", "text");
        if (digits > 900) throw zn_exception(error_code::unspecified, "message");
        bytes = 5;
        return true;
    };
    ASSERT_EQ(settings.set_dec(2000), nullptr);
    EXPECT_EQ(settings.estimate_refusal(), "text");
    EXPECT_EQ(settings.ML(), 0u);
    EXPECT_EQ(settings.Osize(), 0u);
    ASSERT_EQ(settings.set_dec(1000), nullptr);
    EXPECT_EQ(settings.estimate_refusal(), "message");
    ASSERT_EQ(settings.set_dec(900), nullptr);
    EXPECT_EQ(settings.estimate_refusal(), "");
    EXPECT_EQ(settings.ML(), 5u);
}

// In swap mode: half of ML as disk, a smallest working memory of 3 MiB.
struct SwapSettings : TestSettings {
    static constexpr upL_t least = 3 << 20;

    SwapSettings() {
        constant->has_run_S = true;
        constant->memory_S = [](upL_t ML, upL_t minIO, u64_t& disk, upL_t& memory) {
            disk = ML / 2 + minIO;
            memory = ML == 0 ? least : 2 * least;
            return true;
        };
        settings.set_min_io(4096);
        SettingsAccess::set_mode(settings, ComputeMode::swap);
    }
    u64_t outside() const { return settings.memTW() + RaidFileSettings::default_buffer; }
};

TEST(Estimates, OnDiskAllOfTheLimitIsWorkingMemory) {
    SwapSettings test;
    test.settings.set_memory_limit(u64_t{1} << 30);
    EXPECT_EQ(test.settings.memIO(), RaidFileSettings::default_buffer);
    EXPECT_EQ(test.settings.Osize(), test.outside());
    EXPECT_EQ(test.settings.ML(), (u64_t{1} << 30) - test.outside());
    EXPECT_EQ(test.settings.Msize(), SwapSettings::least);
    EXPECT_EQ(test.settings.Fsize(), test.settings.ML() / 2 + 4096);
}

TEST(Estimates, OnDiskALimitBelowTheLeastIsRaised) {
    for (const u64_t limit : {u64_t{0}, u64_t{5000}}) {
        SwapSettings test;
        test.settings.set_memory_limit(limit);
        EXPECT_EQ(test.settings.ML(), SwapSettings::least);
    }
    SwapSettings test;
    test.settings.set_memory_limit(test.outside() + SwapSettings::least - 1);
    EXPECT_EQ(test.settings.ML(), SwapSettings::least);
    test.settings.set_memory_limit(test.outside() + SwapSettings::least + 1);
    EXPECT_EQ(test.settings.ML(), SwapSettings::least + 1);
}

TEST(Estimates, FitMemoryLimitAlone) {
    SwapSettings test;
    SettingsAccess::update_memory(test.settings);
    SettingsAccess::fit(test.settings, u64_t{1} << 30);
    EXPECT_EQ(test.settings.ML(), (u64_t{1} << 30) - test.outside());
    SettingsAccess::fit(test.settings, 7);
    EXPECT_EQ(test.settings.ML(), SwapSettings::least);
}

TEST(Estimates, OnDiskMinIOReachesTheConstant) {
    SwapSettings test;
    test.settings.set_min_io(1 << 20);
    EXPECT_EQ(test.settings.Fsize(), test.settings.ML() / 2 + (1 << 20));
}

TEST(Estimates, OnDiskTheyFollowTheSwapConfiguration) {
    SwapSettings test;
    test.settings.set_memory_limit(u64_t{1} << 30);
    const u64_t before = test.settings.ML();
    const int answer = test.settings.change_swap([](SwapConfiguration& swap) {
        swap.raid.total_buffer += 4096;
        return 7;
    });
    EXPECT_EQ(answer, 7);
    EXPECT_EQ(test.settings.memIO(), RaidFileSettings::default_buffer + 4096);
    EXPECT_EQ(test.settings.ML(), before - 4096);
}

TEST(Cost, IsWhatTheRecordWouldShowInEitherMode) {
    SwapSettings test;
    ComputeParameters& settings = test.settings;
    settings.set_memory_limit(u64_t{1} << 30);
    for (const u64_t mode : {u64_t{0}, u64_t{1}}) {
        SettingsAccess::set_mode(settings, static_cast<ComputeMode>(mode));
        SettingsAccess::update(settings);
        const auto in_memory = settings.cost_in(ComputeMode::ram_only);
        const auto on_disk = settings.cost_in(ComputeMode::swap);
        ASSERT_TRUE(in_memory && on_disk);
        EXPECT_EQ(in_memory->memory, settings.memTW() + testing::TestConstant::default_memory);
        EXPECT_EQ(in_memory->disk, 0u);
        EXPECT_EQ(on_disk->memory, test.outside() + SwapSettings::least);
        EXPECT_EQ(on_disk->disk, ((u64_t{1} << 30) - test.outside()) / 2 + 4096);
    }
    EXPECT_EQ(settings.Osize() + settings.Msize(), settings.cost_in(ComputeMode::swap)->memory);
    EXPECT_EQ(settings.Fsize(), settings.cost_in(ComputeMode::swap)->disk);
}

TEST(Cost, OnDiskWithALimitBelowTheLeast) {
    SwapSettings test;
    test.settings.set_memory_limit(5000);
    const auto cost = test.settings.cost_in(ComputeMode::swap);
    ASSERT_TRUE(cost);
    EXPECT_EQ(cost->disk, test.settings.Fsize());
    EXPECT_EQ(cost->memory, test.outside() + SwapSettings::least);
}

TEST(Cost, IsNotKnownWhereAModeHasNoEstimates) {
    TestSettings test;
    EXPECT_TRUE(test.settings.cost_in(ComputeMode::ram_only));
    EXPECT_FALSE(test.settings.cost_in(ComputeMode::swap));
    test.constant->memory_B = [](s32_t, upL_t, u64_t, u64_t, upL_t&) -> bool {
        throw zn_exception(error_code::unspecified, "message", "text");
    };
    EXPECT_FALSE(test.settings.cost_in(ComputeMode::ram_only));
    EXPECT_EQ(test.settings.estimate_refusal(), "");  // it changes nothing
}

TEST(Estimates, BackInMemoryNoDiskIsNeeded) {
    SwapSettings test;
    test.settings.set_memory_limit(u64_t{1} << 30);
    ASSERT_EQ(test.settings.set_mode(0), nullptr);
    EXPECT_EQ(test.settings.Fsize(), 0u);
    EXPECT_EQ(test.settings.memIO(), 0u);
    EXPECT_EQ(test.settings.ML(), testing::TestConstant::default_memory);
}

}  // namespace
}  // namespace znp
