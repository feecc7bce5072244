// What a run of the stress tester takes from its surroundings: tests put in components of their own and a
// clock that they drive.
#pragma once

#include <array>

#include "tools/stress_component.hpp"
#include "tools/stress_test.hpp"

namespace znp {

// The tests, in the order in which they run.
struct StressTest {
    const char* key;  // of the multiplier
    const char* menu_text;
    const char* primary_components;
    bool stress_settings::*selected;
};
inline constexpr std::array<StressTest, 4> stress_tests = {{
    {"BKT", "BKT (Basic Multiply)", "CPU: Integer", &stress_settings::test_BKT},
    {"FFT", "FFT (Floating-Point FFT)", "Memory", &stress_settings::test_FFT},
    {"HNT", "HNT (Hybrid NTT)", "CPU + Cache + Memory", &stress_settings::test_HNT},
    {"VST", "VST (Vector Transform)", "AVX2-Float + Cache", &stress_settings::test_VST},
}};

bool any_stress_test_selected(const stress_settings& settings);

struct StressEnvironment {
    std::array<const multiplier<c64i>*, stress_tests.size()> components;  // null: there is none
    StressClock clock;
};

int run_stress_test(const stress_settings& settings, const StressEnvironment& environment);

// One turn of the interactive screen: shows it, takes one answer and applies it. True if the run shall start.
bool stress_menu_turn(stress_settings& settings);

}  // namespace znp
