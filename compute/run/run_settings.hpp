// What a run knows of the settings that it was started with.
#pragma once

#include <string>

#include "foundation/types.hpp"

namespace znp {

enum class ComputeMode : s32_t { ram_only = 0, swap = 1 };

struct RunSettings {
    std::string short_name, name;  // of the constant
    std::string algorithm_short, algorithm_name;
    u64_t param = 0;
    upL_t p = 0;  // precision in words
    u64_t dec = 0, hex = 0;
    ComputeMode mode = ComputeMode::ram_only;
    std::wstring path;
    u64_t digits_per_file = 0;
    u64_t tds = 1;
};

}  // namespace znp
