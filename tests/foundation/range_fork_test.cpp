#include "foundation/range_fork.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/thread_counter.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::ThreadCounter;

// One call of f.
struct Leaf {
    u64_t low;
    u64_t high;
    u64_t slot;
    std::thread::id runner;
};

// In the order of the ranges.
std::vector<Leaf> fork_and_record(u64_t low, u64_t high, u64_t threads) {
    std::mutex mutex;
    std::vector<Leaf> leaves;
    split_range(low, high, threads, 0, [&](u64_t from, u64_t to, u64_t slot) {
        const std::lock_guard lock(mutex);
        leaves.push_back({from, to, slot, std::this_thread::get_id()});
    });
    std::sort(leaves.begin(), leaves.end(), [](const Leaf& a, const Leaf& b) { return a.low < b.low; });
    return leaves;
}

TEST(RangeFork, OneThreadNeverCreatesAnother) {
    ThreadCounter counter;
    for (const u64_t items : {0u, 1u, 2u, 1000u, 1'000'000u}) {
        for (const u64_t threads : {0u, 1u}) {
            const std::vector<Leaf> leaves = fork_and_record(7, 7 + items, threads);
            ASSERT_EQ(leaves.size(), 1u);
            EXPECT_EQ(leaves[0].low, 7u);
            EXPECT_EQ(leaves[0].high, 7 + items);
            EXPECT_EQ(leaves[0].slot, 0u);
            EXPECT_EQ(leaves[0].runner, std::this_thread::get_id());
        }
    }
    EXPECT_EQ(counter.created(), 0);
}

TEST(RangeFork, TwoItemsOnTwoThreadsCreateExactlyOne) {
    ThreadCounter counter;
    const std::vector<Leaf> leaves = fork_and_record(0, 2, 2);
    ASSERT_EQ(leaves.size(), 2u);
    EXPECT_EQ(counter.created(), 1);
}

TEST(RangeFork, OddItemGoesToTheSecondChild) {
    for (const u64_t low : {0u, 1u, 10u, 11u}) {
        const std::vector<Leaf> leaves = fork_and_record(low, low + 5, 2);
        ASSERT_EQ(leaves.size(), 2u);
        EXPECT_EQ(leaves[0].low, low);
        EXPECT_EQ(leaves[0].high, low + 2);
        EXPECT_EQ(leaves[1].low, low + 2);
        EXPECT_EQ(leaves[1].high, low + 5);
        EXPECT_NE(leaves[0].runner, std::this_thread::get_id());
        EXPECT_EQ(leaves[1].runner, std::this_thread::get_id());
    }
}

TEST(RangeFork, EveryThreadGetsARange) {
    for (u64_t threads = 1; threads <= 33; ++threads) {
        ThreadCounter counter;
        const std::vector<Leaf> leaves = fork_and_record(0, 100, threads);
        EXPECT_EQ(leaves.size(), threads);
        EXPECT_EQ(counter.created(), static_cast<int>(threads) - 1);
        for (u64_t i = 0; i < leaves.size(); ++i) {
            EXPECT_EQ(leaves[i].slot, i);
            EXPECT_LE(leaves[i].high - leaves[i].low, 100 / threads + 2);
        }
    }
}

TEST(RangeFork, SingleItemsEndTheRecursion) {
    ThreadCounter counter;
    EXPECT_EQ(fork_and_record(0, 3, 256).size(), 3u);
    EXPECT_EQ(counter.created(), 2);
    EXPECT_EQ(fork_and_record(4, 5, 256).size(), 1u);
    EXPECT_EQ(fork_and_record(4, 4, 256).size(), 1u);
    EXPECT_EQ(counter.created(), 2);
}

// The ranges make up the whole; slots are below the threads and in the order of the ranges.
TEST(RangeFork, RandomRangesAreDividedWithoutGapOrOverlap) {
    std::mt19937_64 rng = testing::make_rng(8300);
    for (int round = 0; round < 200; ++round) {
        const u64_t low = rng() % 50, items = 1 + rng() % 80, threads = 1 + rng() % 40;
        const std::vector<Leaf> leaves = fork_and_record(low, low + items, threads);
        u64_t next = low;
        for (std::size_t i = 0; i < leaves.size(); ++i) {
            ASSERT_EQ(leaves[i].low, next);
            ASSERT_LT(leaves[i].low, leaves[i].high);
            ASSERT_LT(leaves[i].slot, threads);
            if (i > 0) {
                ASSERT_LT(leaves[i - 1].slot, leaves[i].slot);
            }
            next = leaves[i].high;
        }
        ASSERT_EQ(next, low + items);
        ASSERT_LE(leaves.size(), std::min(threads, items));
    }
}

// Each slot has scratch of its own: items are copied into it and back in reverse, so that a slot shared by
// two threads, or a range done twice or not at all, gives a wrong result (or a race).
TEST(RangeFork, RandomRangesAgreeWithOneThread) {
    std::mt19937_64 rng = testing::make_rng(8301);
    for (int round = 0; round < 60; ++round) {
        const upL_t item_size = 1 + rng() % 40;
        const u64_t items = rng() % 70;
        const u64_t low = rng() % (items + 1);
        const u64_t threads = 1 + rng() % 20;
        std::vector<u64_t> data(items * item_size);
        std::generate(data.begin(), data.end(), std::ref(rng));
        std::vector<u64_t> expected = data;
        for (u64_t item = low; item < items; ++item) {
            const auto start = expected.begin() + static_cast<std::ptrdiff_t>(item * item_size);
            std::reverse(start, start + static_cast<std::ptrdiff_t>(item_size));
        }
        std::vector<u64_t> scratch(threads * item_size);
        split_range(low, items, threads, 0, [&](u64_t from, u64_t to, u64_t slot) {
            u64_t* const own = scratch.data() + slot * item_size;
            for (u64_t item = from; item < to; ++item) {
                u64_t* const words = data.data() + item * item_size;
                std::copy_n(words, item_size, own);
                std::reverse_copy(own, own + item_size, words);
            }
        });
        EXPECT_EQ(data, expected);
    }
}

TEST(RangeFork, FailureOfAnyPartReachesTheCaller) {
    for (u64_t bad_item = 0; bad_item < 9; ++bad_item) {
        testing::console_output([&] {
            try {
                split_range(0, 8, 8, 0, [&](u64_t low, u64_t high, u64_t) {
                    if (low <= bad_item && bad_item < high) zl_BSRModularCheckFailed("item").raise();
                });
                EXPECT_EQ(bad_item, 8u);
            } catch (const zl_BSRModularCheckFailed& failure) {
                EXPECT_LT(bad_item, 8u);
                EXPECT_EQ(failure.text, "item");
            }
        });
    }
}

TEST(ForkDepth, SmallestPowerOfTwoThatCoversTheThreads) {
    EXPECT_EQ(fork_depth(0), 0u);
    EXPECT_EQ(fork_depth(1), 0u);
    for (u64_t threads = 2; threads <= 1024; ++threads) {
        const unsigned depth = fork_depth(threads);
        EXPECT_GE(u64_t{1} << depth, threads);
        EXPECT_LT(u64_t{1} << (depth - 1), threads);
    }
    EXPECT_EQ(fork_depth(max_threads), 8u);
    EXPECT_EQ(fork_depth(~u64_t{0}), 64u);
}

}  // namespace
}  // namespace znp
