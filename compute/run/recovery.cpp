#include "compute/run/recovery.hpp"

#include "shell/console.hpp"

namespace znp {

void begin_reattempt(RunTimeParameters& run, const std::string& text) {
    Console::println(text, 'R');
    Console::set_color('w');
    run.events.add(text);
    ++run.recovered_errors;
    if (run.table_memory != nullptr) build_tables(run.tables, run.tables.limit_bits, run.table_memory);
}

}  // namespace znp
