#include "shell/benchmark_menu.hpp"

#include <array>
#include <string>

#include "foundation/memory.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

constexpr upL_t option_width = 3;
constexpr upL_t digits_width = 23;
constexpr u64_t first_binary_option = 20;  // 2^20 digits
constexpr upL_t binary_digits_width = 17;
constexpr upL_t binary_memory_width = 12;

std::string with_commas(u64_t value) {
    return Console::format_int(value, Console::IntFormat::commas);
}

std::string padded_left(upL_t width, const std::string& text) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

// A line of a menu: the number or what stands in its place, the text in its colour, white.
void print_choice(const char* option, const char* text, char color) {
    Console::print(option, 'w');
    Console::println(text, color);
    Console::set_color('w');
}

void choose_threads(BenchmarkParameters& parameters) {
    Console::println("Select a Benchmark Type:", 'w');
    print_choice("  0     ", "Single-Threaded", 'G');
    print_choice("  1     ", "Multi-Threaded", 'G');
    Console::print_newline();
    if (Console::ask_int_range("option: ", 0, 1) == 0) parameters.threads = 1;
    Console::print_newline();
}

void print_header() {
    Console::println("Option      Decimal Digits          Approx. Memory Needed");
}

u64_t memory_for(ComputeParameters& settings, const BenchmarkSize& size) {
    settings.set_dec(size.digits);
    return settings.Osize() + settings.ML();
}

// A size that does not fit in the machine is dark.
void print_row(const std::string& row, upL_t memory_width, u64_t memory, u64_t physical_memory) {
    const bool fits = memory < physical_memory;
    Console::print(row, fits ? 'G' : 'g');
    Console::println(padded_left(memory_width, Console::format_bytes(memory)), fits ? 'Y' : 'y');
    Console::set_color('w');
}

// Null for the other menu.
const BenchmarkSize* choose_decimal_size(ComputeParameters& settings, u64_t physical_memory) {
    print_header();
    const auto sizes = decimal_benchmark_sizes();
    for (upL_t i = 0; i < sizes.size(); i++) {
        const std::string row = padded_left(option_width, to_string_u64(i + 1)) +
                                padded_left(digits_width, with_commas(sizes[i].digits)) +
                                std::string(16, ' ');
        print_row(row, 0, memory_for(settings, sizes[i]), physical_memory);
    }
    Console::print_newline();
    print_choice("  0     ", "I prefer SuperPi sizes... (1M, 2M, 4M...)", 'T');
    const auto option =
        static_cast<upL_t>(Console::ask_int_range("option: ", 0, static_cast<s64_t>(sizes.size())));
    return option == 0 ? nullptr : &sizes[option - 1];
}

// Option n stands for 2^n digits.
std::string binary_size_label(u64_t option) {
    constexpr std::array<const char*, 10> numbers{"  1", "  2", "  4", "  8", " 16",
                                                  " 32", " 64", "128", "256", "512"};
    constexpr std::array<const char*, 5> units{" ", "K", "M", "G", "T"};
    return std::string(numbers[option % 10]) + units[option / 10];
}

const BenchmarkSize* choose_binary_size(ComputeParameters& settings, u64_t physical_memory) {
    print_header();
    const auto sizes = binary_benchmark_sizes();
    for (upL_t i = 0; i < sizes.size(); i++) {
        const u64_t option = first_binary_option + i;
        const std::string row = padded_left(option_width, to_string_u64(option)) + " " +
                                binary_size_label(option) + "   - " +
                                padded_left(binary_digits_width, with_commas(sizes[i].digits));
        print_row(row, binary_memory_width, memory_for(settings, sizes[i]), physical_memory);
    }
    const auto first = static_cast<s64_t>(first_binary_option);
    const s64_t last = first + static_cast<s64_t>(sizes.size()) - 1;
    return &sizes[static_cast<upL_t>(Console::ask_int_range("option: ", first, last) - first)];
}

void print_available_memory(u64_t physical_memory) {
    if (physical_memory == 0) return;
    Console::print("Available Memory:   ");
    Console::println(Console::format_bytes(physical_memory) + "\n", 'Y');
    Console::set_color('w');
}

}  // namespace

void choose_benchmark(BenchmarkParameters& parameters, u64_t physical_memory) {
    Console::println("Benchmark Pi:\n", 'P');
    Console::set_color('w');
    if (parameters.threads > 1) choose_threads(parameters);

    ComputeParameters settings = benchmark_settings(parameters);
    print_available_memory(physical_memory);
    parameters.size = choose_decimal_size(settings, physical_memory);
    if (parameters.size != nullptr) return;
    Console::print_newline();
    parameters.size = choose_binary_size(settings, physical_memory);
}

void benchmark_menu(BenchmarkParameters& parameters) {
    choose_benchmark(parameters, physical_memory());
    run_benchmark(parameters);
}

}  // namespace znp
