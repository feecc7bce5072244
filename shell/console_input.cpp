// The console's input side: lines, pauses, and the numbers and sizes that a user types.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cwchar>
#include <iostream>
#include <string>

#include "foundation/byte_size.hpp"
#include "foundation/fatal.hpp"
#include "foundation/memory.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp::Console {

namespace {

constexpr const char* pause_text = "Press ENTER to continue . . .";
constexpr char typed_color = 'T';  // of what the user types at a pause

// A line of standard input, read as wide characters. A last line without a line feed is still a line; false
// where the input ends before any character.
bool get_wide_line(std::wstring& line) {
    line.clear();
    for (;;) {
        const std::wint_t c = std::getwc(stdin);
        if (c == WEOF) return !line.empty();
        if (c == L'\n') return true;
        line.push_back(static_cast<wchar_t>(c));
    }
}

// The forms of a line follow the orientation of standard input, as the forms of the output follow that of
// standard output: a stream that has been read as bytes cannot be read as wide characters any more.
bool stdin_is_wide() {
    return std::fwide(stdin, 0) > 0;
}

bool get_line(std::string& line) {
    if (!stdin_is_wide()) return static_cast<bool>(std::getline(std::cin, line));
    std::wstring wide;
    if (!get_wide_line(wide)) return false;
    line = w_to_a_direct(wide);
    return true;
}

bool get_line(std::wstring& line) {
    if (stdin_is_wide()) return get_wide_line(line);
    std::string narrow;
    if (!get_line(narrow)) return false;
    line = a_to_w_direct(narrow);
    return true;
}

template <class string>
string read_line_as(char color) {
    set_color(color);
    string line;
    if (!get_line(line)) end_of_input();
    if (color != ' ') set_color('w');
    return line;
}

// Prints the request and reads a line that is thrown away; false at the end of the input.
bool wait_for_enter(char color) {
    print(pause_text, color);
    set_color(typed_color);
    std::string discarded;
    const bool pressed = get_line(discarded);
    set_color('w');
    return pressed;
}

}  // namespace

std::string read_line(char color) {
    return read_line_as<std::string>(color);
}
std::wstring read_line_wide(char color) {
    return read_line_as<std::wstring>(color);
}

void pause(char color) {
    wait_for_enter(color);
}

void wait_for_retry(char color) {
    if (!wait_for_enter(color)) end_of_input();
}

s64_t parse_int(std::string_view line) {
    const bool negative = !line.empty() && line.front() == '-';
    const u64_t magnitude = parse_u64(line.substr(negative ? 1 : 0));
    return static_cast<s64_t>(negative ? 0 - magnitude : magnitude);
}

s64_t read_int(char color) {
    return parse_int(read_line(color));
}

s64_t ask_int(const std::string& prompt, char color) {
    print(prompt, 'w');
    return read_int(color);
}

s64_t ask_int_range(const std::string& prompt, s64_t low, s64_t high, char color) {
    for (;;) {
        const s64_t value = ask_int(prompt, color);
        if (low <= value && value <= high) return value;
    }
}

u64_t parse_size(std::string_view line) {
    const ByteSize size = scan_byte_size(line);
    return size.whole + static_cast<u64_t>(std::llround(size.fraction));
}

u64_t read_size(char color) {
    return parse_size(read_line(color));
}

u64_t ask_size(const std::string& prompt, char color) {
    print(prompt, 'w');
    return read_size(color);
}

u64_t ask_memory_limit() {
    println("Please Select a Memory Cap:\n", 'w');
    println("Enter a memory limit: (e.g. 768MB, 2.5GB, etc...)");
    return std::min(ask_size("Bytes: "), max_memory_bytes);
}

void end_of_input() {
    print_newline();
    print("The input has ended before an answer was given.", 'R');
    reset_color();
    print_newline();
    exit_process(1);
}

}  // namespace znp::Console
