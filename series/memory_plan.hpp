// What the recursion over a range of terms takes in memory: words for each object of a node, bytes for the
// work buffer of its products.
//
// A range whose Q has L words leaves at most L/2 words, and a few more, to each half. The left half is summed
// in place and the right one behind the left results, so an object takes the lefts of all levels. The
// overhead is that "few more": what one level may lose to the rounding of its halves to terms and to words,
// to a P or R that is longer than Q, and to the word above a sum. 64 levels of it cover any range and what an
// end routine takes at the bottom.
//
// On several threads a node's buffers are halved for its two halves until each task has its own, and every
// level of that needs a work buffer for its merge.
#pragma once

#include "foundation/types.hpp"

namespace znp {

struct MemoryPlan {
    upL_t words;  // of each object
    upL_t bytes;  // of the work buffer
};

inline constexpr unsigned any_forks = 64;

// L words are summed on one thread.
MemoryPlan serial_memory_plan(upL_t L, upL_t overhead);

// By `tasks` tasks with `threads` threads at the top, or fewer if at most max_forks forks lie above each
// other.
MemoryPlan parallel_memory_plan(upL_t L, upL_t overhead, u64_t tasks, u64_t threads,
                                unsigned max_forks = any_forks);

// With `level` nodes from the top on whose halves are summed one after the other, so that they can be
// reported, and each of these by twice `threads` tasks. Level 0 is one task for each thread.
MemoryPlan level_memory_plan(upL_t L, upL_t overhead, u64_t level, u64_t threads,
                             unsigned max_forks = any_forks);

}  // namespace znp
