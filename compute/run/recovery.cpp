#include "compute/run/recovery.hpp"

#include "shell/console.hpp"

namespace znp {

void announce_reattempt(RunTimeParameters& run, const std::string& text) {
    Console::println(text, 'R');
    Console::set_color('w');
    run.events.add(text);
    rebuild_tables(run.tables);
}

void begin_reattempt(RunTimeParameters& run, const std::string& text) {
    announce_reattempt(run, text);
    RecoveredErrors::add();
}

}  // namespace znp
