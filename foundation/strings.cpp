#include "foundation/strings.hpp"

#include <algorithm>
#include <cstdio>

#include "shell/console.hpp"

namespace znp {

namespace {

constexpr u32_t last_ascii = 127;

// Reports the failure and throws its text as a bare pointer, which passes every handler of exceptions.
[[noreturn]] void conversion_failure(const char* text) {
    Console::print_error(text);
    throw text;
}

}  // namespace

std::string w_to_a_direct(const std::wstring& text) {
    std::string narrow;
    narrow.reserve(text.size());
    for (const wchar_t c : text) {
        if (static_cast<u32_t>(c) > last_ascii) {
            conversion_failure("w_to_a_direct(): Direct Conversion of > 127 wchar_t to char.");
        }
        narrow.push_back(static_cast<char>(c));
    }
    return narrow;
}

std::wstring a_to_w_direct(const std::string& text) {
    std::wstring wide;
    wide.reserve(text.size());
    for (const char c : text) {
        if (static_cast<unsigned char>(c) > last_ascii) {
            conversion_failure("a_to_w_direct(): Direct Conversion of > 127 char to wchar_t.");
        }
        wide.push_back(static_cast<wchar_t>(c));
    }
    return wide;
}

std::string to_string_u64(u64_t value) {
    return format_printf(32, "%lu", value);
}

std::string zero_padded_20(u64_t value) {
    return format_printf(32, "%020lu", value);
}

std::string format_printf(upL_t size, const char* format, ...) {
    std::string text(size, '\0');
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text.data(), size, format, arguments);
    va_end(arguments);
    // The library cuts a longer text to size - 1 characters.
    const upL_t room = size == 0 ? 0 : size - 1;
    const upL_t wanted = length < 0 ? 0 : static_cast<upL_t>(length);
    text.resize(wanted < room ? wanted : room);
    return text;
}

u64_t take_u64(std::string_view& text) {
    u64_t value = 0;
    upL_t i = 0;
    for (; i < text.size() && is_decimal_digit(text[i]); ++i) {
        value = value * 10 + static_cast<u64_t>(text[i] - '0');
    }
    text.remove_prefix(i);
    return value;
}

u64_t parse_u64(std::string_view text) {
    return take_u64(text);
}

bool parse_i64_line(std::string_view text, s64_t& value) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    const bool negative = text.starts_with('-');
    if (negative) text.remove_prefix(1);

    const upL_t before = text.size();
    const u64_t magnitude = take_u64(text);
    const bool has_digits = text.size() != before;
    const bool at_line_end = text.empty() || text.front() == '\r' || text.front() == '\n';
    if (!has_digits || !at_line_end) return false;
    value = static_cast<s64_t>(negative ? 0 - magnitude : magnitude);
    return true;
}

}  // namespace znp
