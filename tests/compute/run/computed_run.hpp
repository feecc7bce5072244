// Whole runs in this process: in a block of exactly the estimate, with the console and the files caught.
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "compute/run/run.hpp"
#include "compute/settings/settings_access.hpp"
#include "console_capture.hpp"
#include "temporary_folder.hpp"

namespace znp::testing {

struct ConstantRow {
    const char* name;  // as on the command line
    u32_t id;
    u64_t parameter;
    s32_t algorithms;  // with those behind the count
};

inline constexpr ConstantRow computed_constants[] = {
    {"sqrt:2", constant_id::sqrt, 2, 1},
    {"sqrt:18446744073709551615", constant_id::sqrt, 18446744073709551615u, 1},
    {"phi", constant_id::golden_ratio, 0, 1},
    {"e", constant_id::e, 0, 2},
    {"pi", constant_id::pi, 0, 4},
    {"arccoth:2", constant_id::arccoth, 2, 1},
    {"arccoth:4294967295", constant_id::arccoth, 4294967295, 1},
    {"log:2", constant_id::log, 2, 2},
    {"log:2147483647", constant_id::log, 2147483647, 2},
    {"zeta(3)", constant_id::zeta3, 0, 2},
    {"lemniscate", constant_id::lemniscate, 0, 2},
    {"catalan", constant_id::catalan, 0, 2},
    {"gamma", constant_id::euler_gamma, 0, 2},
};

// Those beyond take many times as long for the same digits: short tests take fewer sizes of them.
inline bool is_fast(const ConstantRow& constant) {
    return constant.id <= constant_id::pi;
}

struct ComputedAlgorithm {
    ConstantRow constant;
    s32_t algorithm;
};

inline std::vector<ComputedAlgorithm> computed_algorithms() {
    std::vector<ComputedAlgorithm> algorithms;
    for (const ConstantRow& constant : computed_constants) {
        for (s32_t i = 0; i < constant.algorithms; i++) algorithms.push_back({constant, i});
    }
    return algorithms;
}

// Names of parameterised tests.
inline std::string algorithm_name(const ::testing::TestParamInfo<ComputedAlgorithm>& info) {
    std::string name = std::string(info.param.constant.name) + "_" + std::to_string(info.param.algorithm);
    for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    return name;
}

inline ComputeParameters settings_for(const ComputedAlgorithm& what, u64_t dec, u64_t threads) {
    ComputeParameters settings;
    settings.set_threads(threads);
    const char* refusal = nullptr;
    console_output([&] { refusal = settings.choose_constant(what.constant.id, what.constant.parameter); });
    EXPECT_EQ(refusal, nullptr);
    EXPECT_EQ(settings.set_dec(dec), nullptr);
    SettingsAccess::set_algorithm(settings, what.algorithm);
    return settings;
}

struct ComputedRun {
    std::optional<RunTimeParameters> state;
    std::string output;
    std::string decimal, hexadecimal;  // the files
};

inline std::string file_text(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Runs in a folder of its own.
inline ComputedRun compute(ComputeParameters& settings) {
    const TemporaryFolder folder;
    EXPECT_EQ(settings.set_path(folder.wide_path()), nullptr);
    ComputedRun result;
    result.output = console_output([&] { result.state.emplace(run_in_block(settings, settings.ML())); });
    const auto path = [&](const char* radix) {
        return folder.path() + "/" + result.state->settings.short_name + radix +
               result.state->settings.algorithm_short + ".txt";
    };
    result.decimal = file_text(path(" - Dec - "));
    result.hexadecimal = file_text(path(" - Hex - "));
    EXPECT_EQ(result.output.find("Memory leak detected"), std::string::npos);
    EXPECT_EQ(result.output.find("Reattempting"), std::string::npos) << result.output;
    EXPECT_LE(result.state->peak_working_bytes, settings.ML());
    return result;
}

}  // namespace znp::testing
