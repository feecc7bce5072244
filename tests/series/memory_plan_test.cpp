// The formulas of the memory plan, and what they must leave to each level.
#include "series/memory_plan.hpp"

#include <gtest/gtest.h>

#include "multiply/dispatch.hpp"
#include "series/recursion.hpp"

namespace znp {
namespace {

constexpr upL_t lengths[] = {0, 1, 2, 17, 100, 1000, 4999, 10000, 12345, 60000, 500000};
constexpr upL_t overheads[] = {6, 19, 60};

// w, w/2 + c, ... with the given number of halvings.
upL_t sum_of_halvings(upL_t w, upL_t c, int halvings) {
    upL_t sum = w;
    for (int i = 0; i < halvings; i++) {
        w = w / 2 + c;
        sum += w;
    }
    return sum;
}

upL_t bytes(upL_t words, u64_t threads) {
    return work_bytes_for<cdi>(words, threads);
}

TEST(MemoryPlan, SerialIsTheSumOf65Halves) {
    for (const upL_t L : lengths) {
        for (const upL_t c : overheads) {
            const MemoryPlan plan = serial_memory_plan(L, c);
            EXPECT_EQ(plan.words, sum_of_halvings(L / 2 + c, c, 64));
            EXPECT_EQ(plan.bytes, bytes(2 * (L / 2 + c), 1));
        }
    }
}

TEST(MemoryPlan, OneTaskIsSerial) {
    for (const upL_t L : lengths) {
        for (const u64_t threads : {1u, 2u, 16u}) {
            const MemoryPlan plan = parallel_memory_plan(L, 19, 1, threads);
            EXPECT_EQ(plan.words, serial_memory_plan(L, 19).words);
            EXPECT_EQ(plan.bytes, bytes(2 * (L / 2 + 19), 1));
        }
        EXPECT_EQ(level_memory_plan(L, 19, 3, 1).words, serial_memory_plan(L, 19).words);
    }
}

TEST(MemoryPlan, TasksHalveUntilEachIsAlone) {
    const upL_t c = 19;
    for (const upL_t L : lengths) {
        const upL_t w0 = L / 2 + c, w1 = w0 / 2 + c, w2 = w1 / 2 + c;
        for (const u64_t tasks : {3u, 4u}) {
            const MemoryPlan plan = parallel_memory_plan(L, c, tasks, 2);
            EXPECT_EQ(plan.words, sum_of_halvings(w2, c, 64) << 2);
            // Of three tasks one half has one thread and the other two; of four, both two.
            const upL_t level_1 =
                tasks == 3 ? std::max(bytes(2 * w1, 1), bytes(2 * w1, 2)) : bytes(2 * w1, 2);
            EXPECT_EQ(plan.bytes,
                      std::max({bytes(2 * w0, 2), (level_1 + 32) << 1, (bytes(2 * w2, 1) + 32) << 2}));
        }
        EXPECT_EQ(parallel_memory_plan(L, c, 5, 5).words >> 3, sum_of_halvings(w2 / 2 + c, c, 64));
        EXPECT_EQ(parallel_memory_plan(L, c, 64, 32, 1).words, sum_of_halvings(w1, c, 64) << 1);
    }
}

TEST(MemoryPlan, LevelsStandAboveTwiceTheThreads) {
    const upL_t c = 6;
    for (const upL_t L : lengths) {
        const upL_t w0 = L / 2 + c, w1 = w0 / 2 + c;
        const MemoryPlan below_one = parallel_memory_plan(w0, c, 6, 3);
        const MemoryPlan one = level_memory_plan(L, c, 1, 3);
        EXPECT_EQ(one.words, w0 + below_one.words);
        EXPECT_EQ(one.bytes, std::max(bytes(2 * w0, 3), below_one.bytes));
        const MemoryPlan below_two = parallel_memory_plan(w1, c, 6, 3);
        EXPECT_EQ(level_memory_plan(L, c, 2, 3).words, w0 + w1 + below_two.words);
        const MemoryPlan none = level_memory_plan(L, c, 0, 3);
        EXPECT_EQ(none.words, parallel_memory_plan(L, c, 3, 3).words);
        EXPECT_EQ(none.bytes, parallel_memory_plan(L, c, 3, 3).bytes);
    }
}

// The buffers of a node that forks are halved with their alignment kept: after all forks each part still has
// what its level was counted with.
TEST(MemoryPlan, HalvesOfTheBuffersKeepWhatEachLevelNeeds) {
    for (const upL_t L : lengths) {
        for (const u64_t tasks : {2u, 3u, 4u, 7u, 14u, 32u}) {
            const MemoryPlan plan = parallel_memory_plan(L, 19, tasks, tasks);
            upL_t words = plan.words;
            upL_t work = plan.bytes;
            upL_t w = L / 2 + 19;
            EXPECT_GE(work, bytes(2 * w, 1));
            for (u64_t left = tasks; left > 1; left = (left + 1) >> 1) {
                EXPECT_EQ(half_words(words) % 4, 0u);
                EXPECT_EQ(half_bytes(work) % 32, 0u);
                words = half_words(words);
                work = half_bytes(work);
                w = w / 2 + 19;
                EXPECT_GE(work, bytes(2 * w, left / 2 > 0 ? left / 2 : 1));
                EXPECT_GE(work, bytes(2 * w, (left + 1) / 2));
            }
            EXPECT_GE(words + 4, sum_of_halvings(w, 19, 64));
        }
    }
}

}  // namespace
}  // namespace znp
