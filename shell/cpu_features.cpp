#include "shell/cpu_features.hpp"

#include <array>
#include <cstring>

#include "shell/build_targets.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

using F = CPUFeatures;
using Register = u32_t CpuidRegisters::*;

constexpr u32_t extended_leaf_0 = 0x80000000;
constexpr u32_t extended_leaf_1 = 0x80000001;

struct FeatureBit {
    Feature feature;
    u32_t leaf;
    Register reg;
    unsigned bit;
};

constexpr Register ebx = &CpuidRegisters::ebx;
constexpr Register ecx = &CpuidRegisters::ecx;
constexpr Register edx = &CpuidRegisters::edx;

constexpr std::array feature_bits{
    FeatureBit{&F::MMX, 1, edx, 23},
    FeatureBit{&F::SSE, 1, edx, 25},
    FeatureBit{&F::SSE2, 1, edx, 26},
    FeatureBit{&F::SSE3, 1, ecx, 0},
    FeatureBit{&F::SSSE3, 1, ecx, 9},
    FeatureBit{&F::FMA3, 1, ecx, 12},
    FeatureBit{&F::SSE41, 1, ecx, 19},
    FeatureBit{&F::SSE42, 1, ecx, 20},
    FeatureBit{&F::AES, 1, ecx, 25},
    FeatureBit{&F::AVX, 1, ecx, 28},
    FeatureBit{&F::RDRAND, 1, ecx, 30},
    FeatureBit{&F::BMI1, 7, ebx, 3},
    FeatureBit{&F::AVX2, 7, ebx, 5},
    FeatureBit{&F::BMI2, 7, ebx, 8},
    FeatureBit{&F::AVX512_F, 7, ebx, 16},
    FeatureBit{&F::AVX512_DQ, 7, ebx, 17},
    FeatureBit{&F::ADX, 7, ebx, 19},
    FeatureBit{&F::AVX512_IFMA, 7, ebx, 21},
    FeatureBit{&F::AVX512_PF, 7, ebx, 26},
    FeatureBit{&F::AVX512_ER, 7, ebx, 27},
    FeatureBit{&F::AVX512_CD, 7, ebx, 28},
    FeatureBit{&F::SHA, 7, ebx, 29},
    FeatureBit{&F::AVX512_BW, 7, ebx, 30},
    FeatureBit{&F::AVX512_VL, 7, ebx, 31},
    FeatureBit{&F::PREFETCHWT1, 7, ecx, 0},
    FeatureBit{&F::AVX512_VBMI, 7, ecx, 1},
    FeatureBit{&F::x64, extended_leaf_1, edx, 29},
    FeatureBit{&F::ABM, extended_leaf_1, ecx, 5},
    FeatureBit{&F::SSE4a, extended_leaf_1, ecx, 6},
    FeatureBit{&F::XOP, extended_leaf_1, ecx, 11},
    FeatureBit{&F::FMA4, extended_leaf_1, ecx, 16},
};

bool has_bit(u32_t value, unsigned bit) {
    return (value >> bit & 1) != 0;
}
bool has_mask(u64_t value, u64_t mask) {
    return (value & mask) == mask;
}

void read_vendor(CPUFeatures& features, const CpuidRegisters& leaf_0) {
    char vendor[12];
    std::memcpy(vendor, &leaf_0.ebx, 4);
    std::memcpy(vendor + 4, &leaf_0.edx, 4);
    std::memcpy(vendor + 8, &leaf_0.ecx, 4);
    features.AMD = std::memcmp(vendor, "AuthenticAMD", sizeof vendor) == 0;
    features.Intel = std::memcmp(vendor, "GenuineIntel", sizeof vendor) == 0;
}

// XGETBV traps where the operating system has not enabled it.
void read_register_state(CPUFeatures& features, const CpuidRegisters& leaf_1, const CpuidSource& source) {
    constexpr unsigned osxsave_bit = 27;
    constexpr unsigned avx_bit = 28;
    constexpr u64_t avx_state = 0x06;
    constexpr u64_t avx512_state = 0xE6;
    if (!has_bit(leaf_1.ecx, osxsave_bit) || !has_bit(leaf_1.ecx, avx_bit)) return;
    const u64_t enabled = source.xgetbv();
    features.OS_AVX = has_mask(enabled, avx_state);
    features.OS_AVX512 = has_mask(enabled, avx512_state);
}

void read_leaf(CPUFeatures& features, u32_t leaf, const CpuidRegisters& registers) {
    for (const FeatureBit& row : feature_bits) {
        if (row.leaf == leaf) features.*row.feature = has_bit(registers.*row.reg, row.bit);
    }
}

struct ReportLine {
    const char* text;
    Feature feature;  // null: the text is the heading of a group
};

constexpr std::array report_lines{
    ReportLine{"CPU Vendor:", nullptr},
    ReportLine{"    AMD         = ", &F::AMD},
    ReportLine{"    Intel       = ", &F::Intel},
    ReportLine{"OS Features:", nullptr},
    ReportLine{"  * 64-bit      = ", &F::OS_x64},
    ReportLine{"  * OS AVX      = ", &F::OS_AVX},
    ReportLine{"    OS AVX512   = ", &F::OS_AVX512},
    ReportLine{"Hardware Features:", nullptr},
    ReportLine{"    MMX         = ", &F::MMX},
    ReportLine{"  * x64         = ", &F::x64},
    ReportLine{"  * ABM         = ", &F::ABM},
    ReportLine{"    RDRAND      = ", &F::RDRAND},
    ReportLine{"    BMI1        = ", &F::BMI1},
    ReportLine{"  * BMI2        = ", &F::BMI2},
    ReportLine{"    ADX         = ", &F::ADX},
    ReportLine{"    PREFETCHWT1 = ", &F::PREFETCHWT1},
    ReportLine{"SIMD: 128-bit", nullptr},
    ReportLine{"  * SSE         = ", &F::SSE},
    ReportLine{"  * SSE2        = ", &F::SSE2},
    ReportLine{"  * SSE3        = ", &F::SSE3},
    ReportLine{"  * SSSE3       = ", &F::SSSE3},
    ReportLine{"    SSE4a       = ", &F::SSE4a},
    ReportLine{"  * SSE4.1      = ", &F::SSE41},
    ReportLine{"  * SSE4.2      = ", &F::SSE42},
    ReportLine{"    AES-NI      = ", &F::AES},
    ReportLine{"    SHA         = ", &F::SHA},
    ReportLine{"SIMD: 256-bit", nullptr},
    ReportLine{"  * AVX         = ", &F::AVX},
    ReportLine{"  * XOP         = ", &F::XOP},
    ReportLine{"  * FMA3        = ", &F::FMA3},
    ReportLine{"  * FMA4        = ", &F::FMA4},
    ReportLine{"  * AVX2        = ", &F::AVX2},
    ReportLine{"SIMD: 512-bit", nullptr},
    ReportLine{"    AVX512-F    = ", &F::AVX512_F},
    ReportLine{"    AVX512-CD   = ", &F::AVX512_CD},
    ReportLine{"    AVX512-PF   = ", &F::AVX512_PF},
    ReportLine{"    AVX512-ER   = ", &F::AVX512_ER},
    ReportLine{"    AVX512-VL   = ", &F::AVX512_VL},
    ReportLine{"    AVX512-BW   = ", &F::AVX512_BW},
    ReportLine{"    AVX512-DQ   = ", &F::AVX512_DQ},
    ReportLine{"    AVX512-IFMA = ", &F::AVX512_IFMA},
    ReportLine{"    AVX512-VBMI = ", &F::AVX512_VBMI},
};

}  // namespace

void read_features(CPUFeatures& features, const CpuidSource& source) {
    features = {};
    features.OS_x64 = 1;

    const CpuidRegisters leaf_0 = source.cpuid(0, 0);
    const u32_t top_leaf = leaf_0.eax;
    read_vendor(features, leaf_0);
    if (top_leaf > 0) {
        const CpuidRegisters leaf_1 = source.cpuid(1, 0);
        read_leaf(features, 1, leaf_1);
        read_register_state(features, leaf_1, source);
    }
    if (top_leaf > 6) read_leaf(features, 7, source.cpuid(7, 0));
    if (source.cpuid(extended_leaf_0, 0).eax > extended_leaf_0) {
        read_leaf(features, extended_leaf_1, source.cpuid(extended_leaf_1, 0));
    }
}

void print_features(const CPUFeatures& features) {
    for (const ReportLine& line : report_lines) {
        if (line.feature == nullptr) {
            Console::println(line.text);
        } else {
            Console::print(line.text);
            Console::print_yes_no(features.*line.feature != 0);
        }
    }
}

void check_features(const CpuidSource& source) {
    Console::println("\nChecking processor/OS features...\n");
    Console::println("Required Features:");
    Console::println("    x64, SSE, SSE2, SSE3, SSSE3, SSE4.1, SSE4.2, AVX, ABM, FMA3, AVX2, BMI2", 'T');
    Console::print_newline();

    CPUFeatures features;
    read_features(features, source);
    if (!supports_this_build(features)) {
        Console::println("Warning:", 'R');
        Console::println("This computer does not have all the processor or operating system");
        Console::println("features that are necessary to run this binary.\n");
        Console::println("Proceeding may cause the program to crash.\n");
        Console::pause('w');
        Console::print_newline();
    }
    Console::print("\n", 'w');
}

}  // namespace znp
