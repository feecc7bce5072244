#include "compute/engine/stage_lines.hpp"

#include "shell/console.hpp"

namespace znp {

StageLines::StageLines(StageMemory& memory, const char* title, const char* event) : memory_(memory) {
    memory_.carry_out([&](RunTimeParameters& run) {
        Console::print(title);
        run.events.add(event);
    });
}

void StageLines::print_terms(u64_t terms, const char* marker) {
    memory_.carry_out([&](RunTimeParameters&) {
        Console::print(Console::format_int(terms, Console::IntFormat::commas), 'G');
        Console::set_color('w');
        Console::print(std::string(" terms") + marker);
    });
}

void StageLines::start(const char* label) {
    memory_.carry_out([](RunTimeParameters&) { Console::print_newline(); });
    show(label);
}

void StageLines::show(const char* label) {
    memory_.carry_out([&](RunTimeParameters&) {
        status_.set_label(label);
        status_.update(StatusLine::Update::force);
    });
}

void StageLines::finish() {
    memory_.carry_out([&](RunTimeParameters&) { Console::print_elapsed(status_, 'T'); });
}

void tell_term(StageMemory& memory, const std::string& text) {
    memory.carry_out([&](RunTimeParameters& run) {
        Console::println(text);
        run.events.add(text);
    });
}

}  // namespace znp
