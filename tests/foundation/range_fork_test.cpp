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

// One call of RecordingPass::run.
struct Leaf {
    u64_t low;
    u64_t high;
    u32_t* scratch;
    std::thread::id runner;
};

// Notes who did what. Scratch as in a reduction pass: two items and two words for each run.
class RecordingPass {
  public:
    using Scratch = u32_t;

    explicit RecordingPass(u64_t item_size) : item_size_(item_size) {}

    bool worth_forking(u64_t items) const { return range_pass_forks(items, item_size_); }
    upL_t scratch_size(unsigned depth) const { return (item_size_ * 2 + 2) << depth; }
    void run(u64_t low, u64_t high, u32_t* scratch) const {
        const std::lock_guard lock(mutex_);
        leaves_.push_back({low, high, scratch, std::this_thread::get_id()});
    }

    // In the order of the ranges.
    std::vector<Leaf> leaves() const {
        std::vector<Leaf> sorted = leaves_;
        std::sort(sorted.begin(), sorted.end(), [](const Leaf& a, const Leaf& b) { return a.low < b.low; });
        return sorted;
    }

  private:
    u64_t item_size_;
    mutable std::mutex mutex_;
    mutable std::vector<Leaf> leaves_;
};

std::vector<Leaf> fork_and_record(u64_t item_size, u64_t low, u64_t high, unsigned depth,
                                  u32_t* scratch = nullptr) {
    const RecordingPass pass(item_size);
    range_fork(pass, low, high, depth, scratch);
    return pass.leaves();
}

TEST(RangeFork, DepthZeroNeverCreatesAThread) {
    for (const u64_t items : {0u, 1u, 2u, 3u, 1000u, 1'000'000'000u}) {
        ThreadCounter counter;
        const std::vector<Leaf> leaves = fork_and_record(1'000'000, 0, items, 0);
        EXPECT_EQ(counter.created(), 0);
        ASSERT_EQ(leaves.size(), 1u);
        EXPECT_EQ(leaves[0].high, items);
        EXPECT_EQ(leaves[0].runner, std::this_thread::get_id());
    }
}

TEST(RangeFork, TwoItemsWithDepthOneCreateExactlyOneThread) {
    ThreadCounter counter;
    const std::vector<Leaf> leaves = fork_and_record(25'000, 0, 2, 1);
    EXPECT_EQ(counter.created(), 1);
    ASSERT_EQ(leaves.size(), 2u);
    EXPECT_NE(leaves[0].runner, std::this_thread::get_id());
    EXPECT_EQ(leaves[1].runner, std::this_thread::get_id());
}

TEST(RangeFork, AtTheThresholdNothingForks) {
    ThreadCounter counter;
    EXPECT_EQ(fork_and_record(1, 0, 49'999, 4).size(), 1u);
    EXPECT_EQ(fork_and_record(24'999, 0, 2, 4).size(), 1u);
    EXPECT_EQ(counter.created(), 0);
    EXPECT_EQ(fork_and_record(1, 0, 50'000, 4).size(), 2u);
    EXPECT_EQ(counter.created(), 1);
}

TEST(RangeFork, OddItemGoesToTheSecondChild) {
    for (const u64_t low : {0u, 1u, 10u, 11u}) {
        const std::vector<Leaf> leaves = fork_and_record(100'000, low, low + 5, 1);
        ASSERT_EQ(leaves.size(), 2u);
        EXPECT_EQ(leaves[0].low, low);
        EXPECT_EQ(leaves[0].high, low + 2);
        EXPECT_EQ(leaves[0].high, (low + low + 5) / 2);
        EXPECT_EQ(leaves[1].low, low + 2);
        EXPECT_EQ(leaves[1].high, low + 5);
        EXPECT_NE(leaves[0].runner, std::this_thread::get_id());
        EXPECT_EQ(leaves[1].runner, std::this_thread::get_id());
    }
}

TEST(RangeFork, DepthGivesTwoToTheDepthThreads) {
    for (unsigned depth = 0; depth <= 5; ++depth) {
        ThreadCounter counter;
        const std::vector<Leaf> leaves = fork_and_record(1'000'000, 0, 100, depth);
        EXPECT_EQ(leaves.size(), u64_t{1} << depth);
        EXPECT_EQ(counter.created(), (1 << depth) - 1);
    }
}

TEST(RangeFork, SingleItemsEndTheRecursion) {
    ThreadCounter counter;
    EXPECT_EQ(fork_and_record(1'000'000, 0, 3, 8).size(), 3u);
    EXPECT_EQ(counter.created(), 2);
    EXPECT_EQ(fork_and_record(1'000'000, 4, 5, 8).size(), 1u);
    EXPECT_EQ(fork_and_record(1'000'000, 4, 4, 8).size(), 1u);
    EXPECT_EQ(counter.created(), 2);
}

TEST(RangeFork, SlicesFollowOneAnother) {
    const u64_t item_size = 100'000;
    const upL_t slice = item_size * 2 + 2;
    std::vector<u32_t> scratch(slice << 3);
    const std::vector<Leaf> leaves = fork_and_record(item_size, 0, 8, 3, scratch.data());
    ASSERT_EQ(leaves.size(), 8u);
    for (u64_t i = 0; i < 8; ++i) EXPECT_EQ(leaves[i].scratch, scratch.data() + slice * i);
}

TEST(RangeFork, SliceOfAnEarlyLeafIsThatOfItsSubtree) {
    // Three items at depth 2: the first child is one item and keeps the slice of a subtree of depth 1.
    const u64_t item_size = 100'000;
    const upL_t slice = item_size * 2 + 2;
    std::vector<u32_t> scratch(slice << 2);
    const std::vector<Leaf> leaves = fork_and_record(item_size, 0, 3, 2, scratch.data());
    ASSERT_EQ(leaves.size(), 3u);
    EXPECT_EQ(leaves[0].scratch, scratch.data());
    EXPECT_EQ(leaves[1].scratch, scratch.data() + 2 * slice);
    EXPECT_EQ(leaves[2].scratch, scratch.data() + 3 * slice);
}

// Uses its slice for real: items are copied into it and back in reverse, so that a slice shared by two
// threads, or a range done twice or not at all, gives a wrong result (or a race).
class ReversingPass {
  public:
    using Scratch = u64_t;

    ReversingPass(u64_t* data, upL_t item_size, u64_t least_items)
        : data_(data), item_size_(item_size), least_items_(least_items) {}

    bool worth_forking(u64_t items) const { return items >= least_items_; }
    upL_t scratch_size(unsigned depth) const { return item_size_ << depth; }
    void run(u64_t low, u64_t high, u64_t* scratch) const {
        for (u64_t item = low; item < high; ++item) {
            u64_t* const words = data_ + item * item_size_;
            std::copy_n(words, item_size_, scratch);
            std::reverse_copy(scratch, scratch + item_size_, words);
        }
    }

  private:
    u64_t* data_;
    upL_t item_size_;
    u64_t least_items_;
};

TEST(RangeFork, RandomRangesAgreeWithOneThread) {
    std::mt19937_64 rng = testing::make_rng(8301);
    for (int round = 0; round < 60; ++round) {
        const upL_t item_size = 1 + rng() % 40;
        const u64_t items = rng() % 70;
        const u64_t low = rng() % (items + 1);
        const auto depth = static_cast<unsigned>(rng() % 5);
        std::vector<u64_t> data(items * item_size);
        std::generate(data.begin(), data.end(), std::ref(rng));
        std::vector<u64_t> expected = data;
        for (u64_t item = low; item < items; ++item) {
            const auto start = expected.begin() + static_cast<std::ptrdiff_t>(item * item_size);
            std::reverse(start, start + static_cast<std::ptrdiff_t>(item_size));
        }

        const ReversingPass pass(data.data(), item_size, 2 + rng() % 10);
        const upL_t needed = pass.scratch_size(depth);
        std::vector<u64_t> scratch(needed + 8, 0x5A5A5A5A5A5A5A5A);
        range_fork(pass, low, items, depth, scratch.data());
        EXPECT_EQ(data, expected);
        EXPECT_EQ(std::count(scratch.begin() + static_cast<std::ptrdiff_t>(needed), scratch.end(),
                             0x5A5A5A5A5A5A5A5A),
                  8);
    }
}

// Fails in one item.
struct FailingPass {
    using Scratch = u64_t;
    u64_t bad_item;
    bool worth_forking(u64_t) const { return true; }
    upL_t scratch_size(unsigned) const { return 0; }
    void run(u64_t low, u64_t high, u64_t*) const {
        if (low <= bad_item && bad_item < high)
            throw zn_exception(33, nullptr, {}, {}, action::throw_silently);
    }
};

TEST(RangeFork, FailureOfAnyPartReachesTheCaller) {
    for (u64_t bad_item = 0; bad_item < 9; ++bad_item) {
        testing::console_output([&] {
            try {
                range_fork(FailingPass{bad_item}, 0, 8, 3, nullptr);
                EXPECT_EQ(bad_item, 8u);
            } catch (const zn_exception& exception) {
                EXPECT_LT(bad_item, 8u);
                EXPECT_EQ(exception.code, 33);
            }
        });
    }
}

// ---- Depths and thresholds ----------------------------------------------------------------------------

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

TEST(ForkThresholds, RangePasses) {
    EXPECT_FALSE(range_pass_forks(0, 100));
    EXPECT_FALSE(range_pass_forks(49'999, 1));
    EXPECT_TRUE(range_pass_forks(50'000, 1));
    EXPECT_TRUE(range_pass_forks(2, 25'000));
    EXPECT_FALSE(range_pass_forks(2, 24'999));
}

TEST(ForkThresholds, TransformPasses) {
    EXPECT_FALSE(transform_pass_forks(1'000'000, 4));
    EXPECT_TRUE(transform_pass_forks(1'000'000, 5));
    // (length << 5) * 5 around 250,000
    EXPECT_FALSE(transform_pass_forks(1562, 5));
    EXPECT_TRUE(transform_pass_forks(1563, 5));
    // (length << 8) * 8, the same
    EXPECT_FALSE(transform_pass_forks(122, 8));
    EXPECT_TRUE(transform_pass_forks(123, 8));
}

TEST(ForkThresholds, Butterflies) {
    EXPECT_FALSE(butterfly_forks(1'000'000, 1, 1));
    EXPECT_FALSE(butterfly_forks(9'999, 1, 2));
    EXPECT_TRUE(butterfly_forks(10'000, 1, 2));
    EXPECT_TRUE(butterfly_forks(100, 100, 2));
}

}  // namespace
}  // namespace znp
