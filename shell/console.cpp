#include "shell/console.hpp"

#include <cstdio>
#include <cwchar>
#include <iostream>
#include <string>

#include "foundation/strings.hpp"

namespace znp::Console {

namespace {

constexpr char first_color = 'B';
constexpr unsigned color_count = 'y' - 'B' + 1;
static_assert(color_count == 56);

constexpr const char* bright_white = "\033[01;37m";

struct ColorTable {
    const char* sequences[color_count];

    constexpr ColorTable() : sequences{} {
        for (const char*& sequence : sequences) sequence = bright_white;
        set('R', "\033[01;31m");
        set('G', "\033[01;32m");
        set('Y', "\033[01;33m");
        set('B', "\033[01;34m");
        set('P', "\033[01;35m");
        set('T', "\033[01;36m");
        set('r', "\033[22;31m");
        set('g', "\033[22;32m");
        set('y', "\033[22;33m");
        set('b', "\033[22;34m");
        set('p', "\033[22;35m");
        set('t', "\033[22;36m");
    }

    constexpr void set(char color, const char* sequence) {
        sequences[static_cast<unsigned>(color - first_color)] = sequence;
    }
};

constexpr ColorTable color_table;

bool stdout_is_wide() {
    return std::fwide(stdout, 0) > 0;
}

void write(const char* text) {
    if (stdout_is_wide()) {
        std::wcout << text;
    } else {
        std::cout << text;
    }
    std::fflush(stdout);
}

void write(const wchar_t* text) {
    if (stdout_is_wide()) {
        std::wcout << text;
        std::fflush(stdout);
    } else if (text == nullptr) {
        write(static_cast<const char*>(nullptr));
    } else {
        write(w_to_a_direct(text).c_str());
    }
}

template <class character>
upL_t print_text(const character* text, char color) {
    set_color(color);
    write(text);
    return text == nullptr ? 0 : std::char_traits<character>::length(text);
}

// White is the resting colour: what every operation does that has set a colour.
void restore_color(char color) {
    if (color != ' ') set_color('w');
}

// The label cut or filled to width columns, of which the last is always a blank.
std::string field_label(upL_t width, std::string label) {
    label.resize(width, ' ');
    if (width != 0) label.back() = ' ';
    return label;
}

std::string padding(upL_t width, const std::string& text) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ');
}

template <class string>
upL_t print_labelled_text(const std::string& label, const string& value, char color) {
    const upL_t label_length = print(label + ": ", color == ' ' ? ' ' : 'w');
    const upL_t value_length = print(value, color);
    restore_color(color);
    return label_length + value_length;
}

template <class string>
upL_t print_field_text(upL_t width, const std::string& label, const string& value, char color) {
    const upL_t label_length = print(field_label(width, label));
    const upL_t value_length = print(value, color);
    restore_color(color);
    return label_length + value_length;
}

}  // namespace

const char* color_sequence(char color) {
    const unsigned index = static_cast<unsigned>(static_cast<unsigned char>(color)) - first_color;
    return index < color_count ? color_table.sequences[index] : bright_white;
}

void set_color(char color) {
    if (colors_enabled && color != ' ') write(color_sequence(color));
}

void reset_color() {
    if (colors_enabled) write(reset_sequence);
}

upL_t print(const char* text, char color) {
    return print_text(text, color);
}
upL_t print(const std::string& text, char color) {
    return print_text(text.c_str(), color);
}
upL_t print(const wchar_t* text, char color) {
    return print_text(text, color);
}
upL_t print(const std::wstring& text, char color) {
    return print_text(text.c_str(), color);
}

upL_t println(const char* text, char color) {
    return text == nullptr ? print(text, color) : print(std::string(text) + '\n', color);
}

upL_t println(const std::string& text, char color) {
    return print(text + '\n', color);
}

upL_t println(const wchar_t* text, char color) {
    return text == nullptr ? print(text, color) : print(std::wstring(text) + L'\n', color);
}

upL_t println(const std::wstring& text, char color) {
    return print(text + L'\n', color);
}

upL_t print_newline() {
    return print("\n");
}

upL_t print_yes_no(bool value) {
    const upL_t length = print(value ? "Yes" : "No", value ? 'G' : 'R');
    set_color('w');
    return length + print_newline();
}

upL_t print_pass_fail(bool value) {
    const upL_t length = print(value ? "Passed" : "Failed", value ? 'G' : 'R');
    set_color('w');
    return length;
}

upL_t print_pass_fail_line(bool value) {
    const upL_t length = print_pass_fail(value);
    return length + print_newline();
}

upL_t print_labelled(const std::string& label, const std::string& value, char color) {
    return print_labelled_text(label, value, color);
}

upL_t print_labelled_line(const std::string& label, const std::string& value, char color) {
    const upL_t length = print_labelled_text(label, value, color);
    return length + print_newline();
}

upL_t print_labelled_line(const std::string& label, const std::wstring& value, char color) {
    const upL_t length = print_labelled_text(label, value, color);
    return length + print_newline();
}

upL_t print_field(upL_t width, const std::string& label, const std::string& value, char color) {
    return print_field_text(width, label, value, color);
}

upL_t print_field(upL_t width, const std::string& label, const std::wstring& value, char color) {
    return print_field_text(width, label, value, color);
}

upL_t print_field(const std::string& label, const std::string& value, char color) {
    return print_field_text(default_field_width, label, value, color);
}

upL_t print_field_line(upL_t width, const std::string& label, const std::string& value, char color) {
    const upL_t length = print_field_text(width, label, value, color);
    return length + print_newline();
}

upL_t print_field_line(upL_t width, const std::string& label, const std::wstring& value, char color) {
    const upL_t length = print_field_text(width, label, value, color);
    return length + print_newline();
}

upL_t print_field_line(const std::string& label, const std::string& value, char color) {
    return print_field_line(default_field_width, label, value, color);
}

upL_t print_padded(upL_t width, const std::string& text, char color) {
    const upL_t length = print(text + padding(width, text), color);
    restore_color(color);
    return length;
}

upL_t print_padded_left(upL_t width, const std::string& text, char color) {
    const upL_t length = print(padding(width, text) + text, color);
    restore_color(color);
    return length;
}

void clear_line(upL_t width) {
    print('\r' + std::string(width + 1, ' ') + '\r');
}

void print_error(const std::string& text, bool stay_red) {
    print_newline();
    println(text, 'R');
    if (!stay_red) set_color('w');
}

int print_entry_error(const char* text) {
    if (text == nullptr) return 0;
    print_labelled_line("Error", std::string(text), 'Y');
    print_newline();
    return 1;
}

}  // namespace znp::Console
