#include "series/memory_plan.hpp"

#include <algorithm>

#include "multiply/dispatch.hpp"

namespace znp {

namespace {

constexpr int levels = 64;  // more than any range has

upL_t half(upL_t L, upL_t overhead) {
    return L / 2 + overhead;
}

// The words of an object that is used in place, from one whose left half has w words.
upL_t sum_of_levels(upL_t w, upL_t overhead) {
    upL_t sum = w;
    for (int i = 0; i < levels; i++) {
        w = half(w, overhead);
        sum += w;
    }
    return sum;
}

}  // namespace

MemoryPlan serial_memory_plan(upL_t L, upL_t overhead) {
    const upL_t w = half(L, overhead);
    return {sum_of_levels(w, overhead), work_bytes_for<cdi>(2 * w, 1)};
}

// A level is counted with the threads of the level above, and with those that its nodes really get: a fork
// gives its halves threads / 2, rounded down (`few`) and up (`many`). A multiplier may need more on fewer
// threads.
MemoryPlan parallel_memory_plan(upL_t L, upL_t overhead, u64_t tasks, u64_t threads, unsigned max_forks) {
    const auto threads_of = [threads](u64_t given) { return std::max<u64_t>(1, std::min(given, threads)); };
    upL_t w = half(L, overhead);
    upL_t bytes = work_bytes_for<cdi>(2 * w, threads_of(tasks));
    u64_t few = tasks;
    u64_t many = tasks;
    unsigned forks = 0;
    while (many > 1 && forks < max_forks) {
        const u64_t above = many;
        few /= 2;
        many = (many + 1) / 2;
        forks++;
        w = half(w, overhead);
        u64_t counted = 0;
        for (const u64_t given : {threads_of(above), threads_of(many), threads_of(few)}) {
            if (given == counted) continue;
            bytes = std::max(bytes, (work_bytes_for<cdi>(2 * w, given) + 32) << forks);
            counted = given;
        }
    }
    return {sum_of_levels(w, overhead) << forks, bytes};
}

MemoryPlan level_memory_plan(upL_t L, upL_t overhead, u64_t level, u64_t threads, unsigned max_forks) {
    if (threads < 2 || level == 0) return parallel_memory_plan(L, overhead, threads, threads, max_forks);
    const u64_t tasks = 2 * threads;
    upL_t w = half(L, overhead);
    upL_t words = w;
    const upL_t bytes = work_bytes_for<cdi>(2 * w, std::min(tasks, threads));
    for (u64_t i = 1; i < level; i++) {
        w = half(w, overhead);
        words += w;
    }
    const MemoryPlan rest = parallel_memory_plan(w, overhead, tasks, threads, max_forks);
    return {words + rest.words, std::max(bytes, rest.bytes)};
}

}  // namespace znp
