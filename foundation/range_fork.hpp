// The recursive fork of the parallel passes: a range of equal items is cut in two until the depth budget is
// spent or the work is too small to be worth a thread.
//
// A depth of d gives up to 2^d threads: each fork hands depth d - 1 to both halves, and a task of depth 0
// runs on alone. The halves of [low, high) are [low, mid) on a new thread and [mid, high) on this one, with
// mid = (low + high) / 2, so that an odd item goes to the second. Their slices of the scratch memory lie one
// behind the other: the second begins after what a subtree of depth d - 1 needs.
//
// A thread lives for one fork; with work of at least the thresholds below its creation is lost in the noise.
#pragma once

#include <bit>
#include <concepts>

#include "foundation/threads.hpp"
#include "foundation/types.hpp"

namespace znp {

// The smallest depth whose 2^depth threads are at least the count of threads; 0 for a count of 0.
constexpr unsigned fork_depth(u64_t threads) {
    return threads <= 1 ? 0 : static_cast<unsigned>(std::bit_width(threads - 1));
}

// ---- When a fork is worth it ------------------------------------------------------------------------------
// Work is items times item size, in the pass's own units. The passes ask these once for each fork.

inline constexpr u64_t range_pass_threshold = 49'999;       // fork above this
inline constexpr u64_t transform_pass_threshold = 250'000;  // fork from this on
inline constexpr unsigned transform_pass_min_levels = 5;
inline constexpr u64_t butterfly_threshold = 9'999;  // fork above this
inline constexpr unsigned butterfly_min_levels = 2;

constexpr bool range_pass_forks(u64_t items, u64_t width) {
    return items * width > range_pass_threshold;
}

// A whole transform of (length << levels) points.
constexpr bool transform_pass_forks(u64_t length, unsigned levels) {
    return levels >= transform_pass_min_levels && (length << levels) * levels >= transform_pass_threshold;
}

constexpr bool butterfly_forks(u64_t items, u64_t item_size, unsigned levels) {
    return levels >= butterfly_min_levels && items * item_size > butterfly_threshold;
}

// ---- The fork ---------------------------------------------------------------------------------------------

// A pass over a range of items.
//   Scratch                        what a slice of scratch memory is made of
//   worth_forking(items)           whether that much work is worth a further thread
//   scratch_size(depth)            Scratch elements that a subtree with that depth budget needs, at depth 0
//                                  what one call of run needs; at least 2 scratch_size(depth - 1)
//   run(low, high, scratch)        the items in a loop, on the current thread; called from several threads at
//                                  once for disjoint ranges and slices
template <class P>
concept RangePass = requires(const P& pass, u64_t index, unsigned depth, typename P::Scratch* scratch) {
    { pass.worth_forking(index) } -> std::same_as<bool>;
    { pass.scratch_size(depth) } -> std::convertible_to<upL_t>;
    pass.run(index, index, scratch);
};

template <RangePass Pass>
class RangeTask final : public Task {
  public:
    using Scratch = typename Pass::Scratch;

    RangeTask(const Pass& pass, u64_t low, u64_t high, unsigned depth, Scratch* scratch)
        : pass_(&pass), low_(low), high_(high), depth_(depth), scratch_(scratch) {}

    void run(u64_t) override {
        const u64_t items = high_ - low_;
        if (items < 2 || depth_ == 0 || !pass_->worth_forking(items)) {
            pass_->run(low_, high_, scratch_);
            return;
        }
        const u64_t mid = low_ + items / 2;
        const unsigned depth = depth_ - 1;
        RangeTask first(*pass_, low_, mid, depth, scratch_);
        RangeTask second(*pass_, mid, high_, depth, scratch_ + pass_->scratch_size(depth));
        raise_status(fork_two(first, second));
    }

  private:
    const Pass* pass_;
    u64_t low_;
    u64_t high_;
    unsigned depth_;
    Scratch* scratch_;
};

// Runs pass over [low, high) with up to 2^depth threads, this one among them. scratch has
// pass.scratch_size(depth) elements. Throws what a part of the pass on this thread throws, and a zn_exception
// with the code of one that ended a part elsewhere.
template <RangePass Pass>
void range_fork(const Pass& pass, u64_t low, u64_t high, unsigned depth, typename Pass::Scratch* scratch) {
    RangeTask<Pass>(pass, low, high, depth, scratch).run(0);
}

}  // namespace znp
