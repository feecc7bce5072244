#include "shell/custom_dialogs.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "compute/settings/constant_menu.hpp"
#include "foundation/basic_file.hpp"
#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "foundation/threads.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

// attempt() asks and sets; again as long as it gives a refusal.
template <class Attempt>
void until_accepted(Attempt attempt) {
    while (Console::print_entry_error(attempt()) != 0) {
    }
}

u64_t ask_number(const char* prompt) {
    return static_cast<u64_t>(Console::ask_int(prompt));
}
u64_t ask_number_between(const char* prompt, u64_t low, u64_t high) {
    return static_cast<u64_t>(
        Console::ask_int_range(prompt, static_cast<s64_t>(low), static_cast<s64_t>(high)));
}

void choose_algorithm(ComputeParameters& settings) {
    const zlr_Constant& constant = settings.constant();
    const s32_t count = constant.algorithm_count();
    Console::println("\n\nSelect the algorithm:\n", 'w');
    for (s32_t i = 0; i < count; i++) {
        Console::print_padded_left(4, std::to_string(i));
        Console::print("    ");
        Console::println(constant.get_algorithm_menu(i, settings.p()), 'T');
        Console::set_color('w');
    }
    until_accepted([&] {
        return settings.set_algorithm(ask_number_between("Algorithm: ", 0, static_cast<u64_t>(count - 1)));
    });
}

void choose_decimal_digits(ComputeParameters& settings) {
    Console::println("Select the # of decimal digits to compute:", 'w');
    until_accepted([&] { return settings.set_dec(ask_number("Digits: ")); });
}

void choose_hexadecimal_digits(ComputeParameters& settings) {
    Console::println("Select the # of hexadecimal digits to compute: (0 to disable)", 'w');
    until_accepted([&] { return settings.set_hex(ask_number("Digits: ")); });
}

void choose_threads(ComputeParameters& settings) {
    Console::println("Select the # of threads to use:", 'w');
    for (;;) {
        const s64_t threads = Console::ask_int("Threads: ");
        if (threads >= 1 && threads <= static_cast<s64_t>(max_threads)) {
            settings.set_threads(static_cast<u64_t>(threads));
            return;
        }
        Console::println("Please choose a number between 1 and " + to_string_u64(max_threads) + ".", 'Y');
        Console::set_color('w');
    }
}

// Paths beyond ASCII have no wide form here: nothing can be written to them.
const char* set_path(ComputeParameters& settings, const std::string& path) {
    const bool plain =
        std::all_of(path.begin(), path.end(), [](char c) { return static_cast<unsigned char>(c) <= 127; });
    return plain ? settings.set_path(a_to_w_direct(path)) : unable_to_write_text;
}

void choose_path(ComputeParameters& settings) {
    Console::println("Enter the path to write the digits to. (e.g. \"C:\" or \"C:/temp\" )\n", 'w');
    until_accepted([&] {
        Console::print("Path: ", 'w');
        return set_path(settings, Console::read_line('G'));
    });
}

void choose_compression(ComputeParameters& settings) {
    if (settings.too_few_digits_to_compress()) {
        settings.set_digits_per_file(0);
        Console::println("Computation is too small for compression.\n", 'w');
        Console::pause();
        return;
    }
    Console::println("Select an Output Format:\n", 'w');
    Console::println("  0     Write to a text file. Do not compress.", 'G');
    Console::println("  1     Compress digits into a single .zld file.");
    Console::println("  2     Compress digits into multiple .zld files with a user-specified");
    Console::println("        number of digits per file.\n");
    Console::set_color('w');
    const s64_t format = Console::ask_int_range("option: ", 0, 2);
    until_accepted([&] {
        if (format == 0) return settings.set_digits_per_file(0);
        if (format == 1) return settings.set_digits_per_file(~u64_t{0});
        return settings.set_digits_per_file(
            ask_number_between("Digits per file: ", ComputeParameters::min_digits_per_file, settings.dec()));
    });
}

// Both figures of a mode, or what stands in their place; eight columns each.
void print_cost(u64_t ComputeParameters::Cost::*figure, const std::optional<ComputeParameters::Cost>& cost,
                char color) {
    Console::print_padded(8, cost ? Console::format_bytes((*cost).*figure) : "N/A", color);
}

void choose_mode(ComputeParameters& settings) {
    using Cost = ComputeParameters::Cost;
    const bool has_swap_mode = settings.constant().knows_algorithm(settings.algorithm(), settings.p());
    Console::println("Select a Mode:\n", 'w');
    Console::println("Option      Mode            Memory    Disk Memory\n");
    Console::print(" 1      Ram Only            ");
    print_cost(&Cost::memory, settings.cost_in(ComputeMode::ram_only), 'Y');
    Console::print_newline();
    if (has_swap_mode) {
        const std::optional<Cost> cost = settings.cost_in(ComputeMode::swap);
        Console::print(" 2      Disk Swapping      >", 'G');
        print_cost(&Cost::memory, cost, 'Y');
        Console::print("    ");
        print_cost(&Cost::disk, cost, 'T');
        Console::print_newline();
    }
    // A mode whose estimates are still to come cannot be shown on the screen.
    const std::string not_available = not_available_text("Swap Mode");
    until_accepted([&] {
        const u64_t mode = ask_number_between("option: ", 1, has_swap_mode ? 2 : 1) - 1;
        const bool available = mode == 0 || settings.constant().runs_S(settings.algorithm());
        return available ? settings.set_mode(mode) : not_available.c_str();
    });
}

// What is still to come answers so, and the screen goes on.
void tell_not_available(const char* what) {
    Console::print_error(not_available_text(what));
    Console::pause();
}

void view_swap_configuration(ComputeParameters& settings) {
    if (!settings.swap().raid.groups.empty()) {
        tell_not_available("The view of the swap configuration");
        return;
    }
    Console::println("\n\nNo swap configuration set. Will use default path.\n", 'R');
    Console::pause();
}

void change_swap_configuration(ComputeParameters&) {
    tell_not_available("The change of the swap configuration");
}
void benchmark_io(ComputeParameters&) {
    tell_not_available("The I/O performance analysis");
}
void choose_min_io(ComputeParameters&) {
    tell_not_available("The choice of the minimum I/O size");
}

void choose_memory_limit(ComputeParameters& settings) {
    settings.set_memory_limit(Console::ask_memory_limit());
}

constexpr std::array<void (*)(ComputeParameters&), 13> dialogs{
    choose_constant_menu,      choose_algorithm, choose_decimal_digits,
    choose_hexadecimal_digits, choose_threads,   choose_path,
    choose_compression,        choose_mode,      view_swap_configuration,
    change_swap_configuration, benchmark_io,     choose_min_io,
    choose_memory_limit,
};

}  // namespace

void run_custom_dialog(ComputeParameters& settings, s64_t option) {
    dialogs[static_cast<upL_t>(option - 1)](settings);
}

}  // namespace znp
