// The recursive fork of the parallel passes: a range of equal items is divided among any number of threads.
#pragma once

#include <algorithm>
#include <bit>

#include "foundation/threads.hpp"
#include "foundation/types.hpp"

namespace znp {

// The smallest depth whose 2^depth threads are at least the count of threads; 0 for a count of 0.
constexpr unsigned fork_depth(u64_t threads) {
    return threads <= 1 ? 0 : static_cast<unsigned>(std::bit_width(threads - 1));
}

// Calls f(low, high, slot) on disjoint ranges that make up [low, high), with up to `threads` threads. Even
// threads halve the range, an odd item going to the second half, which stays on this thread; odd ones that
// are fewer than the items divide it in proportion, the larger part rounded up; otherwise the items are
// halved and the threads follow. Slots are below `threads`, and in the order of the ranges.
template <class F>
void split_range(u64_t low, u64_t high, u64_t threads, u64_t slot, const F& f) {
    const u64_t items = high - low;
    if (threads <= 1 || items <= 1) {
        f(low, high, slot);
        return;
    }
    u64_t first_threads = threads / 2;
    u64_t first_items = items / 2;
    if (threads % 2 != 0) {
        if (threads < items) {
            first_threads = threads - threads / 2;
            first_items = (items * first_threads + threads - 1) / threads;
        } else {
            first_threads = std::max<u64_t>(1, threads * first_items / items);
        }
    }
    const u64_t mid = low + first_items;
    auto first = make_task([&](u64_t) { split_range(low, mid, first_threads, slot, f); });
    auto second =
        make_task([&](u64_t) { split_range(mid, high, threads - first_threads, slot + first_threads, f); });
    fork_two(first, second);
}

}  // namespace znp
