#include "compute/stages.hpp"
#include "shell/console.hpp"

namespace znp {

void print_stage(const std::string& name, const Time& start) {
    Console::print_newline();
    Console::print(name, 'G');
    Console::print("  :  ", 'w');
    Console::print_seconds_line(seconds_between(start, Time::now()), 'Y');
}

}  // namespace znp
