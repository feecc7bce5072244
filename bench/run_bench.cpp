// Whole computations in this process: the seconds that the run's own stopwatch counts, conversion included,
// output and verification not. Arguments: decimal digits, threads. bench/pi_run measures the program itself
// against the yardstick.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

#include "compute/run/run.hpp"

namespace znp {
namespace {

// What a run prints goes nowhere while the object lives.
class SilentConsole {
  public:
    SilentConsole() : saved_(::dup(STDOUT_FILENO)) {
        const int nowhere = ::open("/dev/null", O_WRONLY);
        ::dup2(nowhere, STDOUT_FILENO);
        ::close(nowhere);
    }
    ~SilentConsole() {
        ::dup2(saved_, STDOUT_FILENO);
        ::close(saved_);
    }
    SilentConsole(const SilentConsole&) = delete;
    SilentConsole& operator=(const SilentConsole&) = delete;

  private:
    int saved_;
};

void computation(benchmark::State& state, u32_t id, u64_t parameter, u64_t algorithm) {
    std::string folder = (std::filesystem::temp_directory_path() / "zelmar-bench-XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr) return state.SkipWithError("no temporary folder");
    ComputeParameters settings;
    settings.set_threads(static_cast<u64_t>(state.range(1)));
    settings.choose_constant(id, parameter);
    settings.set_algorithm(algorithm);
    settings.set_dec(static_cast<u64_t>(state.range(0)));
    settings.set_hex(0);
    settings.set_path({folder.begin(), folder.end()});
    if (const std::string refusal = run_refusal(settings); !refusal.empty()) {
        state.SkipWithError(refusal.c_str());
    } else {
        for (auto _ : state) {
            const SilentConsole silent;
            state.SetIterationTime(run_in_block(settings, settings.ML()).stopwatch.wall_seconds());
        }
        state.counters["memory_MiB"] = static_cast<double>(settings.ML() + settings.Osize()) / (1 << 20);
    }
    std::filesystem::remove_all(folder);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgsProduct({{1000, 10'000, 50'000, 90'000, 1'000'000, 10'000'000}, {1, 2}})
        ->ArgNames({"digits", "threads"})
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(computation, Pi_Chudnovsky, constant_id::pi, 0, 0)->Apply(sizes);
BENCHMARK_CAPTURE(computation, Pi_Ramanujan, constant_id::pi, 0, 1)->Apply(sizes);
BENCHMARK_CAPTURE(computation, e, constant_id::e, 0, 0)->Apply(sizes);
BENCHMARK_CAPTURE(computation, Sqrt2, constant_id::sqrt, 2, 0)->Apply(sizes);
BENCHMARK_CAPTURE(computation, GoldenRatio, constant_id::golden_ratio, 0, 0)->Apply(sizes);

}  // namespace
}  // namespace znp

BENCHMARK_MAIN();
