#include "shell/build_targets.hpp"

#include <algorithm>
#include <array>

namespace znp {
namespace {

using F = CPUFeatures;

constexpr std::array<Feature, 5> features_x64_SSE3{&F::SSE, &F::SSE2, &F::SSE3, &F::x64, &F::OS_x64};
constexpr std::array<Feature, 2> features_x64_SSE41{&F::SSSE3, &F::SSE41};
constexpr std::array<Feature, 3> features_x64_AVX{&F::SSE42, &F::AVX, &F::OS_AVX};
constexpr std::array<Feature, 3> features_x64_XOP{&F::ABM, &F::XOP, &F::FMA4};
constexpr std::array<Feature, 4> features_x64_AVX2{&F::ABM, &F::BMI2, &F::FMA3, &F::AVX2};
constexpr std::array<Feature, 7> features_x64_AVX512{
    &F::ADX, &F::AVX512_F, &F::AVX512_CD, &F::AVX512_VL, &F::AVX512_BW, &F::AVX512_DQ, &F::OS_AVX512};

constexpr std::array<BuildTarget, 9> targets{{
    {"x86 - Linux", "Zelmar/Binaries/x86.out"},
    {"x86 SSE3 - Linux", "Zelmar/Binaries/x86 SSE3.out"},
    {"x64 SSE3 - Linux", "Zelmar/Binaries/x64 SSE3.out"},
    {"x64 SSE3 - Linux ~ Orrin", "Zelmar/Binaries/x64 SSE3 ~ Orrin.out"},
    {"x64 SSE4.1 - Linux ~ Tamsel", "Zelmar/Binaries/x64 SSE4.1 ~ Tamsel.out"},
    {"x64 SSE4.1 - Linux ~ Belwin", "Zelmar/Binaries/x64 SSE4.1 ~ Belwin.out"},
    {"x64 AVX - Linux ~ Corvy", "Zelmar/Binaries/x64 AVX ~ Corvy.out"},
    {"x64 XOP - Linux ~ Dalsen", "Zelmar/Binaries/x64 XOP ~ Dalsen.out"},
    {"x64 AVX2 - Linux ~ Fennic", "Zelmar/Binaries/x64 AVX2 ~ Fennic.out"},
}};

}  // namespace

constinit const BuildLevel level_x64_SSE3{"x64 SSE3", nullptr, features_x64_SSE3};
constinit const BuildLevel level_x64_SSE41{"x64 SSE4.1", &level_x64_SSE3, features_x64_SSE41};
constinit const BuildLevel level_x64_AVX{"x64 AVX", &level_x64_SSE41, features_x64_AVX};
constinit const BuildLevel level_x64_XOP{"x64 XOP", &level_x64_AVX, features_x64_XOP};
constinit const BuildLevel level_x64_AVX2{"x64 AVX2", &level_x64_AVX, features_x64_AVX2};
constinit const BuildLevel level_x64_AVX512{"x64 AVX512", &level_x64_AVX2, features_x64_AVX512};

bool supports_level(const CPUFeatures& features, const BuildLevel& level) {
    for (const BuildLevel* l = &level; l != nullptr; l = l->below) {
        const bool all = std::all_of(l->features.begin(), l->features.end(),
                                     [&](Feature feature) { return features.*feature != 0; });
        if (!all) return false;
    }
    return true;
}

bool supports_this_build(const CPUFeatures& features) {
    return supports_level(features, level_x64_AVX2);
}

std::span<const BuildTarget> build_targets() {
    return targets;
}

}  // namespace znp
