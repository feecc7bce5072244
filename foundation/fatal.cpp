#include "foundation/fatal.hpp"

#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

constexpr const char* closing_text =
    "If this error shows up consistantly with the current options,\nplease report it as a bug.\n\n"
    "If this error comes and goes with the current options,\n"
    "please check your hardware for reliability issues.\nAre you overclocking?\n\nTerminating Program...\n";

void print_screen(const char* heading, const wchar_t* category, const std::wstring& component,
                  const std::wstring& detail) {
    Console::print("\n\n");
    Console::print(heading);
    Console::print("\n\n");
    Console::print(category);
    Console::print(component);
    Console::print("\n\n");
    Console::print(detail);
    Console::print("\n\n\n");
}

}  // namespace

void exit_process(int status) {
    std::cout.flush();
    std::wcout.flush();
    std::fflush(stdout);
    std::_Exit(status);
}

void pause_and_exit(int status) {
    Console::pause();
    Console::reset_color();
    exit_process(status);
}

void fatal_exit(const std::string& text) {
    Console::print_newline();
    Console::print(text, 'R');
    Console::print("\n", 'w');
    pause_and_exit(1);
}

// Both screens ask for ENTER here and once more in pause_and_exit.
void assert_failure(const wchar_t* category, const std::wstring& component, const std::wstring& detail) {
    Console::set_color('R');
    print_screen("FATAL ERROR: Assertion Failure", category, component, detail);
    Console::print(closing_text);
    Console::set_color('w');
    Console::pause();
    pause_and_exit(1);
}

void limit_failure(const wchar_t* category, const std::wstring& component, const std::wstring& detail) {
    print_screen("FATAL ERROR: Limit Exceeded", category, component, detail);
    Console::pause();
    pause_and_exit(1);
}

void hardware_error_report() {
    Console::print("\n\n\n\n");
    Console::print(
        "HARDWARE ERROR DETECTED:\nAn error has been detected.\n"
        "No attempt will made to correct it because ECC is disabled.\n\n"
        "Please check your hardware. :)");
    Console::print("\n\n");
    pause_and_exit(1);
}

void report_reattempts(u64_t count) {
    Console::print("\nSucceeded after ", 'R');
    Console::print(to_string_u64(count));
    Console::print(" re-attempt(s). Please check your hardware for stability.\n");
    Console::set_color('w');
}

void not_available_yet(const std::string& what) {
    fatal_exit(not_available_text(what));
}

std::string not_available_text(const std::string& what) {
    return what + " is not available in this version yet.";
}

}  // namespace znp
