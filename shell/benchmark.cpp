#include "shell/benchmark.hpp"

#include <array>

#include "compute/run/run.hpp"
#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "foundation/threads.hpp"
#include "shell/benchmark_menu.hpp"
#include "shell/console.hpp"
#include "shell/option_table.hpp"
#include "shell/option_values.hpp"

namespace znp {
namespace {

// A last_ten_digits of fewer than ten figures stands for leading zeros.
constexpr std::array<BenchmarkSize, 16> decimal_sizes{{
    {"25m", 25'000'000, 6191884322},
    {"50m", 50'000'000, 7945652654},
    {"100m", 100'000'000, 187751592},
    {"250m", 250'000'000, 3452027780},
    {"500m", 500'000'000, 3293261427},
    {"1b", 1'000'000'000, 5275045519},
    {"2.5b", 2'500'000'000, 7255998083},
    {"5b", 5'000'000'000, 5440797257},
    {"10b", 10'000'000'000, 4758821220},
    {"25b", 25'000'000'000, 9913806533},
    {"50b", 50'000'000'000, 7510930042},
    {"100b", 100'000'000'000, 191295669},
    {"250b", 250'000'000'000, 2295830629},
    {"500b", 500'000'000'000, 9054201320},
    {"1t", 1'000'000'000'000, 6680122702},
    {"2.5t", 2'500'000'000'000, 8718886518},
}};

constexpr std::array<BenchmarkSize, 18> binary_sizes{{
    {"1M", u64_t{1} << 20, 1637429204},
    {"2M", u64_t{1} << 21, 3664312379},
    {"4M", u64_t{1} << 22, 638311120},
    {"8M", u64_t{1} << 23, 6340425119},
    {"16M", u64_t{1} << 24, 5273188571},
    {"32M", u64_t{1} << 25, 5226097306},
    {"64M", u64_t{1} << 26, 6223409803},
    {"128M", u64_t{1} << 27, 5448946822},
    {"256M", u64_t{1} << 28, 804962812},
    {"512M", u64_t{1} << 29, 7422375529},
    {"1G", u64_t{1} << 30, 6495505184},
    {"2G", u64_t{1} << 31, 913685104},
    {"4G", u64_t{1} << 32, 2422262299},
    {"8G", u64_t{1} << 33, 5603066578},
    {"16G", u64_t{1} << 34, 4654009194},
    {"32G", u64_t{1} << 35, 8765781155},
    {"64G", u64_t{1} << 36, 9247382865},
    {"128G", u64_t{1} << 37, 4195937134},
}};

int set_threads(BenchmarkParameters& parameters, CommandLine& line) {
    parameters.threads = parse_u64(line.value());
    return 0;
}

int set_size(BenchmarkParameters& parameters, CommandLine& line) {
    parameters.size = find_benchmark_size(line.key());
    return 0;
}

// "-T" and every label of both size tables.
constexpr auto benchmark_options = [] {
    std::array<OptionRow<BenchmarkParameters>, 1 + decimal_sizes.size() + binary_sizes.size()> rows{};
    upL_t count = 0;
    rows[count++] = {"-T", set_threads};
    for (const BenchmarkSize& size : decimal_sizes) rows[count++] = {size.key, set_size};
    for (const BenchmarkSize& size : binary_sizes) rows[count++] = {size.key, set_size};
    std::sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a.key < b.key; });
    return rows;
}();

void require(const char* refusal) {
    if (refusal != nullptr) fatal_exit(refusal);
}

void print_verdict(BenchmarkVerdict verdict) {
    switch (verdict) {
        case BenchmarkVerdict::failed:
            Console::println("Benchmark Failed. The digits are not correct. Please check your hardware.",
                             'R');
            break;
        case BenchmarkVerdict::recovered:
            Console::println(
                "The digits are correct, but errors were detected and fixed via ECC.\n"
                "As a computation, it is successful. But as a benchmark, it fails.",
                'R');
            break;
        case BenchmarkVerdict::successful:
            Console::println("Benchmark Successful. The digits appear to be OK.", 'G');
            break;
    }
    Console::set_color('w');
}

}  // namespace

std::span<const BenchmarkSize> decimal_benchmark_sizes() {
    return decimal_sizes;
}
std::span<const BenchmarkSize> binary_benchmark_sizes() {
    return binary_sizes;
}

const BenchmarkSize* find_benchmark_size(std::string_view label) {
    for (const std::span<const BenchmarkSize> table : {decimal_benchmark_sizes(), binary_benchmark_sizes()}) {
        for (const BenchmarkSize& size : table) {
            if (size.key == label) return &size;
        }
    }
    return nullptr;
}

BenchmarkParameters::BenchmarkParameters() : threads(logical_cores()) {}

void apply_benchmark_options(BenchmarkParameters& parameters, CommandLine& line) {
    apply_options(benchmark_options, parameters, line);
}

ComputeParameters benchmark_settings(const BenchmarkParameters& parameters) {
    ComputeParameters settings;
    require(settings.choose_constant(constant_id::pi, 0));
    require(settings.set_algorithm(0));
    if (parameters.size != nullptr) require(settings.set_dec(parameters.size->digits));
    settings.set_hex(0);
    settings.set_threads(clip_threads_with_warning(parameters.threads));
    return settings;
}

BenchmarkVerdict judge_benchmark(const BenchmarkSize& size, std::string_view last_digits,
                                 u64_t recovered_errors) {
    constexpr upL_t judged = 10;
    const u64_t number =
        last_digits.size() < judged ? 0 : parse_u64(last_digits.substr(last_digits.size() - judged));
    if (number != size.last_ten_digits) return BenchmarkVerdict::failed;
    return recovered_errors != 0 ? BenchmarkVerdict::recovered : BenchmarkVerdict::successful;
}

void run_benchmark(const BenchmarkParameters& parameters) {
    const ComputeParameters settings = benchmark_settings(parameters);
    std::array<char, last_digits_bytes> last_digits{};
    const u64_t recovered_errors = run(settings, last_digits.data());
    Console::print_newline();
    print_verdict(judge_benchmark(*parameters.size, last_digits.data(), recovered_errors));
}

int benchmark_command(CommandLine& line) {
    BenchmarkParameters parameters;
    if (!line.has_more()) {
        benchmark_menu(parameters);
        return 0;
    }
    apply_benchmark_options(parameters, line);
    if (parameters.size == nullptr) {
        Console::print_error("No benchmark size selected.");
        return 1;
    }
    run_benchmark(parameters);
    return 0;
}

}  // namespace znp
