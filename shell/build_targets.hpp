// The levels of the instruction set that builds exist for, and the builds of a distribution.
#pragma once

#include <span>

#include "shell/cpu_features.hpp"

namespace znp {

// A level needs everything that the level below it needs, and its own features.
struct BuildLevel {
    const char* name;
    const BuildLevel* below;  // null: the first level
    std::span<const Feature> features;
};

extern const BuildLevel level_x64_SSE3;
extern const BuildLevel level_x64_SSE41;
extern const BuildLevel level_x64_AVX;
extern const BuildLevel level_x64_XOP;
extern const BuildLevel level_x64_AVX2;
extern const BuildLevel level_x64_AVX512;

bool supports_level(const CPUFeatures& features, const BuildLevel& level);

// The level of this build: x64 AVX2.
bool supports_this_build(const CPUFeatures& features);

struct BuildTarget {
    const char* display_name;
    const char* file;  // from the folder of the distribution
};

std::span<const BuildTarget> build_targets();

}  // namespace znp
