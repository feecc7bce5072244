// The check at start.
#include "shell/build_targets.hpp"
#include "shell/console.hpp"
#include "shell/cpu_features.hpp"

namespace znp {

void check_features(const CpuidSource& source) {
    Console::println("\nChecking processor/OS features...\n");
    Console::println("Required Features:");
    Console::println("    x64, SSE, SSE2, SSE3, SSSE3, SSE4.1, SSE4.2, AVX, ABM, FMA3, AVX2, BMI2", 'T');
    Console::print_newline();

    CPUFeatures features;
    read_features(features, source);
    if (!supports_this_build(features)) {
        Console::println("Warning:", 'R');
        Console::println("This computer does not have all the processor or operating system");
        Console::println("features that are necessary to run this binary.\n");
        Console::println("Proceeding may cause the program to crash.\n");
        Console::pause('w');
        Console::print_newline();
    }
    Console::print("\n", 'w');
}

}  // namespace znp
