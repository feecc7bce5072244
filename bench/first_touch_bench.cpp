// First touch of fresh memory: 4 KiB pages against huge pages, on one thread and on all of them.
//
// Each iteration maps a fresh block, which is outside of the timing, as is its return. The argument is the
// size of the block in MiB. Huge pages need /sys/kernel/mm/transparent_hugepage/enabled at "madvise" or
// "always".
#include <benchmark/benchmark.h>
#include <sys/mman.h>

#include <chrono>
#include <cstring>

#include "foundation/memory.hpp"
#include "foundation/threads.hpp"

namespace {

using namespace znp;

// The zeroing of first_touch over small pages; it advises huge ones by itself.
void touch_small_pages(void* block, upL_t size_bytes, u64_t threads) {
    const upL_t share = size_bytes / threads;
    auto task = make_task(
        [=](u64_t index) { std::memset(static_cast<std::byte*>(block) + share * index, 0, share); });
    fork_range(task, 0, threads);
}

template <class Touch>
void measure(benchmark::State& state, int advice, u64_t threads, Touch touch) {
    const upL_t size_bytes = static_cast<upL_t>(state.range(0)) << 20;
    for (auto _ : state) {
        void* const block =
            mmap(nullptr, size_bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (block == MAP_FAILED) {
            state.SkipWithError("no memory");
            return;
        }
        static_cast<void>(madvise(block, size_bytes, advice));
        const auto start = std::chrono::steady_clock::now();
        touch(block, size_bytes, threads);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(time.count());
        munmap(block, size_bytes);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(size_bytes) * state.iterations());
    state.counters["threads"] = static_cast<double>(threads);
}

void small_pages_one_thread(benchmark::State& state) {
    measure(state, MADV_NOHUGEPAGE, 1, touch_small_pages);
}
void small_pages_all_threads(benchmark::State& state) {
    measure(state, MADV_NOHUGEPAGE, logical_cores(), touch_small_pages);
}
void huge_pages_one_thread(benchmark::State& state) {
    measure(state, MADV_HUGEPAGE, 1, first_touch);
}
void huge_pages_all_threads(benchmark::State& state) {
    measure(state, MADV_HUGEPAGE, logical_cores(), first_touch);
}

BENCHMARK(small_pages_one_thread)->Arg(1024)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(small_pages_all_threads)->Arg(1024)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(huge_pages_one_thread)->Arg(1024)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(huge_pages_all_threads)->Arg(1024)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
