#include "shell/custom_command.hpp"

#include <array>

#include "compute/constants/constant_row.hpp"
#include "compute/run/run.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"
#include "shell/custom_menu.hpp"
#include "shell/number_forms.hpp"
#include "shell/option_table.hpp"
#include "shell/option_values.hpp"

namespace znp {
namespace {

int set_algorithm(ComputeParameters& settings, CommandLine& line) {
    return Console::print_entry_error(settings.set_algorithm(parse_u64(line.value())));
}

int set_dec(ComputeParameters& settings, CommandLine& line) {
    return Console::print_entry_error(settings.set_dec(parse_digit_count(line.value())));
}

int set_hex(ComputeParameters& settings, CommandLine& line) {
    return Console::print_entry_error(settings.set_hex(parse_digit_count(line.value())));
}

int set_threads(ComputeParameters& settings, CommandLine& line) {
    settings.set_threads(clip_threads_with_warning(parse_u64(line.value())));
    return 0;
}

int set_path(ComputeParameters& settings, CommandLine& line) {
    line.advance();
    return Console::print_entry_error(settings.set_path(a_to_w_direct(line.argument())));
}

int set_digits_per_file(ComputeParameters& settings, CommandLine& line) {
    return Console::print_entry_error(settings.set_digits_per_file(parse_digit_count(line.value())));
}

int set_mode(ComputeParameters& settings, CommandLine& line) {
    ComputeMode mode;
    if (line.value() == "ram") {
        mode = ComputeMode::ram_only;
    } else if (line.value() == "swap") {
        mode = ComputeMode::swap;
    } else {
        print_skipped(line.value());
        return 1;
    }
    return Console::print_entry_error(settings.set_mode(static_cast<u64_t>(mode)));
}

int set_memory_limit(ComputeParameters& settings, CommandLine& line) {
    settings.set_memory_limit(parse_byte_size(line.value()));
    return 0;
}

int set_min_io(ComputeParameters& settings, CommandLine& line) {
    settings.set_min_io(parse_byte_size(line.value()));
    return 0;
}

int set_swap(ComputeParameters& settings, CommandLine& line) {
    return settings.change_swap([&](SwapConfiguration& swap) { return set_swap_paths(swap, line); });
}

constexpr std::array<OptionRow<ComputeParameters>, 10> custom_options{{
    {"-C", set_digits_per_file},
    {"-M", set_memory_limit},
    {"-T", set_threads},
    {"-algorithm", set_algorithm},
    {"-dec", set_dec},
    {"-hex", set_hex},
    {"-minIO", set_min_io},
    {"-mode", set_mode},
    {"-o", set_path},
    {"-swap", set_swap},
}};
static_assert(is_sorted_by_key(custom_options));

}  // namespace

int choose_constant_by_keyword(ComputeParameters& settings, const CommandLine& line) {
    const ConstantRow* const constant = find_constant(line.key());
    if (constant == nullptr) {
        print_skipped(line.argument());
        return 1;
    }
    return Console::print_entry_error(settings.choose_constant(constant->id, parse_u64(line.value())));
}

void apply_custom_options(ComputeParameters& settings, CommandLine& line) {
    apply_options(custom_options, settings, line);
}

int custom_command(CommandLine& line) {
    ComputeParameters settings;
    if (!line.has_more()) {
        custom_menu(settings);
        return 0;
    }
    line.advance();
    if (choose_constant_by_keyword(settings, line) != 0) return 1;
    apply_custom_options(settings, line);
    run(settings);
    return 0;
}

}  // namespace znp
