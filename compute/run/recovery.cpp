#include "compute/run/recovery.hpp"

#include "shell/console.hpp"

namespace znp {

void tell_reattempt(RunTimeParameters& run, const std::string& text) {
    Console::println(text, 'R');
    Console::set_color('w');
    run.events.add(text);
    ++run.recovered_errors;
}

}  // namespace znp
