// Console: the one tool by which the system talks to the user.
//
// Free functions without an object. Nothing here locks: the console belongs to the main thread, and a worker
// uses it only to report a failure. Every printing operation flushes standard output.
//
// Colours are one letter (see color_sequence); ' ' means: leave the colour as it is and restore nothing.
// White ('w') is the resting colour. print, println and set_color switch the colour and leave it so; every
// other operation that takes a colour goes back to white.
//
// Printing operations return the number of characters of text that they printed; colour sequences count 0.
//
// End of standard input: pause() counts as pressed. Every operation that needs an answer ends the program
// through end_of_input() instead: one line, the colour reset, exit code 1. Nothing here can spin.
#pragma once

#include <string>
#include <string_view>

#include "foundation/types.hpp"

namespace znp {
class StatusLine;
}

namespace znp::Console {

inline constexpr bool colors_enabled = true;
inline constexpr const char* reset_sequence = "\033[39;49m";

// The terminal sequence of a colour letter; letters outside the table give bright white.
const char* color_sequence(char color);

// ---- Output ----------------------------------------------------------------------------------------------

upL_t print(const char* text, char color = ' ');
upL_t print(const std::string& text, char color = ' ');
upL_t print(const wchar_t* text, char color = ' ');
upL_t print(const std::wstring& text, char color = ' ');

// The text and a line feed in one write. The colour stays.
upL_t println(const char* text, char color = ' ');
upL_t println(const std::string& text, char color = ' ');
upL_t println(const wchar_t* text, char color = ' ');
upL_t println(const std::wstring& text, char color = ' ');

upL_t print_newline();
void set_color(char color);
void reset_color();

upL_t print_yes_no(bool value);          // "Yes" or "No", white, line feed
upL_t print_pass_fail(bool value);       // "Passed" or "Failed", white
upL_t print_pass_fail_line(bool value);  // the same and a line feed

// label ": " in white, the value in color, white.
upL_t print_labelled(const std::string& label, const std::string& value, char color = ' ');
upL_t print_labelled_line(const std::string& label, const std::string& value, char color = ' ');
upL_t print_labelled_line(const std::string& label, const std::wstring& value, char color = ' ');

// The label cut or filled to width columns, the last of them always a blank; the value in color; white.
inline constexpr upL_t default_field_width = 16;
upL_t print_field(upL_t width, const std::string& label, const std::string& value, char color = ' ');
upL_t print_field(upL_t width, const std::string& label, const std::wstring& value, char color = ' ');
upL_t print_field(const std::string& label, const std::string& value, char color = ' ');
upL_t print_field_line(upL_t width, const std::string& label, const std::string& value, char color = ' ');
upL_t print_field_line(upL_t width, const std::string& label, const std::wstring& value, char color = ' ');
upL_t print_field_line(const std::string& label, const std::string& value, char color = ' ');

upL_t print_padded(upL_t width, const std::string& text, char color = ' ');       // text, then blanks
upL_t print_padded_left(upL_t width, const std::string& text, char color = ' ');  // blanks, then text

void clear_line(upL_t width = 79);  // carriage return, width + 1 blanks, carriage return

// An error message: line feed, the text and a line feed in red; back to white unless stay_red.
void print_error(const std::string& text, bool stay_red = false);

// Reports a rejected entry. A null text means no error and gives 0; otherwise prints the line "Error: text"
// with the text in yellow, a blank line, and gives 1.
int print_entry_error(const char* text);

// ---- Input -----------------------------------------------------------------------------------------------

std::string read_line(char color = ' ');
std::wstring read_line_wide(char color = ' ');

// "Press ENTER to continue . . ." and a line, discarded. The end of input counts as ENTER.
void pause(char color = 'w');

// The same inside a loop that tries again until it succeeds: here the end of input ends the program.
void wait_for_retry(char color = 'w');

// A signed integer from a line: optional "-", digits up to the first other character. No digits give 0;
// overflow wraps.
s64_t read_int(char color = ' ');
s64_t parse_int(std::string_view line);
s64_t ask_int(const std::string& prompt, char color = 'G');
s64_t ask_int_range(const std::string& prompt, s64_t low, s64_t high, char color = 'G');

// A size in bytes (foundation/byte_size.hpp); the scaled fraction is rounded, half away from zero.
u64_t parse_size(std::string_view line);
u64_t read_size(char color = ' ');
u64_t ask_size(const std::string& prompt, char color = 'G');

// Asks for a memory limit, with what such an entry looks like; at most max_memory_bytes.
u64_t ask_memory_limit();

// Says that the input ended, resets the colour and exits with code 1.
[[noreturn]] void end_of_input();

// ---- Breaks ----------------------------------------------------------------------------------------------

// From now on SIGINT and SIGTERM reset the colours before they end the process; one that is ignored stays
// ignored.
void reset_color_on_break();

// From now on a crash (SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT) resets the colours and says in one line what
// it is before it ends the process by the signal, unless somebody else takes care of it.
void tell_crashes();

// For signal handlers: resets the colours, and ends the process by the signal once the handler returns.
void end_by_signal(int signal_number);

// ---- Numbers and times as text ---------------------------------------------------------------------------

enum class IntFormat { plain = 0, commas = 1, bytes = 2, commas_and_bytes = 3 };
std::string format_int(u64_t value, IntFormat mode);
std::string format_int_signed(s64_t value, IntFormat mode);

// Three significant digits and a binary unit, four columns wide before the unit: "1.00 MiB".
std::string format_bytes(u64_t value);
std::string format_seconds(double value, int decimals);

// "1.234 seconds  ( 0.000 hours )"
upL_t print_seconds(double value, char color = ' ');
upL_t print_seconds_line(double value, char color = ' ');

// Erases the status line and prints "Time:    " and the time since its start.
void print_elapsed(StatusLine& status_line, char color = ' ');

}  // namespace znp::Console
