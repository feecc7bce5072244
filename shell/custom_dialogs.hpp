// The dialogs of the Custom Compute a Constant screen: each changes one setting.
#pragma once

#include "compute/settings/compute_parameters.hpp"

namespace znp {

// The dialog of an option of the screen, from 1 on. An entry that is refused is told and asked for again. The
// end of the input ends the program, as at every prompt.
void run_custom_dialog(ComputeParameters& settings, s64_t option);

}  // namespace znp
