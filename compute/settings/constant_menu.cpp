#include "compute/settings/constant_menu.hpp"

#include "compute/constants/constant_row.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

void print_menu() {
    Console::println("Compute a Constant: (in ascending order of difficulty to compute)\n", 'P');
    Console::println("  #         Constant                      Value        Approximate Difficulty*\n", 'w');
    std::string_view group;
    for (const ConstantRow& row : constant_rows()) {
        if (row.menu_group.empty()) continue;
        const std::string line = "  " + to_string_u64(row.id) + "         " + row.menu_line;
        if (row.menu_group == group) {
            Console::println(line);
            continue;
        }
        if (!group.empty()) Console::print_newline();
        group = row.menu_group;
        Console::println(std::string(group), 'w');
        Console::print_newline();
        Console::println(line, row.color);
    }
    Console::print_newline();
    Console::println("*Actual numbers will vary. Radix conversion = 1.00\n", 'w');
    Console::println("Enter your choice:");
}

// Constants without a parameter take 0.
u64_t ask_parameter(const ConstantRow& row) {
    const ConstantParameter& parameter = row.parameter;
    if (parameter.title == nullptr) return 0;
    Console::println(parameter.title, 'w');
    for (;;) {
        const auto n = static_cast<u64_t>(Console::ask_int_range(parameter.prompt, 2, parameter.high));
        if (parameter.rule != ParameterRule::no_square || check_constant(row.id, n) == nullptr) return n;
        Console::println("\nThis number is a perfect square.", 'w');
        Console::println("Please choose something more interesting :)");
        Console::print_newline();
    }
}

}  // namespace

void choose_constant_menu(ComputeParameters& settings) {
    print_menu();
    const auto rows = constant_rows();
    const s64_t last = static_cast<s64_t>(rows.size()) - 1;
    const auto id = static_cast<u64_t>(Console::ask_int_range("option: ", 0, last));
    Console::print_newline();
    const u64_t parameter = ask_parameter(rows[id]);
    if (Console::print_entry_error(settings.choose_constant(id, parameter)) != 0) Console::pause();
}

}  // namespace znp
