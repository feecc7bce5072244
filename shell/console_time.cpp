// Times on the console.
#include <string>

#include "foundation/status_line.hpp"
#include "foundation/time.hpp"
#include "shell/console.hpp"

namespace znp::Console {

namespace {

std::string seconds_text(double value) {
    return format_seconds(value, 3) + " seconds  ( " + format_seconds(value / 3600, 3) + " hours )";
}

}  // namespace

upL_t print_seconds(double value, char color) {
    const upL_t length = print(seconds_text(value), color);
    if (color != ' ') set_color('w');
    return length;
}

upL_t print_seconds_line(double value, char color) {
    const upL_t length = print_seconds(value, color);
    return length + print_newline();
}

void print_elapsed(StatusLine& status_line, char color) {
    const double elapsed = seconds_between(status_line.start(), Time::now());
    status_line.erase();
    print("Time:    ");
    print_seconds_line(elapsed, color);
}

}  // namespace znp::Console
