// Small string helpers: narrow and wide forms, numbers as text.
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

#include "foundation/types.hpp"

namespace znp {

// Copies unit by unit. A unit above 127 is reported and thrown as a bare text pointer.
std::string w_to_a_direct(const std::wstring& text);
std::wstring a_to_w_direct(const std::string& text);

std::string to_string_u64(u64_t value);

// The text by a printf format, cut to size - 1 characters.
[[gnu::format(printf, 2, 3)]] std::string format_printf(upL_t size, const char* format, ...);

std::string zero_padded_20(u64_t value);  // exactly 20 digits

constexpr bool is_decimal_digit(char c) {
    return c >= '0' && c <= '9';
}
constexpr char to_lower_ascii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The leading digits as a number, 0 if there are none; no overflow check. take_u64 moves the text behind
// them.
u64_t take_u64(std::string_view& text);
u64_t parse_u64(std::string_view text);

// The number of a value line: blanks and tabs, an optional "-", decimal digits up to CR, LF or the end of the
// text. False, with the value unchanged, for anything else. No overflow check.
bool parse_i64_line(std::string_view text, s64_t& value);

}  // namespace znp
