#include "shell/io_command.hpp"

#include <array>

#include "foundation/fatal.hpp"
#include "shell/console.hpp"
#include "shell/number_forms.hpp"
#include "shell/option_table.hpp"
#include "shell/option_values.hpp"

namespace znp {
namespace {

int set_memory(IOAnalysis& settings, CommandLine& line) {
    settings.set_memory(byte_size_below_2_63(line));
    return 0;
}

int set_threads(IOAnalysis& settings, CommandLine& line) {
    settings.threads = clipped_threads(line);
    return 0;
}

int set_min_io(IOAnalysis& settings, CommandLine& line) {
    settings.set_min_io(parse_byte_size(line.value()));
    return 0;
}

int set_swap(IOAnalysis& settings, CommandLine& line) {
    return set_swap_paths(settings.swap, line);
}

constexpr std::array<OptionRow<IOAnalysis>, 4> io_options{{
    {"-M", set_memory},
    {"-T", set_threads},
    {"-minIO", set_min_io},
    {"-swap", set_swap},
}};
static_assert(is_sorted_by_key(io_options));

}  // namespace

void apply_io_options(IOAnalysis& settings, CommandLine& line) {
    apply_options(io_options, settings, line);
}

int io_command(CommandLine& line) {
    IOAnalysis settings = default_io_analysis();
    apply_io_options(settings, line);
    not_available_yet("The I/O performance analysis");
}

void io_menu(IOAnalysis&) {
    not_available_yet("The I/O performance analysis");
}

}  // namespace znp
