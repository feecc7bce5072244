#include "shell/custom_menu.hpp"

#include <string>

#include "compute/run/run.hpp"
#include "shell/console.hpp"
#include "shell/custom_dialogs.hpp"

namespace znp {
namespace {

bool may_start(const ComputeParameters& settings) {
    const std::string refusal = run_refusal(settings);
    if (refusal.empty()) return true;
    Console::print_error(refusal);
    Console::pause();
    return false;
}

}  // namespace

bool custom_menu_turn(ComputeParameters& settings, const MachineMemory& machine) {
    print_custom_screen(settings, machine);
    const OptionRange options = offered_options(settings);
    const s64_t option = Console::ask_int_range("option: ", options.low, options.high);
    if (option == 0) return may_start(settings);
    run_custom_dialog(settings, option);
    return false;
}

void custom_menu(ComputeParameters& settings) {
    while (!custom_menu_turn(settings, machine_memory())) {
    }
    run(settings);
}

}  // namespace znp
