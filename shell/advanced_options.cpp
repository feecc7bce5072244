#include "shell/advanced_options.hpp"

#include <array>
#include <span>
#include <string>

#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"
#include "shell/cpu_features.hpp"
#include "shell/log_formula_tool.hpp"

namespace znp {
namespace {

void compilation_options() {
    not_available_yet("The report of the Compilation Options");
}
void test_swap_multiply() {
    not_available_yet("Test Swap Multiply");
}

void hardware_features() {
    Console::println("Hardware Features:\n", 'P');
    Console::print_labelled_line("Processor", processor_name(), 'G');
    Console::print_newline();
    CPUFeatures features;
    read_features(features);
    print_features(features);
    Console::println("\n  * = used by some build of this program.");
}

using Handler = void (*)();

struct OptionMenuRow {
    const char* label;
    char color;
    Handler run;
    Handler run_instead;  // takes the place of run if it is set
};

struct OptionMenu {
    const char* title;
    std::span<const OptionMenuRow> rows;
};

constexpr std::array<OptionMenuRow, 4> advanced_rows{{
    {"Log(n) Formula Generator", 'T', log_formula_generator, nullptr},
    {"Hardware Features", 'T', hardware_features, nullptr},
    {"Compilation Options", 'T', compilation_options, nullptr},
    {"Test Swap Multiply", 'Y', test_swap_multiply, nullptr},
}};
constexpr OptionMenu advanced_menu{"Advanced Options", advanced_rows};

void run_menu(const OptionMenu& menu) {
    Console::println(menu.title, 'P');
    Console::print_newline();
    for (upL_t i = 0; i < menu.rows.size(); i++) {
        Console::print_padded_left(3, to_string_u64(i), menu.rows[i].color);
        Console::println(std::string(9, ' ') + menu.rows[i].label);
    }
    Console::print_newline();
    const s64_t last = static_cast<s64_t>(menu.rows.size()) - 1;
    const OptionMenuRow& row = menu.rows[static_cast<upL_t>(Console::ask_int_range("option: ", 0, last))];
    Console::print_newline();
    (row.run_instead != nullptr ? row.run_instead : row.run)();
}

}  // namespace

void advanced_options_menu() {
    run_menu(advanced_menu);
}

}  // namespace znp
