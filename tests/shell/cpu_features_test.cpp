#include "shell/cpu_features.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "expected_text.hpp"
#include "shell/build_targets.hpp"

namespace znp {
namespace {

using namespace testing::sent;

constexpr u32_t osxsave = u32_t{1} << 27;
constexpr u32_t avx = u32_t{1} << 28;

// A machine made of register values, which remembers what was executed on it.
class FakeProcessor final : public CpuidSource {
  public:
    std::map<u32_t, CpuidRegisters> leaves;
    u64_t register_state = 0;
    mutable std::vector<std::pair<u32_t, u32_t>> executed;
    mutable int xgetbv_count = 0;

    FakeProcessor(u32_t top_leaf, u32_t top_extended_leaf, const char* vendor) {
        CpuidRegisters leaf_0{top_leaf, 0, 0, 0};
        std::memcpy(&leaf_0.ebx, vendor, 4);
        std::memcpy(&leaf_0.edx, vendor + 4, 4);
        std::memcpy(&leaf_0.ecx, vendor + 8, 4);
        leaves[0] = leaf_0;
        leaves[0x80000000] = {top_extended_leaf, 0, 0, 0};
    }

    CpuidRegisters cpuid(u32_t leaf, u32_t subleaf) const override {
        executed.emplace_back(leaf, subleaf);
        const auto found = leaves.find(leaf);
        return found == leaves.end() ? CpuidRegisters{} : found->second;
    }
    u64_t xgetbv() const override {
        xgetbv_count++;
        return register_state;
    }
    bool has_executed(u32_t leaf) const {
        for (const auto& [l, subleaf] : executed) {
            if (l == leaf) return true;
        }
        return false;
    }
};

// All bits of all leaves set, and all register state enabled.
FakeProcessor full_processor() {
    FakeProcessor processor(7, 0x80000001, "GenuineIntel");
    constexpr u32_t all = ~u32_t{0};
    for (const u32_t leaf : {u32_t{1}, u32_t{7}, u32_t{0x80000001}}) {
        processor.leaves[leaf] = {all, all, all, all};
    }
    processor.register_state = ~u64_t{0};
    return processor;
}

CPUFeatures features_of(const CpuidSource& source) {
    CPUFeatures features;
    read_features(features, source);
    return features;
}

std::set<std::string> set_lines(const CPUFeatures& features) {
    const std::string report = testing::console_output([&] { print_features(features); });
    std::set<std::string> names;
    upL_t start = 0;
    while (start < report.size()) {
        const upL_t end = report.find('\n', start);
        const std::string line = report.substr(start, end - start);
        start = end + 1;
        if (line.find("Yes") == std::string::npos) continue;
        std::string name = line.substr(4, line.find(" = ") - 4);
        name.erase(name.find_last_not_of(' ') + 1);
        names.insert(name);
    }
    return names;
}

TEST(ReadFeatures, EveryBitFeedsItsOwnField) {
    struct Row {
        u32_t leaf;
        u32_t CpuidRegisters::*reg;
        unsigned bit;
        const char* name;
    };
    const auto b = &CpuidRegisters::ebx;
    const auto c = &CpuidRegisters::ecx;
    const auto d = &CpuidRegisters::edx;
    const u32_t ext = 0x80000001;
    const Row rows[] = {
        {1, d, 23, "MMX"},        {ext, d, 29, "x64"},      {ext, c, 5, "ABM"},
        {1, c, 30, "RDRAND"},     {7, b, 3, "BMI1"},        {7, b, 8, "BMI2"},
        {7, b, 19, "ADX"},        {7, c, 0, "PREFETCHWT1"}, {1, d, 25, "SSE"},
        {1, d, 26, "SSE2"},       {1, c, 0, "SSE3"},        {1, c, 9, "SSSE3"},
        {1, c, 19, "SSE4.1"},     {1, c, 20, "SSE4.2"},     {ext, c, 6, "SSE4a"},
        {1, c, 25, "AES-NI"},     {7, b, 29, "SHA"},        {1, c, 28, "AVX"},
        {ext, c, 11, "XOP"},      {1, c, 12, "FMA3"},       {ext, c, 16, "FMA4"},
        {7, b, 5, "AVX2"},        {7, b, 16, "AVX512-F"},   {7, b, 26, "AVX512-PF"},
        {7, b, 27, "AVX512-ER"},  {7, b, 28, "AVX512-CD"},  {7, b, 31, "AVX512-VL"},
        {7, b, 30, "AVX512-BW"},  {7, b, 17, "AVX512-DQ"},  {7, b, 21, "AVX512-IFMA"},
        {7, c, 1, "AVX512-VBMI"},
    };
    for (const Row& row : rows) {
        FakeProcessor processor(7, 0x80000001, "an unknown ");
        processor.leaves[row.leaf].*row.reg = u32_t{1} << row.bit;
        EXPECT_EQ(set_lines(features_of(processor)), (std::set<std::string>{"64-bit", row.name}));
    }
}

TEST(ReadFeatures, AFullProcessorHasEverythingOfItsVendor) {
    const CPUFeatures features = features_of(full_processor());
    EXPECT_EQ(features.AMD, 0);
    EXPECT_EQ(set_lines(features).size(), 35u);
}

TEST(ReadFeatures, VendorsAreToldByTheirName) {
    EXPECT_EQ(features_of(FakeProcessor(0, 0, "GenuineIntel")).Intel, 1);
    EXPECT_EQ(features_of(FakeProcessor(0, 0, "GenuineIntel")).AMD, 0);
    EXPECT_EQ(features_of(FakeProcessor(0, 0, "AuthenticAMD")).Intel, 0);
    EXPECT_EQ(features_of(FakeProcessor(0, 0, "AuthenticAMD")).AMD, 1);
}

TEST(ReadFeatures, AnUnknownVendorGives0ForBoth) {
    const CPUFeatures features = features_of(FakeProcessor(0, 0, "SomebodyElse"));
    EXPECT_EQ(features.AMD, 0);
    EXPECT_EQ(features.Intel, 0);
}

TEST(ReadFeatures, TopLeaf0ReadsNoFurtherLeaf) {
    FakeProcessor processor = full_processor();
    processor.leaves[0].eax = 0;
    processor.leaves[0x80000000].eax = 0x80000000;
    const CPUFeatures features = features_of(processor);
    EXPECT_EQ(set_lines(features), (std::set<std::string>{"64-bit", "Intel"}));
    EXPECT_FALSE(processor.has_executed(1));
    EXPECT_FALSE(processor.has_executed(7));
    EXPECT_FALSE(processor.has_executed(0x80000001));
    EXPECT_EQ(processor.xgetbv_count, 0);
}

TEST(ReadFeatures, TopLeafBelow7LeavesTheLeaf7FieldsAt0) {
    FakeProcessor processor = full_processor();
    processor.leaves[0].eax = 6;
    const CPUFeatures features = features_of(processor);
    EXPECT_FALSE(processor.has_executed(7));
    EXPECT_EQ(features.AVX2, 0);
    EXPECT_EQ(features.BMI2, 0);
    EXPECT_EQ(features.SHA, 0);
    EXPECT_EQ(features.AVX512_F, 0);
    EXPECT_EQ(features.PREFETCHWT1, 0);
    EXPECT_EQ(features.AVX, 1);
    EXPECT_EQ(features.ABM, 1);
}

TEST(ReadFeatures, Leaf7IsReadWithSubleaf0) {
    const FakeProcessor processor = full_processor();
    features_of(processor);
    EXPECT_NE(std::find(processor.executed.begin(), processor.executed.end(), std::pair<u32_t, u32_t>{7, 0}),
              processor.executed.end());
}

TEST(ReadFeatures, TheExtendedLeafNeedsItsLimit) {
    FakeProcessor processor = full_processor();
    processor.leaves[0x80000000].eax = 0x80000000;
    EXPECT_EQ(features_of(processor).x64, 0);
    EXPECT_FALSE(processor.has_executed(0x80000001));
}

TEST(ReadFeatures, XgetbvIsNotExecutedWithoutOsxsaveOrAvx) {
    for (const u32_t missing : {osxsave, avx}) {
        FakeProcessor processor = full_processor();
        processor.leaves[1].ecx &= ~missing;
        const CPUFeatures features = features_of(processor);
        EXPECT_EQ(processor.xgetbv_count, 0);
        EXPECT_EQ(features.OS_AVX, 0);
        EXPECT_EQ(features.OS_AVX512, 0);
    }
}

TEST(ReadFeatures, RegisterStateNeedsAllItsBits) {
    struct Row {
        u64_t state;
        int avx, avx512;
    };
    for (const Row& row :
         {Row{0x00, 0, 0}, Row{0x02, 0, 0}, Row{0x04, 0, 0}, Row{0x06, 1, 0}, Row{0x07, 1, 0},
          Row{0xE0, 0, 0}, Row{0xC6, 1, 0}, Row{0xE6, 1, 1}, Row{0xE7, 1, 1}}) {
        FakeProcessor processor = full_processor();
        processor.register_state = row.state;
        const CPUFeatures features = features_of(processor);
        EXPECT_EQ(features.OS_AVX, row.avx) << row.state;
        EXPECT_EQ(features.OS_AVX512, row.avx512) << row.state;
    }
}

TEST(ReadFeatures, OldContentsAreOverwritten) {
    CPUFeatures features;
    std::memset(&features, 1, sizeof features);
    read_features(features, FakeProcessor(0, 0, "SomebodyElse"));
    EXPECT_EQ(set_lines(features), (std::set<std::string>{"64-bit"}));
}

// The features that a level names besides those of the level below it.
void expect_level(const BuildLevel& level, const char* name, const BuildLevel* below,
                  const std::vector<Feature>& features) {
    EXPECT_STREQ(level.name, name);
    EXPECT_EQ(level.below, below);
    EXPECT_EQ(std::vector<Feature>(level.features.begin(), level.features.end()), features) << name;
}

TEST(BuildLevels, AreAChainWithTheirOwnFeatures) {
    using F = CPUFeatures;
    expect_level(level_x64_SSE3, "x64 SSE3", nullptr, {&F::SSE, &F::SSE2, &F::SSE3, &F::x64, &F::OS_x64});
    expect_level(level_x64_SSE41, "x64 SSE4.1", &level_x64_SSE3, {&F::SSSE3, &F::SSE41});
    expect_level(level_x64_AVX, "x64 AVX", &level_x64_SSE41, {&F::SSE42, &F::AVX, &F::OS_AVX});
    expect_level(level_x64_XOP, "x64 XOP", &level_x64_AVX, {&F::ABM, &F::XOP, &F::FMA4});
    expect_level(level_x64_AVX2, "x64 AVX2", &level_x64_AVX, {&F::ABM, &F::BMI2, &F::FMA3, &F::AVX2});
    expect_level(
        level_x64_AVX512, "x64 AVX512", &level_x64_AVX2,
        {&F::ADX, &F::AVX512_F, &F::AVX512_CD, &F::AVX512_VL, &F::AVX512_BW, &F::AVX512_DQ, &F::OS_AVX512});
}

TEST(BuildLevels, AFullProcessorSupportsEveryLevelAndAMissingFeatureEndsTheChain) {
    const BuildLevel* const levels[] = {&level_x64_SSE3, &level_x64_SSE41, &level_x64_AVX,
                                        &level_x64_XOP,  &level_x64_AVX2,  &level_x64_AVX512};
    const CPUFeatures full = features_of(full_processor());
    for (const BuildLevel* level : levels) {
        EXPECT_TRUE(supports_level(full, *level)) << level->name;
        for (const BuildLevel* part = level; part != nullptr; part = part->below) {
            for (const Feature feature : part->features) {
                CPUFeatures features = full;
                features.*feature = 0;
                EXPECT_FALSE(supports_level(features, *level))
                    << level->name << " without one of " << part->name;
            }
        }
    }
}

TEST(BuildLevels, Avx2NeedsNothingOfXopAndNoAdx) {
    CPUFeatures features = features_of(full_processor());
    features.XOP = features.FMA4 = features.ADX = features.AVX512_F = features.OS_AVX512 = 0;
    EXPECT_TRUE(supports_this_build(features));
    EXPECT_FALSE(supports_level(features, level_x64_XOP));
    EXPECT_FALSE(supports_level(features, level_x64_AVX512));
}

TEST(BuildTargets, TheLastIsThisBuild) {
    ASSERT_EQ(build_targets().size(), 9u);
    EXPECT_STREQ(build_targets().front().display_name, "x86 - Linux");
    EXPECT_STREQ(build_targets().front().file, "Zelmar/Binaries/x86.out");
    EXPECT_STREQ(build_targets().back().display_name, "x64 AVX2 - Linux ~ Fennic");
    EXPECT_STREQ(build_targets().back().file, "Zelmar/Binaries/x64 AVX2 ~ Fennic.out");
}

const std::string yes = G + "Yes" + W + "\n";
const std::string no = R + "No" + W + "\n";

TEST(PrintFeatures, IsTheWholeReport) {
    FakeProcessor processor = full_processor();
    processor.leaves[0x80000001].ecx = u32_t{1} << 5;  // ABM, but neither SSE4a nor XOP nor FMA4
    processor.leaves[7].ebx &= 0xffff;                 // no AVX512 and no SHA
    processor.leaves[7].ecx = 0;
    processor.register_state = 7;
    const std::string report = testing::console_output([&] { print_features(features_of(processor)); });
    EXPECT_EQ(report,
              "CPU Vendor:\n"
              "    AMD         = " +
                  no + "    Intel       = " + yes +
                  "OS Features:\n"
                  "  * 64-bit      = " +
                  yes + "  * OS AVX      = " + yes + "    OS AVX512   = " + no +
                  "Hardware Features:\n"
                  "    MMX         = " +
                  yes + "  * x64         = " + yes + "  * ABM         = " + yes + "    RDRAND      = " + yes +
                  "    BMI1        = " + yes + "  * BMI2        = " + yes + "    ADX         = " + no +
                  "    PREFETCHWT1 = " + no +
                  "SIMD: 128-bit\n"
                  "  * SSE         = " +
                  yes + "  * SSE2        = " + yes + "  * SSE3        = " + yes + "  * SSSE3       = " + yes +
                  "    SSE4a       = " + no + "  * SSE4.1      = " + yes + "  * SSE4.2      = " + yes +
                  "    AES-NI      = " + yes + "    SHA         = " + no +
                  "SIMD: 256-bit\n"
                  "  * AVX         = " +
                  yes + "  * XOP         = " + no + "  * FMA3        = " + yes + "  * FMA4        = " + no +
                  "  * AVX2        = " + yes +
                  "SIMD: 512-bit\n"
                  "    AVX512-F    = " +
                  no + "    AVX512-CD   = " + no + "    AVX512-PF   = " + no + "    AVX512-ER   = " + no +
                  "    AVX512-VL   = " + no + "    AVX512-BW   = " + no + "    AVX512-DQ   = " + no +
                  "    AVX512-IFMA = " + no + "    AVX512-VBMI = " + no);
}

const std::string warning = R +
                            "Warning:\n"
                            "This computer does not have all the processor or operating system\n"
                            "features that are necessary to run this binary.\n\n"
                            "Proceeding may cause the program to crash.\n\n" +
                            testing::sent::pause + "\n";

TEST(CheckFeatures, ASufficientMachineGoesOnAtOnce) {
    const FakeProcessor processor = full_processor();
    EXPECT_EQ(testing::console_output([&] { check_features(processor); }), required_features + W + "\n");
}

TEST(CheckFeatures, AnInsufficientMachineIsWarnedAndGoesOn) {
    FakeProcessor processor = full_processor();
    processor.leaves[7].ebx &= ~(u32_t{1} << 5);  // no AVX2
    const std::string expected = required_features + warning + W + "\n";
    EXPECT_EQ(testing::console_output([&] { check_features(processor); }, "\n"), expected);
    EXPECT_EQ(testing::console_output([&] { check_features(processor); }, ""), expected);
}

TEST(CheckFeatures, Avx2WithoutWideRegistersInTheSystemIsWarnedOf) {
    FakeProcessor processor = full_processor();
    processor.register_state = 3;
    const CPUFeatures features = features_of(processor);
    EXPECT_EQ(features.AVX2, 1);
    EXPECT_EQ(features.OS_AVX, 0);
    EXPECT_FALSE(supports_this_build(features));
    EXPECT_EQ(testing::console_output([&] { check_features(processor); }),
              required_features + warning + W + "\n");
}

TEST(ReadFeatures, ThisProcessorRunsThisCode) {
    const CPUFeatures features = features_of(this_processor());
    EXPECT_EQ(features.x64, 1);
    EXPECT_EQ(features.SSE2, 1);
}

}  // namespace
}  // namespace znp
