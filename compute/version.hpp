// What this build calls itself.
#pragma once

namespace znp {

inline constexpr const char* program_version = "0.6.7 Build 9457";
inline constexpr const char* program_target = "Linux - x64 AVX2 ~ Fennic";
inline constexpr const char* program_build = "0.6.7 Build 9457 (Linux - x64 AVX2 ~ Fennic)";

// An unfinished computation, in the current directory.
inline constexpr const wchar_t* checkpoint_file_name = L"Zelmar Checkpoint File.txt";

}  // namespace znp
