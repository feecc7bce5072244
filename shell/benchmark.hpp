// The benchmark of Pi: its sizes with their known last digits, its options, and its run.
#pragma once

#include <span>
#include <string_view>

#include "compute/settings/compute_parameters.hpp"
#include "shell/command_line.hpp"

namespace znp {

struct BenchmarkSize {
    std::string_view key;  // the label
    u64_t digits;
    u64_t last_ten_digits;  // of Pi at that size, as a number
};

std::span<const BenchmarkSize> decimal_benchmark_sizes();
std::span<const BenchmarkSize> binary_benchmark_sizes();

// The row of a label of either table, null if there is none.
const BenchmarkSize* find_benchmark_size(std::string_view label);

struct BenchmarkParameters {
    const BenchmarkSize* size = nullptr;
    u64_t threads;  // as asked for; the run clips it

    BenchmarkParameters();  // all logical cores
};

// The options up to the end of the command line.
void apply_benchmark_options(BenchmarkParameters& parameters, CommandLine& line);

// The settings of the run: Chudnovsky's formula, no hexadecimal digits, threads clipped with a warning.
// Without a size: the default digits.
ComputeParameters benchmark_settings(const BenchmarkParameters& parameters);

enum class BenchmarkVerdict {
    failed,     // the digits are wrong
    recovered,  // they are right, but only because faults were noticed and repaired
    successful,
};

// last_digits: as the run hands them out, of which the last ten count; fewer are the number 0.
BenchmarkVerdict judge_benchmark(const BenchmarkSize& size, std::string_view last_digits,
                                 u64_t recovered_errors);

// The run and its verdict, on the screen.
void run_benchmark(const BenchmarkParameters& parameters);

int benchmark_command(CommandLine& line);

}  // namespace znp
