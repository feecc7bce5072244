// What signals leave behind on the terminal.
#include <signal.h>
#include <unistd.h>

#include <initializer_list>
#include <string_view>

#include "shell/console.hpp"

namespace znp::Console {

namespace {

// The console may be in the middle of a line, on a stream that a handler must not touch.
void write_text(std::string_view text) {
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
}

void end_by_crash(int signal_number) {
    const char number[] = {static_cast<char>('0' + signal_number / 10),
                           static_cast<char>('0' + signal_number % 10)};
    if constexpr (colors_enabled) write_text(reset_sequence);
    write_text("\nEnded by signal ");
    write_text(std::string_view(number, sizeof(number)).substr(signal_number < 10 ? 1 : 0));
    write_text(": the memory of the program is damaged, or the program has an error.\n");
    signal(signal_number, SIG_DFL);
    raise(signal_number);
}

}  // namespace

void end_by_signal(int signal_number) {
    write_text(reset_sequence);
    signal(signal_number, SIG_DFL);
    raise(signal_number);
}

void reset_color_on_break() {
    if (!colors_enabled) return;
    for (const int signal_number : {SIGINT, SIGTERM}) {
        if (signal(signal_number, end_by_signal) == SIG_IGN) signal(signal_number, SIG_IGN);
    }
}

void tell_crashes() {
    for (const int signal_number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT}) {
        const auto former = signal(signal_number, end_by_crash);
        if (former != SIG_DFL) signal(signal_number, former);
    }
}

}  // namespace znp::Console
