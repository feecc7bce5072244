// The parallel plan of a radix conversion: how often pieces fork, how many threads each half gets, and the
// scratch memory of each.
#pragma once

#include "numbers/radix_shape.hpp"

namespace znp {

struct CBR_ParallelPlan {
    // Pieces at these many levels from the top fork; the eight lowest levels never do.
    unsigned thread_levels;
    u64_t task_count;  // pieces that are converted at the same time, each with its work buffer

    // A piece of `depth` forks below the top has one of two thread counts, which differ by one at most, and
    // takes so many bytes. Another count is a fault of the recursion and throws.
    upL_t task_bytes(unsigned depth, u64_t threads) const;

    // The first half of a piece does not need the cut's product. Where that product is too short to gain much
    // from threads, the first half starts as soon as the fraction is transformed, and the rest of the product
    // belongs to the second half's task.
    static bool starts_early(const CBR_shape& shape, unsigned level);

    // The threads of the halves of a piece, and the bytes of the second one with the product of its cut.
    static u64_t first_threads(u64_t threads) { return threads - threads / 2; }
    static u64_t second_threads(u64_t threads) { return threads / 2; }
    upL_t second_bytes(const CBR_shape& shape, unsigned cut_level, unsigned depth, u64_t threads) const;
    bool forks(unsigned depth, u64_t threads) const { return depth < thread_levels && threads > 1; }

    struct Level {
        u64_t threads;      // the greater count
        upL_t bytes;        // for that one
        upL_t fewer_bytes;  // for one thread fewer
    };
    Level at[CBR_shape::max_levels + 1];  // by depth, to thread_levels
};

CBR_ParallelPlan znp_CBRv2_ci_btrf_ap_make(const CBR_shape& shape, u64_t threads);

}  // namespace znp
