// The interactive screen of the stress tester.

#include <string>

#include "foundation/threads.hpp"
#include "shell/console.hpp"
#include "tools/stress_run.hpp"
#include "tools/stress_test.hpp"

namespace znp {

namespace {

constexpr s64_t first_test_option = 5;

constexpr upL_t label_width = 30;       // also "Algorithm to Test"
constexpr upL_t components_width = 26;  // "Primary Components"

void print_option(s64_t number) {
    Console::print_padded_left(4, std::to_string(number));
    Console::print("  ");
}

void print_settings(const stress_settings& settings) {
    using Console::IntFormat;
    Console::print("   1  ", 'w');
    Console::print_field_line(
        label_width, "Memory:", Console::format_int(settings.memory, IntFormat::commas_and_bytes), 'G');
    Console::print("   2  ");
    Console::print_field_line(label_width,
                              "Threads:", Console::format_int(settings.threads, IntFormat::plain), 'G');
    Console::print("   3  ");
    Console::print_field(label_width,
                         "Time per Test:", Console::format_int(settings.seconds, IntFormat::plain), 'G');
    Console::println(" seconds");
    Console::print("   4  ");
    Console::print_field_line(label_width, "Stop on Error:", settings.stop_on_error ? "Enabled" : "Disabled",
                              settings.stop_on_error ? 'G' : 'R');
}

void print_tests(const stress_settings& settings) {
    Console::print("   #  ");
    Console::print_padded(label_width, "Algorithm to Test");
    Console::print_padded(components_width, "Primary Components");
    Console::println("Enable Test?\n");
    for (std::size_t i = 0; i < stress_tests.size(); i++) {
        const StressTest& test = stress_tests[i];
        print_option(first_test_option + static_cast<s64_t>(i));
        Console::print_padded(label_width, test.menu_text, 'T');
        Console::print_padded(components_width, test.primary_components, 'Y');
        Console::print_yes_no(settings.*test.selected);
    }
}

void print_screen(const stress_settings& settings) {
    Console::println("\nComponent Stress Tester\n", 'P');
    Console::println("Enter # to change option:\n", 'w');
    print_settings(settings);
    Console::print_newline();
    print_tests(settings);
    Console::print_newline();
    Console::print("  10  ");
    Console::println("Enable All");
    Console::print("  11  ");
    Console::println("Disable All");
    Console::print_newline();
    if (any_stress_test_selected(settings)) {
        Console::println("   0  Start Stress-Testing!\n", 'G');
    } else {
        Console::println("      You must select at least one test.\n", 'R');
    }
    Console::set_color('w');
}

void apply_option(stress_settings& settings, s64_t option) {
    constexpr s64_t most_threads = static_cast<s64_t>(max_threads);
    constexpr s64_t most_seconds = 1'000'000'000;
    switch (option) {
        case 1:
            settings.memory = Console::ask_memory_limit();
            break;
        case 2:
            settings.threads = static_cast<u64_t>(Console::ask_int_range("Threads = ", 1, most_threads));
            break;
        case 3:
            settings.seconds =
                static_cast<u64_t>(Console::ask_int_range("Time (seconds) = ", 1, most_seconds));
            break;
        case 4:
            settings.stop_on_error = !settings.stop_on_error;
            break;
        case 9:
            settings.test_spare = !settings.test_spare;
            break;
        case 10:
            select_all_stress_tests(settings);
            break;
        case 11:
            clear_stress_tests(settings);
            break;
        default: {
            bool& selected =
                settings.*stress_tests[static_cast<std::size_t>(option - first_test_option)].selected;
            selected = !selected;
        }
    }
}

}  // namespace

bool stress_menu_turn(stress_settings& settings) {
    print_screen(settings);
    const s64_t option = Console::ask_int_range("option: ", 0, 11);
    Console::print_newline();
    if (option == 0) return any_stress_test_selected(settings);
    apply_option(settings, option);
    return false;
}

int stress_menu(stress_settings& settings) {
    while (!stress_menu_turn(settings)) {
    }
    return run_stress_test(settings);
}

}  // namespace znp
