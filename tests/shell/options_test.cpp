// The option tables of the commands, applied to their records.
#include <gtest/gtest.h>

#include "expected_text.hpp"
#include "foundation/threads.hpp"
#include "shell/benchmark.hpp"
#include "shell/custom_command.hpp"
#include "shell/io_command.hpp"
#include "shell/stress_command.hpp"
#include "temporary_folder.hpp"

namespace znp {
namespace {

using namespace testing::sent;
using testing::TemporaryFolder;

// Applies the words to the record and gives back what was printed.
template <class Record>
std::string apply_words(void (*options)(Record&, CommandLine&), Record& record,
                        std::vector<std::string> words) {
    words.insert(words.begin(), "zelmar");
    CommandLine line(words);
    return testing::console_output([&] { options(record, line); });
}

std::string apply_words(ComputeParameters& settings, const std::vector<std::string>& words) {
    return apply_words(apply_custom_options, settings, words);
}

int choose(ComputeParameters& settings, const std::string& word, std::string& printed) {
    CommandLine line({"zelmar", word});
    line.advance();
    int result = -1;
    printed = testing::console_output([&] { result = choose_constant_by_keyword(settings, line); });
    return result;
}

TEST(ConstantKeyword, EveryKeywordNamesItsConstant) {
    struct Row {
        const char* word;
        u32_t id;
        u64_t parameter;
    };
    const Row rows[] = {
        {"sqrt:2", 0, 2},
        {"phi", 1, 0},
        {"goldenratio", 1, 0},
        {"e", 2, 0},
        {"pi", 3, 0},
        {"arccoth:2", 4, 2},
        {"log:10", 5, 10},
        {"apery", 6, 0},
        {"zeta(3)", 6, 0},
        {"lemniscate", 7, 0},
        {"catalan", 8, 0},
        {"gamma", 9, 0},
        {"pi:77", 3, 77},
        {"sqrt:18446744073709551615", 0, 18446744073709551615u},
        {"arccoth:4294967295", 4, 4294967295},
    };
    for (const Row& row : rows) {
        ComputeParameters settings;
        std::string printed;
        EXPECT_EQ(choose(settings, row.word, printed), 0) << row.word;
        // Log(n) tells of its formulas.
        EXPECT_EQ(printed.empty(), row.id != constant_id::log) << printed;
        EXPECT_EQ(settings.id(), row.id) << row.word;
        EXPECT_EQ(settings.param(), row.parameter) << row.word;
    }
}

TEST(ConstantKeyword, RefusalsPrintTheirReason) {
    struct Row {
        const char* word;
        std::string printed;
    };
    const std::string square = error_line("This is a perfect square.");
    const std::string range = error_line("Parameter out of range");
    const Row rows[] = {
        {"foo:3", skip_line("foo:3")},
        {"", skip_line("")},
        {"PI", skip_line("PI")},
        {"-dec:100", skip_line("-dec:100")},
        {"sqrt:16", square},
        {"sqrt:0", square},
        {"sqrt:1", square},
        {"sqrt:4", square},
        {"sqrt", square},
        {"arccoth:1", range},
        {"arccoth:4294967296", range},
        {"log:1", range},
        {"log:2147483648", range},
        {"brent:20", error_line("Invalid constant, or not yet implemented.")},
    };
    for (const Row& row : rows) {
        ComputeParameters settings;
        std::string printed;
        EXPECT_EQ(choose(settings, row.word, printed), 1) << row.word;
        EXPECT_EQ(printed, row.printed) << row.word;
        EXPECT_EQ(settings.id(), 3u) << row.word;
    }
}

TEST(CustomOptions, EveryOptionReachesItsSetting) {
    const TemporaryFolder folder;
    ComputeParameters settings;
    EXPECT_EQ(apply_words(settings,
                          {"-algorithm:1", "-dec:1b", "-T:8", "-o", folder.path(), "-C:100m", "-mode:swap",
                           "-M:2.5G", "-minIO:1M", "-swap:raid0", folder.path(), folder.path()}),
              "");
    EXPECT_EQ(settings.algorithm(), 1);
    EXPECT_EQ(settings.dec(), 1'000'000'000u);
    EXPECT_EQ(settings.tds(), 8u);
    EXPECT_EQ(settings.path(), folder.wide_path());
    EXPECT_EQ(settings.digits_per_file(), 100'000'000u);
    EXPECT_EQ(settings.mode(), ComputeMode::swap);
    EXPECT_EQ(settings.memory_limit(), 2'684'354'560u);
    EXPECT_EQ(settings.minIO(), 1u << 20);
    EXPECT_EQ(settings.swap().raid.groups.size(), 2u);
    EXPECT_EQ(settings.swap().minIO_logical, 2u << 20);
    EXPECT_TRUE(folder.is_empty());
}

TEST(CustomOptions, UnknownOptionsAreSkippedAndThreadsClipped) {
    ComputeParameters settings;
    EXPECT_EQ(apply_words(settings, {"-dec:1b", "-zzz", "-T:0"}), skip_line("-zzz") + clip_line("1"));
    EXPECT_EQ(settings.dec(), 1'000'000'000u);
    EXPECT_EQ(settings.tds(), 1u);
    EXPECT_EQ(apply_words(settings, {"-zzz:1:2", "-t:4", "-DEC:5"}),
              skip_line("-zzz:1:2") + skip_line("-t:4") + skip_line("-DEC:5"));
}

TEST(CustomOptions, ThreadsAreClippedWithAWarning) {
    ComputeParameters settings;
    EXPECT_EQ(apply_words(settings, {"-T:x"}), clip_line("1"));
    EXPECT_EQ(apply_words(settings, {"-T"}), clip_line("1"));
    EXPECT_EQ(apply_words(settings, {"-T:257"}), clip_line("256"));
    EXPECT_EQ(settings.tds(), 256u);
    EXPECT_EQ(apply_words(settings, {"-T:256"}), "");
    EXPECT_EQ(apply_words(settings, {"-T:1"}), "");
    EXPECT_EQ(settings.tds(), 1u);
}

TEST(CustomOptions, ARefusedOptionKeepsTheOldSettingAndTheLoopGoesOn) {
    ComputeParameters settings;
    const std::string range = error_line("# of digits is out of range");
    EXPECT_EQ(apply_words(settings, {"-algorithm:2", "-dec:99", "-hex:1", "-T:3"}),
              error_line("Invalid Algorithm") + range + range);
    EXPECT_EQ(settings.algorithm(), 0);
    EXPECT_EQ(settings.dec(), 50'000'000u);
    EXPECT_EQ(settings.tds(), 3u);
}

// From the smallest run to the largest of every constant: each option finds estimates or says why there are
// none.
TEST(CustomOptions, EveryConstantTakesEveryOption) {
    for (const char* constant : {"sqrt:2", "phi", "e", "pi", "arccoth:2", "arccoth:4294967295", "log:2",
                                 "log:2147483647", "apery", "lemniscate", "catalan", "gamma"}) {
        ComputeParameters settings;
        std::string printed;
        ASSERT_EQ(choose(settings, constant, printed), 0) << constant;
        for (const char* digits :
             {"-dec:100", "-hex:1k", "-dec:1m", "-dec:50m", "-dec:1t", "-dec:90000000000050"}) {
            for (const char* option : {"-T:256", "-T:1", "-algorithm:0", "-M:1G", "-minIO:1", "-mode:ram"}) {
                EXPECT_EQ(apply_words(settings, {digits, option}), "") << constant << digits << option;
                EXPECT_EQ(settings.Osize(), settings.memTW() + settings.memIO());
                const bool estimated = settings.estimate_refusal().empty();
                EXPECT_EQ(settings.ML() != 0, estimated) << constant << digits << option;
                EXPECT_EQ(settings.ML(), settings.Msize());
            }
        }
    }
}

TEST(CustomOptions, DecHasNoFractionAndMemoryHas) {
    ComputeParameters settings;
    EXPECT_EQ(apply_words(settings, {"-dec:2.5b", "-M:2.5G"}), error_line("# of digits is out of range"));
    EXPECT_EQ(settings.memory_limit(), 2'684'354'560u);
}

TEST(CustomOptions, Hex) {
    ComputeParameters settings;
    EXPECT_EQ(apply_words(settings, {"-hex:1m"}), "");
    EXPECT_EQ(settings.hex(), 1'000'000u);
    EXPECT_EQ(settings.dec(), 1'204'119u);
    EXPECT_EQ(apply_words(settings, {"-hex:0"}), "");
    EXPECT_EQ(settings.hex(), 0u);
    EXPECT_EQ(settings.dec(), 1'204'119u);
}

TEST(CustomOptions, Compression) {
    ComputeParameters settings;
    EXPECT_EQ(apply_words(settings, {"-C:999999"}), error_line("Too few digits per file."));
    EXPECT_EQ(apply_words(settings, {"-dec:1048575", "-C:1m"}), error_line("Too few digits to compress."));
    EXPECT_EQ(apply_words(settings, {"-C:0"}), "");
    EXPECT_EQ(apply_words(settings, {"-dec:10m", "-C:1m"}), "");
    EXPECT_EQ(settings.digits_per_file(), 1'000'000u);
    EXPECT_EQ(apply_words(settings, {"-C:0"}), "");
    EXPECT_EQ(settings.digits_per_file(), 0u);
}

TEST(CustomOptions, Mode) {
    ComputeParameters settings;
    EXPECT_EQ(apply_words(settings, {"-mode:disk", "-mode", "-mode:Swap"}),
              skip_line("disk") + skip_line("") + skip_line("Swap"));
    EXPECT_EQ(apply_words(settings, {"-dec:999999", "-mode:swap"}),
              error_line("Too few digits for swap mode."));
    EXPECT_EQ(settings.mode(), ComputeMode::ram_only);
    EXPECT_EQ(apply_words(settings, {"-dec:10m", "-mode:swap"}), "");
    EXPECT_EQ(settings.mode(), ComputeMode::swap);
    EXPECT_EQ(apply_words(settings, {"-mode:ram"}), "");
    EXPECT_EQ(settings.mode(), ComputeMode::ram_only);
}

TEST(CustomOptions, OutputPathIsTheWholeNextWord) {
    const TemporaryFolder folder;
    ComputeParameters settings;
    std::filesystem::create_directory(folder.path() + "/-dec:5");
    EXPECT_EQ(apply_words(settings, {"-o", folder.path() + "/-dec:5"}), "");
    EXPECT_EQ(settings.path(), folder.wide_path() + L"/-dec:5");
    EXPECT_EQ(apply_words(settings, {"-o", folder.path() + "/missing"}),
              error_line("Unable to write to path."));
    EXPECT_EQ(settings.path(), folder.wide_path() + L"/-dec:5");
    EXPECT_THROW(apply_words(settings, {"-o"}), CommandLine::CommandLineException);
}

TEST(CustomOptions, SwapTakesTheRestOfTheLine) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() + "/-T:5");
    ComputeParameters settings;
    const u32_t threads = settings.tds();
    EXPECT_EQ(
        apply_words(settings, {"-swap:raid3", folder.path(), folder.path() + "/-T:5", folder.path() + "/"}),
        "");
    ASSERT_EQ(settings.swap().raid.groups.size(), 1u);
    EXPECT_EQ(settings.swap().raid.groups[0].paths.size(), 3u);
    EXPECT_EQ(settings.swap().raid.groups[0].paths[1].path, folder.wide_path() + L"/-T:5");
    EXPECT_EQ(settings.tds(), threads);
}

TEST(CustomOptions, SwapWithoutAPathThrows) {
    ComputeParameters settings;
    EXPECT_THROW(apply_words(settings, {"-swap:raid0"}), CommandLine::CommandLineException);
    EXPECT_THROW(apply_words(settings, {"-swap:raid3"}), CommandLine::CommandLineException);
    EXPECT_THROW(apply_words(settings, {"-swap"}), CommandLine::CommandLineException);
}

TEST(CustomOptions, SwapRefusals) {
    const TemporaryFolder folder;
    ComputeParameters settings;
    EXPECT_EQ(apply_words(settings, {"-swap:raid5", folder.path(), "-T:5"}), error_line("Unrecognized mode"));
    EXPECT_EQ(apply_words(settings, {"-swap:raid0", folder.path() + "/missing"}),
              error_line("This path is not writable."));
    std::vector<std::string> words(65, folder.path());
    words.insert(words.begin(), "-swap:raid0");
    EXPECT_EQ(apply_words(settings, words), error_line("There is a limit of 64 paths for RAID0."));
    words.resize(1 + 9);
    words[0] = "-swap:raid3";
    EXPECT_EQ(apply_words(settings, words), error_line("There is a limit of 8 paths for RAID3."));
    EXPECT_TRUE(settings.swap().raid.groups.empty());
}

TEST(BenchmarkOptions, EverySizeLabelAndThreads) {
    for (const auto table : {decimal_benchmark_sizes(), binary_benchmark_sizes()}) {
        for (const BenchmarkSize& size : table) {
            BenchmarkParameters parameters;
            EXPECT_EQ(parameters.size, nullptr);
            EXPECT_EQ(parameters.threads, logical_cores());
            EXPECT_EQ(apply_words(apply_benchmark_options, parameters, {std::string(size.key), "-T:7"}), "");
            EXPECT_EQ(parameters.size, &size) << size.key;
            EXPECT_EQ(parameters.threads, 7u);
        }
    }
}

TEST(BenchmarkOptions, TheLastOfTwoSizesWins) {
    BenchmarkParameters parameters;
    EXPECT_EQ(apply_words(apply_benchmark_options, parameters, {"1b", "1M"}), "");
    EXPECT_EQ(parameters.size->digits, 1'048'576u);
}

TEST(BenchmarkOptions, ThreadsAreStoredAsTheyAre) {
    BenchmarkParameters parameters;
    EXPECT_EQ(apply_words(apply_benchmark_options, parameters, {"25m", "-T:999"}), "");
    EXPECT_EQ(parameters.threads, 999u);
    EXPECT_EQ(apply_words(apply_benchmark_options, parameters, {"-T:x"}), "");
    EXPECT_EQ(parameters.threads, 0u);
}

TEST(BenchmarkOptions, LabelsAreCaseSensitive) {
    BenchmarkParameters parameters;
    EXPECT_EQ(apply_words(apply_benchmark_options, parameters, {"1m", "1B", "-M:1G"}),
              skip_line("1m") + skip_line("1B") + skip_line("-M:1G"));
    EXPECT_EQ(parameters.size, nullptr);
}

TEST(BenchmarkSizes, AreTheTables) {
    ASSERT_EQ(decimal_benchmark_sizes().size(), 16u);
    ASSERT_EQ(binary_benchmark_sizes().size(), 18u);
    for (upL_t i = 0; i < 18; i++) EXPECT_EQ(binary_benchmark_sizes()[i].digits, u64_t{1} << (20 + i));
    EXPECT_EQ(find_benchmark_size("2.5t")->digits, 2'500'000'000'000u);
    EXPECT_EQ(find_benchmark_size("25m")->last_ten_digits, 6191884322u);
    EXPECT_EQ(find_benchmark_size("1M")->last_ten_digits, 1637429204u);
    EXPECT_EQ(find_benchmark_size("128G")->last_ten_digits, 4195937134u);
    EXPECT_EQ(find_benchmark_size("3m"), nullptr);
    for (const auto table : {decimal_benchmark_sizes(), binary_benchmark_sizes()}) {
        for (const BenchmarkSize& size : table) EXPECT_LT(size.last_ten_digits, 10'000'000'000u) << size.key;
    }
}

TEST(BenchmarkSizes, Row100mIsStoredWithoutItsLeadingZero) {
    EXPECT_EQ(find_benchmark_size("100m")->last_ten_digits, 187751592u);
}

TEST(BenchmarkSettings, ArePiByChudnovskyWithoutHexadecimalDigits) {
    BenchmarkParameters parameters;
    parameters.size = find_benchmark_size("1M");
    parameters.threads = 3;
    std::string printed;
    printed = testing::console_output([&] {
        const ComputeParameters settings = benchmark_settings(parameters);
        EXPECT_EQ(settings.id(), 3u);
        EXPECT_EQ(settings.param(), 0u);
        EXPECT_EQ(settings.algorithm(), 0);
        EXPECT_EQ(settings.dec(), 1'048'576u);
        EXPECT_EQ(settings.hex(), 0u);
        EXPECT_EQ(settings.tds(), 3u);
        EXPECT_EQ(settings.mode(), ComputeMode::ram_only);
    });
    EXPECT_EQ(printed, "");
}

TEST(BenchmarkSettings, ThreadsAreClippedWithAWarning) {
    BenchmarkParameters parameters;
    parameters.size = find_benchmark_size("25m");
    for (const auto& [threads, clipped] : {std::pair<u64_t, u32_t>{0, 1}, {999, 256}}) {
        parameters.threads = threads;
        u32_t tds = 0;
        EXPECT_EQ(testing::console_output([&] { tds = benchmark_settings(parameters).tds(); }),
                  clip_line(std::to_string(clipped)));
        EXPECT_EQ(tds, clipped);
    }
}

stress_settings some_stress_settings() {
    stress_settings settings{};
    settings.memory = 1;
    settings.threads = 2;
    settings.seconds = 3;
    settings.stop_on_error = true;
    select_all_stress_tests(settings);
    return settings;
}

TEST(StressOptions, OnlyNamedTestsAreOn) {
    stress_settings settings = some_stress_settings();
    EXPECT_EQ(apply_words(apply_stress_options, settings, {"BKT", "HNT"}), "");
    EXPECT_TRUE(settings.test_BKT);
    EXPECT_FALSE(settings.test_FFT);
    EXPECT_TRUE(settings.test_HNT);
    EXPECT_FALSE(settings.test_VST);
    EXPECT_EQ(settings.memory, 1u);
    EXPECT_EQ(settings.threads, 2u);
    EXPECT_EQ(settings.seconds, 3u);
    EXPECT_TRUE(settings.stop_on_error);
    EXPECT_EQ(apply_words(apply_stress_options, settings, {"FFT", "VST"}), "");
    EXPECT_FALSE(settings.test_BKT);
    EXPECT_TRUE(settings.test_FFT);
    EXPECT_TRUE(settings.test_VST);
}

TEST(StressOptions, NoKeyNamingATestLeavesNoneOn) {
    stress_settings settings = some_stress_settings();
    EXPECT_EQ(apply_words(apply_stress_options, settings, {"-D:10", "bkt"}), skip_line("bkt"));
    EXPECT_EQ(settings.seconds, 10u);
    EXPECT_FALSE(settings.test_BKT || settings.test_FFT || settings.test_HNT || settings.test_VST);
}

TEST(StressOptions, ThreadsAreClippedSilently) {
    stress_settings settings = some_stress_settings();
    EXPECT_EQ(apply_words(apply_stress_options, settings, {"-T:0"}), "");
    EXPECT_EQ(settings.threads, 1u);
    EXPECT_EQ(apply_words(apply_stress_options, settings, {"-T:1000"}), "");
    EXPECT_EQ(settings.threads, 256u);
    EXPECT_EQ(apply_words(apply_stress_options, settings, {"-T:x"}), "");
    EXPECT_EQ(settings.threads, 1u);
    EXPECT_EQ(apply_words(apply_stress_options, settings, {"-T:64"}), "");
    EXPECT_EQ(settings.threads, 64u);
}

TEST(StressOptions, MemoryIsLimitedTo2To63Less1) {
    stress_settings settings = some_stress_settings();
    EXPECT_EQ(apply_words(apply_stress_options, settings, {"-M:1.5G"}), "");
    EXPECT_EQ(settings.memory, 1'610'612'736u);
    EXPECT_EQ(apply_words(apply_stress_options, settings, {"-M:8E"}), "");
    EXPECT_EQ(settings.memory, 0x7fffffffffffffffu);
}

TEST(IOAnalysisOptions, EveryOptionReachesItsSetting) {
    const TemporaryFolder folder;
    IOAnalysis settings;
    EXPECT_EQ(apply_words(apply_io_options, settings,
                          {"-M:1G", "-T:9", "-minIO:512K", "-x", "-swap:raid0", folder.path()}),
              skip_line("-x"));
    EXPECT_EQ(settings.memory, u64_t{1} << 30);
    EXPECT_EQ(settings.test_bytes, u64_t{8} << 30);
    EXPECT_EQ(settings.threads, 9u);
    EXPECT_EQ(settings.min_io, 512u << 10);
    EXPECT_EQ(settings.swap.minIO_physical, 512u << 10);
    EXPECT_EQ(settings.swap.raid.groups.size(), 1u);
}

TEST(IOAnalysisOptions, LimitsAndRefusals) {
    IOAnalysis settings;
    EXPECT_EQ(apply_words(apply_io_options, settings, {"-M:9E", "-T:0", "-minIO:1"}), "");
    EXPECT_EQ(settings.memory, 0x7fffffffffffffffu);
    EXPECT_EQ(settings.test_bytes, 0xfffffffffffffff8u);
    EXPECT_EQ(settings.threads, 1u);
    EXPECT_EQ(settings.min_io, 1u);
    EXPECT_EQ(settings.swap.minIO_physical, 4096u);
    EXPECT_EQ(apply_words(apply_io_options, settings, {"-T:300"}), "");
    EXPECT_EQ(settings.threads, 256u);
    EXPECT_EQ(apply_words(apply_io_options, settings, {"-swap:raid1", "a"}), error_line("Unrecognized mode"));
    EXPECT_THROW(apply_words(apply_io_options, settings, {"-swap:raid0"}), CommandLine::CommandLineException);
}

TEST(IOAnalysis, Defaults) {
    const IOAnalysis settings = default_io_analysis();
    EXPECT_EQ(settings.test_bytes, 8 * settings.memory);
    EXPECT_GT(settings.memory, 0u);
    EXPECT_LE(settings.memory, u64_t{1} << 30);
    EXPECT_EQ(settings.threads, std::min(logical_cores(), max_threads));
    EXPECT_EQ(settings.min_io, 0x40000u);
    EXPECT_TRUE(settings.swap.raid.groups.empty());
}

}  // namespace
}  // namespace znp
