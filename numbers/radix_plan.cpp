#include "numbers/radix_plan.hpp"

#include <algorithm>

#include "foundation/fail.hpp"
#include "foundation/range_fork.hpp"

namespace znp {

namespace {

constexpr unsigned serial_levels = 8;

// Measured on two threads: a transform of the large kind gains nothing from the second one below.
constexpr upL_t early_words = upL_t{1} << 17;

}  // namespace

upL_t CBR_ParallelPlan::task_bytes(unsigned depth, u64_t threads) const {
    const Level& level = at[depth];
    if (threads == level.threads) return level.bytes;
    if (threads + 1 == level.threads) return level.fewer_bytes;
    fail(zn_exception(error_code::unspecified, "znp_CBRv2_ci_btrf_ap_make(): Thread Inconsistancy"));
}

bool CBR_ParallelPlan::starts_early(const CBR_shape& shape, unsigned level) {
    return !shape.is_direct(level) && shape.lengths[level] <= early_words;
}

upL_t CBR_ParallelPlan::second_bytes(const CBR_shape& shape, unsigned cut_level, unsigned depth,
                                     u64_t threads) const {
    const u64_t count = second_threads(threads);
    const upL_t bytes = task_bytes(depth + 1, count);
    return starts_early(shape, cut_level) ? std::max(bytes, shape.product_bytes(cut_level, count)) : bytes;
}

CBR_ParallelPlan znp_CBRv2_ci_btrf_ap_make(const CBR_shape& shape, u64_t threads) {
    CBR_ParallelPlan plan{};
    const unsigned parallel = shape.levels > serial_levels ? shape.levels - serial_levels : 0;
    plan.thread_levels = std::min(parallel, fork_depth(threads));
    plan.task_count = std::min(u64_t{1} << plan.thread_levels, std::max<u64_t>(threads, 1));

    plan.at[0].threads = std::max<u64_t>(threads, 1);
    for (unsigned d = 0; d < plan.thread_levels; d++) {
        plan.at[d + 1].threads = CBR_ParallelPlan::first_threads(plan.at[d].threads);
    }
    const auto bytes_of = [&](unsigned depth, u64_t count) -> upL_t {
        if (count == 0) return 0;
        const unsigned level = shape.levels - depth;
        if (level == 0) return 0;
        if (!plan.forks(depth, count)) return shape.product_bytes(level - 1, 1);
        const upL_t first = plan.task_bytes(depth + 1, CBR_ParallelPlan::first_threads(count));
        upL_t bytes = shape.product_bytes(level - 1, count);
        // A short piece may be cut further down: down to where the first half starts early, and no further.
        for (unsigned k = level; k-- > 0;) {
            bytes = std::max(bytes, first + plan.second_bytes(shape, k, depth, count));
            if (CBR_ParallelPlan::starts_early(shape, k)) break;
        }
        return bytes;
    };
    for (unsigned d = plan.thread_levels + 1; d-- > 0;) {
        CBR_ParallelPlan::Level& level = plan.at[d];
        level.bytes = bytes_of(d, level.threads);
        level.fewer_bytes = bytes_of(d, level.threads - 1);
    }
    return plan;
}

}  // namespace znp
