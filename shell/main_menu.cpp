#include "shell/main_menu.hpp"

#include <array>

#include "shell/advanced_options.hpp"
#include "shell/benchmark_menu.hpp"
#include "shell/console.hpp"
#include "shell/custom_menu.hpp"
#include "shell/io_command.hpp"
#include "shell/screens.hpp"
#include "shell/stress_command.hpp"
#include "shell/validator.hpp"

namespace znp {
namespace {

void benchmark_entry() {
    BenchmarkParameters parameters;
    benchmark_menu(parameters);
}

void stress_entry() {
    stress_settings settings = default_stress_settings();
    stress_menu(settings);
}

void io_entry() {
    IOAnalysis settings = default_io_analysis();
    io_menu(settings);
}

void custom_entry() {
    ComputeParameters settings;
    custom_menu(settings);
}

struct MenuRow {
    char color;
    const char* text;  // the label, and its notes on lines of their own
    void (*run)();
    bool blank_line_behind;
};

constexpr std::array<MenuRow, 8> rows{{
    {'T', "  0         Benchmark Pi  (all in ram)", benchmark_entry, false},
    {'T', "  1         Component Stress Tester", stress_entry, false},
    {'T', "  2         Run I/O Performance Analysis", io_entry, true},
    {'Y',
     "  3         Custom Compute a Constant\n"
     "                -   Compute other constants (e, Golden Ratio, etc...)\n"
     "                -   Choose your own settings (use disk for large computations)",
     custom_entry, true},
    {'G', "  4         Benchmark Validator", benchmark_validator, false},
    {'G', "  5         Advanced Options", advanced_options_menu, true},
    {'t', "  6         About", print_about, false},
    {'t', "  7         A Word of Warning...", print_warning, false},
}};

}  // namespace

void main_menu() {
    print_banner();
    for (const MenuRow& row : rows) {
        Console::println(row.text, row.color);
        if (row.blank_line_behind) Console::print_newline();
    }
    Console::println("Enter your choice:", 'w');
    const s64_t choice = Console::ask_int_range("option: ", 0, rows.size() - 1);
    rows[static_cast<upL_t>(choice)].run();
}

}  // namespace znp
