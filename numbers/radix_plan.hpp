// The parallel plan of a radix conversion: how often pieces fork, how many threads each half gets, and the
// scratch memory of each.
#pragma once

#include "numbers/radix_table.hpp"

namespace znp {

struct CBR_ParallelPlan {
    // Pieces at these many levels from the top fork; the eight lowest levels never do.
    unsigned thread_levels;
    u64_t task_count;  // pieces that are converted at the same time, each with its work buffer

    // A piece of `depth` forks below the top has one of two thread counts, which differ by one at most, and
    // takes so many bytes. Another count is a fault of the recursion and throws.
    upL_t task_bytes(unsigned depth, u64_t threads) const;

    // The halves of a piece: the first one's threads and bytes come first.
    static u64_t first_threads(u64_t threads) { return threads - threads / 2; }
    static u64_t second_threads(u64_t threads) { return threads / 2; }
    bool forks(unsigned depth, u64_t threads) const { return depth < thread_levels && threads > 1; }

    struct Level {
        u64_t threads;      // the greater count
        upL_t bytes;        // for that one
        upL_t fewer_bytes;  // for one thread fewer
    };
    Level at[CBR_table::max_levels + 1];  // by depth, to thread_levels
};

CBR_ParallelPlan znp_CBRv2_ci_btrf_ap_make(const CBR_table& table, u64_t threads);

}  // namespace znp
