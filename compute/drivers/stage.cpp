#include "compute/drivers/stage.hpp"

#include "shell/console.hpp"

namespace znp {

Stage::Stage(RunTimeParameters& run, const char* title, const char* event) {
    Console::print(title);
    run.events.add(event);
}

void Stage::print_terms(u64_t terms) {
    Console::print(Console::format_int(terms, Console::IntFormat::commas), 'G');
    Console::set_color('w');
    Console::print(" terms");
}

StatusLine* Stage::start(const char* label) {
    Console::print_newline();
    status_.set_label(label);
    status_.update(StatusLine::Update::force);
    return &status_;
}

void Stage::finish() {
    Console::print_elapsed(status_, 'T');
}

}  // namespace znp
