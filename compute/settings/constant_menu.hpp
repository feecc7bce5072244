// The menu of the constants: the user picks one and, where it takes one, its parameter.
#pragma once

#include "compute/settings/compute_parameters.hpp"

namespace znp {

// Prints the menu, asks, and sets the constant. A choice that is refused is told, with a pause; the settings
// are as before then. The end of the input ends the program, as at every prompt.
void choose_constant_menu(ComputeParameters& settings);

}  // namespace znp
