// The formulas of the memory plan, and what they must leave to each level.
#include "series/memory_plan.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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
            // Of three tasks one half has one thread and the other two; of four, both two. Each level also
            // counts with the threads of the one above.
            const upL_t level_1 =
                tasks == 3 ? std::max(bytes(2 * w1, 1), bytes(2 * w1, 2)) : bytes(2 * w1, 2);
            const upL_t level_2 = std::max(bytes(2 * w2, 1), bytes(2 * w2, 2));
            EXPECT_EQ(plan.bytes, std::max({bytes(2 * w0, 2), (level_1 + 32) << 1, (level_2 + 32) << 2}));
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

// The plan's plain formula: a level counts with the threads of the one above. What its own nodes need is in
// the test below; the plan is never less than either.
MemoryPlan plain_parallel(upL_t L, upL_t c, u64_t tasks, u64_t threads) {
    const u64_t t = std::min(tasks, threads);
    upL_t w = L / 2 + c;
    upL_t buffer = bytes(2 * w, t);
    unsigned v = 0;
    while (tasks > 1) {
        v++;
        w = w / 2 + c;
        buffer = std::max(buffer, (bytes(2 * w, std::min(t, tasks)) + 32) << v);
        tasks = (tasks + 1) >> 1;
    }
    return {sum_of_halvings(w, c, 64) << v, buffer};
}

MemoryPlan plain_level(upL_t L, upL_t c, u64_t level, u64_t threads) {
    if (level == 0 || threads < 2) return plain_parallel(L, c, threads, threads);
    const u64_t tasks = 2 * threads;
    upL_t w = L / 2 + c;
    const upL_t buffer = bytes(2 * w, std::min(tasks, threads));
    upL_t words = w;
    for (u64_t i = 1; i < level; i++) {
        w = w / 2 + c;
        words += w;
    }
    const MemoryPlan rest = plain_parallel(w, c, tasks, threads);
    return {words + rest.words, std::max(buffer, rest.bytes)};
}

TEST(MemoryPlan, IsNeverBelowThePlainFormula) {
    std::vector<upL_t> grid(std::begin(lengths), std::end(lengths));
    for (double L = 64; L < 4e7; L *= 1.31) grid.push_back(static_cast<upL_t>(L));
    for (const upL_t L : grid) {
        for (const upL_t c : {6u, 11u, 19u, 37u, 60u}) {
            for (const u64_t threads : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 12u, 16u, 31u, 64u, 256u}) {
                SCOPED_TRACE(std::to_string(L) + " words, overhead " + std::to_string(c) + ", " +
                             std::to_string(threads) + " threads");
                for (const u64_t tasks : {threads, 2 * threads}) {
                    const MemoryPlan plan = parallel_memory_plan(L, c, tasks, threads);
                    const MemoryPlan plain = plain_parallel(L, c, tasks, threads);
                    EXPECT_EQ(plan.words, plain.words);
                    EXPECT_GE(plan.bytes, plain.bytes);
                }
                for (const u64_t level : {0u, 1u, 3u}) {
                    const MemoryPlan plan = level_memory_plan(L, c, level, threads);
                    const MemoryPlan plain = plain_level(L, c, level, threads);
                    EXPECT_EQ(plan.words, plain.words);
                    EXPECT_GE(plan.bytes, plain.bytes);
                }
            }
        }
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
                EXPECT_EQ(half_buffer_words(words) % 4, 0u);
                EXPECT_EQ(half_buffer_bytes(work) % 32, 0u);
                words = half_buffer_words(words);
                work = half_buffer_bytes(work);
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
