// Ways around the setters, to states that users cannot reach.
#pragma once

#include <utility>

#include "compute/settings/compute_parameters.hpp"

namespace znp::testing {

struct SettingsAccess {
    // An algorithm behind the constant's count.
    static void set_algorithm(ComputeParameters& settings, s32_t algorithm) {
        settings.algorithm_ = algorithm;
        settings.update_estimates();
    }
    static void set_constant(ComputeParameters& settings, std::unique_ptr<zlr_Constant> constant) {
        settings.constant_ = std::move(constant);
        settings.update_estimates();
    }
    // In memory or on disk, whatever the digits.
    static void set_mode(ComputeParameters& settings, ComputeMode mode) { settings.mode_ = mode; }
    static void set_hex(ComputeParameters& settings, u64_t hex) { settings.hex_ = hex; }

    // Once a constant of the tests answers differently.
    static void update(ComputeParameters& settings) { settings.update_estimates(); }
    static void update_memory(ComputeParameters& settings) { settings.update_memory(); }
    static void fit(ComputeParameters& settings, u64_t memory_limit) {
        settings.memory_limit_ = memory_limit;
        settings.fit_memory_limit();
    }
};

}  // namespace znp::testing
