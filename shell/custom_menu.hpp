// The Custom Compute a Constant screen: shows the settings, changes one after another, and starts the run.
#pragma once

#include "compute/settings/compute_parameters.hpp"
#include "shell/custom_screen.hpp"

namespace znp {

// Until a run is started, and ended.
void custom_menu(ComputeParameters& settings);

// One turn: the screen, the prompt, and the dialog of an option. True: the run is to start. Settings that
// this version cannot run are told instead, with a pause.
bool custom_menu_turn(ComputeParameters& settings, const MachineMemory& machine);

}  // namespace znp
