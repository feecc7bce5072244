#include "shell/stress_command.hpp"

#include <array>

#include "foundation/strings.hpp"
#include "shell/option_table.hpp"
#include "shell/option_values.hpp"

namespace znp {
namespace {

int set_memory(stress_settings& settings, CommandLine& line) {
    settings.memory = byte_size_below_2_63(line);
    return 0;
}

int set_threads(stress_settings& settings, CommandLine& line) {
    settings.threads = clipped_threads(line);
    return 0;
}

int set_seconds(stress_settings& settings, CommandLine& line) {
    settings.seconds = parse_u64(line.value());
    return 0;
}

template <bool stress_settings::*test>
int select_test(stress_settings& settings, CommandLine&) {
    settings.*test = true;
    return 0;
}

constexpr std::array<OptionRow<stress_settings>, 7> stress_options{{
    {"-D", set_seconds},
    {"-M", set_memory},
    {"-T", set_threads},
    {"BKT", select_test<&stress_settings::test_BKT>},
    {"FFT", select_test<&stress_settings::test_FFT>},
    {"HNT", select_test<&stress_settings::test_HNT>},
    {"VST", select_test<&stress_settings::test_VST>},
}};
static_assert(is_sorted_by_key(stress_options));

}  // namespace

void apply_stress_options(stress_settings& settings, CommandLine& line) {
    clear_stress_tests(settings);
    apply_options(stress_options, settings, line);
}

int stress_command(CommandLine& line) {
    stress_settings settings = default_stress_settings();
    apply_stress_options(settings, line);
    return run_stress_test(settings);
}

}  // namespace znp
