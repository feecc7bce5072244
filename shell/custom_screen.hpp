// What the Custom Compute a Constant screen shows: all settings of a computation and what they cost.
#pragma once

#include "compute/settings/compute_parameters.hpp"

namespace znp {

// The machine's memory in bytes; 0 where the system does not say.
struct MachineMemory {
    u64_t physical;
    u64_t available;  // free pages now
};
MachineMemory machine_memory();

// All lines above the prompt.
void print_custom_screen(const ComputeParameters& settings, const MachineMemory& machine);

// The options that the prompt takes.
struct OptionRange {
    s64_t low, high;
};
OptionRange offered_options(const ComputeParameters& settings);

}  // namespace znp
