// The fatal screens: print routines that never return. The only places besides main that end the program.
#pragma once

#include <string>

#include "foundation/types.hpp"

namespace znp {

// The categories of the fatal screens.
namespace fatal_category {
inline constexpr const wchar_t* invalid_parameters = L"Invalid Function Parameters:   ";
inline constexpr const wchar_t* impossible_result = L"Impossible Functional Result:   ";
inline constexpr const wchar_t* algorithmic_failure = L"Critical Algorithmic Failure:   ";
inline constexpr const wchar_t* redundancy_failure = L"Global Redundancy Check Failed:   ";
inline constexpr const wchar_t* array_bounds = L"Array Bounds Checking: ";
inline constexpr const wchar_t* algorithmic_limit = L"Algorithmic Limit Exceeded: ";
inline constexpr const wchar_t* architectural_limit = L"Architectural Limit Exceeded: ";
}  // namespace fatal_category

// Labels of the two values of a failed comparison.
inline constexpr const char* label_actual = "Actual  : ";
inline constexpr const char* label_expected = "Expected: ";

// Line feed, the text in red, line feed in white, then pause_and_exit(1).
[[noreturn]] void fatal_exit(const std::string& text);

// Pause, the colour reset, then the process exit. The pause happens on non-interactive runs too.
[[noreturn]] void pause_and_exit(int status);

// The process exit itself, from any thread: flushes standard output, runs no destructors of static objects
// (other threads may still use them), and ends with the status.
[[noreturn]] void exit_process(int status);

[[noreturn]] void assert_failure(const wchar_t* category, const std::wstring& component,
                                 const std::wstring& detail);
[[noreturn]] void limit_failure(const wchar_t* category, const std::wstring& component,
                                const std::wstring& detail);
[[noreturn]] void hardware_error_report();

// For retry loops that count their rounds: "Succeeded after N re-attempt(s). ..." in red.
void report_reattempts(u64_t count);

// One clear fatal error for a piece of the system that is not part of this version yet, and its text.
[[noreturn]] void not_available_yet(const std::string& what);
std::string not_available_text(const std::string& what);

}  // namespace znp
