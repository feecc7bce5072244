// A constant whose computation and estimates are the test's.
#pragma once

#include <functional>

#include "compute/run/run_time_parameters.hpp"
#include "compute/settings/settings_access.hpp"

namespace znp::testing {

class TestConstant final : public zlr_Constant {
  public:
    static constexpr upL_t default_memory = 1 << 16;

    TestConstant() : zlr_Constant(2) {}

    char get_color() const override { return 'P'; }
    std::string get_short_name() const override { return "Test"; }
    std::string get_name() const override { return "Constant of the Tests"; }
    std::string get_algorithm_short(s32_t algorithm, upL_t) const override {
        return algorithm < 2 ? "short " + std::to_string(algorithm) : "";
    }
    std::string get_algorithm_name(s32_t algorithm, upL_t) const override {
        return "long " + std::to_string(algorithm);
    }
    bool get_memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads, upL_t& bytes) const override {
        return memory_B(algorithm, p, digits, threads, bytes);
    }
    bool get_memory_S(s32_t, upL_t, u64_t, upL_t ML, upL_t minIO, u64_t, u64_t& disk_bytes,
                      upL_t& memory_bytes) const override {
        return memory_S(ML, minIO, disk_bytes, memory_bytes);
    }
    void run_B(s32_t algorithm, RunTimeParameters& run) const override { computation(algorithm, run); }
    bool runs_B(s32_t) const override { return has_run_B; }
    bool runs_S(s32_t) const override { return has_run_S; }

    bool has_run_B = true;
    bool has_run_S = false;
    std::function<bool(s32_t, upL_t, u64_t, u64_t, upL_t&)> memory_B = [](s32_t, upL_t, u64_t, u64_t,
                                                                          upL_t& bytes) {
        bytes = default_memory;
        return true;
    };
    std::function<bool(upL_t, upL_t, u64_t&, upL_t&)> memory_S;
    // What the real ones do at their end, without digits.
    std::function<void(s32_t, RunTimeParameters&)> computation = [](s32_t, RunTimeParameters& run) {
        run.stopwatch.stop();
    };
};

// Settings of 1000 digits on one thread with a TestConstant, which belongs to the settings.
struct TestSettings {
    ComputeParameters settings;
    TestConstant* constant = new TestConstant;

    TestSettings() {
        settings.set_threads(1);
        settings.set_dec(1000);
        SettingsAccess::set_constant(settings, std::unique_ptr<zlr_Constant>(constant));
    }
};

}  // namespace znp::testing
