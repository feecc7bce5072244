#include "shell/cpu_features.hpp"

#include <array>
#include <cstring>

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

}  // namespace znp
