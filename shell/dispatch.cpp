#include "shell/dispatch.hpp"

#include <array>
#include <string_view>

#include "shell/benchmark.hpp"
#include "shell/custom_command.hpp"
#include "shell/io_command.hpp"
#include "shell/main_menu.hpp"
#include "shell/option_table.hpp"
#include "shell/screens.hpp"
#include "shell/stress_command.hpp"
#include "shell/validator.hpp"

namespace znp {
namespace {

struct Command {
    std::string_view key;
    int (*run)(CommandLine& line);  // returns the exit code
};

template <void (*screen)()>
int show(CommandLine&) {
    screen();
    return 0;
}

constexpr std::array<Command, 7> commands{{
    {"about", show<print_about>},
    {"bench", benchmark_command},
    {"benchio", io_command},
    {"custom", custom_command},
    {"stress", stress_command},
    {"validate", show<benchmark_validator>},
    {"warning", show<print_warning>},
}};
static_assert(is_sorted_by_key(commands));

}  // namespace

int dispatch(CommandLine& line) {
    if (!line.has_more()) {
        main_menu();
        return 0;
    }
    line.advance();
    const Command* command = find_by_key(commands, line.key());
    if (command == nullptr) {
        print_skipped(line.argument());
        return 1;
    }
    return command->run(line);
}

}  // namespace znp
