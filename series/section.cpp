#include "series/section.hpp"

#include "series/recursion.hpp"

namespace znp {

namespace {

// The range of the most terms at each level is the leftmost: how often it can fork.
unsigned forks_of(const Section& section) {
    unsigned forks = 0;
    const u64_t a = section.row.a;
    for (u64_t b = section.row.b; b - a >= fork_min_terms; b = section.series.split(a, b)) forks++;
    return forks;
}

}  // namespace

MemoryPlan Section::memory() const {
    const unsigned forks = forks_of(*this);
    const upL_t overhead = series.memory_overhead;
    if (levels() > 0) return level_memory_plan(row.length, overhead, levels(), threads, forks);
    return parallel_memory_plan(row.length, overhead, range_tasks(threads), threads, forks);
}

}  // namespace znp
