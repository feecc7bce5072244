#include "tools/stress_test.hpp"

#include <string>

#include "foundation/fatal.hpp"
#include "foundation/memory.hpp"
#include "foundation/threads.hpp"
#include "multiply/selection.hpp"
#include "multiply/unavailable_multiplier.hpp"
#include "shell/console.hpp"
#include "tools/stress_run.hpp"
#include "tools/stress_signals.hpp"

namespace znp {

namespace {

void set_all_tests(stress_settings& settings, bool on) {
    settings.test_BKT = on;
    settings.test_FFT = on;
    settings.test_HNT = on;
    settings.test_VST = on;
    settings.test_spare = on;
}

bool is_available(const multiplier<c64i>* component) {
    return component != nullptr && dynamic_cast<const UnavailableMultiplier<c64i>*>(component) == nullptr;
}

// A run that left out a component without a word would look like a success, so that nothing is run at all.
void require_components(const stress_settings& settings, const StressEnvironment& environment) {
    for (std::size_t i = 0; i < stress_tests.size(); i++) {
        if (!(settings.*stress_tests[i].selected)) continue;
        if (!is_available(environment.components[i])) {
            not_available_yet(std::string("The stress test ") + stress_tests[i].menu_text);
        }
    }
}

// What a run has done so far.
struct Tally {
    u64_t iterations = 0;
    std::array<u64_t, stress_tests.size()> multiplications{};
    std::array<bool, stress_tests.size()> errors{};

    bool any_error() const {
        for (const bool error : errors) {
            if (error) return true;
        }
        return false;
    }
    bool nothing_ran() const {
        for (const u64_t count : multiplications) {
            if (count != 0) return false;
        }
        return true;
    }
};

// The last line of a run.
void print_summary(const stress_settings& settings, const Tally& tally, double seconds) {
    using Console::IntFormat;
    std::string done = Console::format_int(tally.iterations, IntFormat::commas) +
                       (tally.iterations == 1 ? " iteration in " : " iterations in ") +
                       Console::format_seconds(seconds, 3) + " seconds  Multiplications:";
    std::string errors;
    for (std::size_t i = 0; i < stress_tests.size(); i++) {
        if (!(settings.*stress_tests[i].selected)) continue;
        const std::string key = stress_tests[i].key;
        done += " " + key + " " + Console::format_int(tally.multiplications[i], IntFormat::commas);
        if (tally.errors[i]) errors += (errors.empty() ? "" : " ") + key;
    }
    Console::print(done + "  ", 'w');
    Console::print_labelled_line("Errors", errors.empty() ? "None" : errors, errors.empty() ? 'G' : 'R');
}

// One pass over the selected tests, cut short by a stop request. Gives whether the last test that ran failed.
bool run_iteration(const stress_settings& settings, const StressEnvironment& environment,
                   StressBuffer& buffer, Tally& tally) {
    const StressLimits limits{settings.threads, settings.seconds, environment.clock};
    bool last_failed = false;
    for (std::size_t i = 0; i < stress_tests.size(); i++) {
        if (!(settings.*stress_tests[i].selected)) continue;
        const StressResult result = run_stress_component(*environment.components[i], buffer, limits);
        last_failed = result.verdict == StressResult::Verdict::failed;
        tally.multiplications[i] += result.multiplications;
        tally.errors[i] |= last_failed;
        if (StopSignals::requested()) return last_failed;
    }
    tally.iterations++;
    return last_failed;
}

}  // namespace

stress_settings default_stress_settings() {
    stress_settings settings{};
    settings.memory = physical_memory() / 32 * 31;
    settings.threads = logical_cores();
    settings.seconds = 120;
    settings.stop_on_error = true;
    select_all_stress_tests(settings);
    return settings;
}

void clear_stress_tests(stress_settings& settings) {
    set_all_tests(settings, false);
}

void select_all_stress_tests(stress_settings& settings) {
    set_all_tests(settings, true);
}

bool any_stress_test_selected(const stress_settings& settings) {
    for (const StressTest& test : stress_tests) {
        if (settings.*test.selected) return true;
    }
    return false;
}

int run_stress_test(const stress_settings& settings, const StressEnvironment& environment) {
    if (!any_stress_test_selected(settings)) {
        Console::print_error("You must select at least one test.");
        return 1;
    }
    require_components(settings, environment);

    const StopSignals signals;
    StressBuffer buffer(settings.memory);
    const double start = environment.clock();
    Console::println("Starting Continuous Stress-Test...\n", 'w');

    Tally tally;
    bool nothing_to_do = false;
    for (u64_t iteration = 0;; iteration++) {
        Console::print("Iteration " + Console::format_int(iteration, Console::IntFormat::plain), 'w');
        Console::print("  Total Elapsed Time: ");
        Console::print_seconds_line(environment.clock() - start);
        const bool last_failed = run_iteration(settings, environment, buffer, tally);
        Console::print_newline();

        if (last_failed && settings.stop_on_error) {
            Console::println("Errors encountered. Stopping test...", 'R');
            Console::set_color('w');
            Console::print_newline();
            break;
        }
        if (StopSignals::requested()) break;
        if (tally.nothing_ran()) {  // nor would it in the next iteration
            Console::println("No test could be run.", 'R');
            nothing_to_do = true;
            break;
        }
    }
    print_summary(settings, tally, environment.clock() - start);
    return nothing_to_do || tally.any_error() ? 1 : 0;
}

int run_stress_test(const stress_settings& settings) {
    StressEnvironment environment{};
    for (std::size_t i = 0; i < stress_tests.size(); i++) {
        environment.components[i] = find_multiplier<c64i>(stress_tests[i].key);
    }
    environment.clock = steady_seconds;
    return run_stress_test(settings, environment);
}

}  // namespace znp
