// What signals leave behind on the terminal.
#include <signal.h>
#include <unistd.h>

#include <initializer_list>
#include <string_view>

#include "shell/console.hpp"

namespace znp::Console {

void end_by_signal(int signal_number) {
    // The console may be in the middle of a line, on a stream that a handler must not touch.
    constexpr std::string_view sequence = reset_sequence;
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, sequence.data(), sequence.size());
    signal(signal_number, SIG_DFL);
    raise(signal_number);
}

void reset_color_on_break() {
    if (!colors_enabled) return;
    for (const int signal_number : {SIGINT, SIGTERM}) {
        if (signal(signal_number, end_by_signal) == SIG_IGN) signal(signal_number, SIG_IGN);
    }
}

}  // namespace znp::Console
