// Compares a text with a POSIX extended regular expression. (The library's own class brings warnings of the
// compiler into every optimised build with sanitizers.)
#pragma once

#include <regex.h>

#include <cstdlib>
#include <string>

namespace znp::testing {

// The date and time of the event log: "Sat Nov 21 13:50:07 2026".
inline const std::string date_pattern =
    "[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2} [0-9]{4}";

// Whether the whole text matches.
inline bool matches(const std::string& text, const std::string& pattern) {
    regex_t compiled;
    if (::regcomp(&compiled, ("^(" + pattern + ")$").c_str(), REG_EXTENDED | REG_NOSUB) != 0) std::abort();
    const bool found = ::regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
    ::regfree(&compiled);
    return found;
}

}  // namespace znp::testing
