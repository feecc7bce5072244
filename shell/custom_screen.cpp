#include "shell/custom_screen.hpp"

#include <string>

#include "foundation/memory.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

constexpr upL_t digits_width = 32;
constexpr upL_t value_width = 28;
constexpr upL_t row_width = 8;  // of an option without a value

std::string with_commas(u64_t value) {
    return Console::format_int(value, Console::IntFormat::commas);
}

// A piece of a line, and the end of a line; white behind both.
void print_piece(const std::string& text, char color) {
    Console::print(text, color);
    Console::set_color('w');
}
void print_end(const std::string& text, char color) {
    Console::println(text, color);
    Console::set_color('w');
}

bool on_disk(const ComputeParameters& settings) {
    return settings.mode() == ComputeMode::swap;
}

// The amount is negative as a signed number. No estimate is, but the guard stands.
bool cannot_start(const ComputeParameters& settings) {
    return settings.ML() >> 63 != 0;
}

u64_t output_bytes(const ComputeParameters& settings) {
    if (settings.digits_per_file() == 0) return settings.hex() + settings.dec();
    return settings.hex() / 2 + 8 * (settings.dec() / 19);
}

void print_constant(const ComputeParameters& settings) {
    const zlr_Constant& constant = settings.constant();
    Console::print("  1     Constant:    ");
    print_end(constant.get_name(), constant.get_color());
    Console::print("  2     Algorithm:   ");
    print_end(constant.get_algorithm_name(settings.algorithm(), settings.p()), 'Y');
}

void print_digits(const ComputeParameters& settings) {
    Console::print_field_line(digits_width, "  3     Decimal Digits:", with_commas(settings.dec()), 'G');
    Console::print_field_line(digits_width, "  4     Hexadecimal Digits:",
                              settings.hex() == 0 ? "Disabled" : with_commas(settings.hex()), 'G');
}

void print_compression(const ComputeParameters& settings) {
    constexpr const char* label = "  7     Compress Output:";
    const u64_t digits_per_file = settings.digits_per_file();
    if (digits_per_file == 0) {
        Console::print_field_line(value_width, label, "No - Write digits to a text file.", 'T');
    } else if (digits_per_file == ~u64_t{0}) {
        Console::print_field_line(value_width, label, "Yes - Compress digits into one .zld file.", 'T');
    } else {
        Console::print_field_line(value_width, label, "Yes - Compress digits and split them into multiple",
                                  'T');
        print_piece(std::string(value_width, ' ') + "files with  ", 'T');
        print_piece(with_commas(digits_per_file), 'Y');
        print_end("  digits per file.", 'T');
    }
}

void print_run(const ComputeParameters& settings) {
    Console::print_field(value_width, "  5     Multi-Threading:", with_commas(settings.tds()), 'T');
    print_end(settings.tds() == 1 ? " thread" : " threads", 'T');
    constexpr const char* path_label = "  6     Write Digits To:";
    if (settings.path().empty()) {
        Console::print_field_line(value_width, path_label, "Default Path", 'T');
    } else {
        Console::print_field_line(value_width, path_label, settings.path(), 'T');
    }
    print_compression(settings);
}

void print_needs_on_disk(const ComputeParameters& settings) {
    Console::print_field_line(row_width, "  9", "View Swap Configuration", 'g');
    Console::print_field_line(row_width, " 10", "Change Swap Configuration", 'g');
    Console::print_field_line(row_width, " 11", "Run I/O Benchmark", 'Y');
    Console::print_newline();
    Console::print_field(value_width, " 12     Min I/O Size", Console::format_bytes(settings.minIO()), 'G');
    Console::print("  per smallest unit. ( ");
    print_piece(Console::format_bytes(settings.swap().minIO_logical), 'P');
    Console::println(" global )\n");
    Console::print_field(value_width, " 13     Memory Needed",
                         Console::format_bytes(settings.Osize() + settings.ML()), 'Y');
    Console::print("  ( Minimum = ");
    print_piece(Console::format_bytes(settings.Osize() + settings.Msize()), 'Y');
    Console::println(" )");
}

void print_mode_and_needs(const ComputeParameters& settings) {
    const bool disk = on_disk(settings);
    Console::print_field_line(value_width, "  8     Computation Mode:", disk ? "Swap Mode" : "Ram Only", 'T');
    if (disk) {
        print_needs_on_disk(settings);
    } else {
        Console::print_field_line(value_width, "        Memory Needed",
                                  Console::format_bytes(settings.Osize() + settings.ML()), 'Y');
    }
    Console::print_field(value_width, "        Disk Needed", Console::format_bytes(settings.Fsize()),
                         disk ? 'Y' : 'y');
    Console::print("  +  ");
    print_piece(Console::format_bytes(output_bytes(settings)), 'P');
    Console::println(" for output\n");
}

void print_start(const ComputeParameters& settings, const MachineMemory& machine) {
    const u64_t needed = settings.Osize() + settings.ML();
    Console::print("  0     ");
    if (cannot_start(settings)) {
        print_end("Cannot Start: 64-bit is required to use more than 2GB of memory.", 'R');
        return;
    }
    print_end("Start Computation!", 'G');
    if (machine.available != 0 && machine.available < needed) {
        print_end("        Warning: There is insufficient physical memory.", 'R');
    } else if (machine.physical != 0 && machine.physical < needed) {
        print_end("        Warning: There is insufficient available physical memory.", 'R');
    }
}

}  // namespace

MachineMemory machine_memory() {
    return {physical_memory(), available_memory()};
}

void print_custom_screen(const ComputeParameters& settings, const MachineMemory& machine) {
    Console::print_newline();
    Console::println("Custom Compute a Constant\n", 'P');
    Console::println("Current Settings: (select option # to change setting)\n", 'w');
    print_constant(settings);
    Console::print_newline();
    print_digits(settings);
    Console::print_newline();
    print_run(settings);
    Console::print_newline();
    print_mode_and_needs(settings);
    print_start(settings, machine);
    if (!on_disk(settings)) Console::print_newline();
}

OptionRange offered_options(const ComputeParameters& settings) {
    return {cannot_start(settings) ? 1 : 0, on_disk(settings) ? 13 : 8};
}

}  // namespace znp
