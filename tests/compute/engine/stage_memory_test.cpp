#include "compute/engine/stage_memory.hpp"

#include <gtest/gtest.h>

#include "compute/engine/stage_lines.hpp"
#include "console_capture.hpp"
#include "foundation/heap_block.hpp"

namespace znp {
namespace {

constexpr upL_t number_bytes(upL_t words) {
    return heap_bytes(8 * words) + heap_shift_rest();
}

TEST(StageMemory, ACountKnowsWhatIsAliveTogether) {
    const RunSettings settings;
    StageMemory memory(settings, 0);
    HeapFloat first = memory.number(10);
    {
        const auto words = memory.array<cdi>(20);
        EXPECT_EQ(words.size, 20u);
        EXPECT_EQ(words.get(), nullptr);
        const auto work = memory.work(1000);
        EXPECT_EQ(memory.peak_bytes(), number_bytes(10) + heap_bytes(160) + heap_bytes(1000));
    }
    HeapFloat second = memory.number(100);
    EXPECT_EQ(memory.peak_bytes(), number_bytes(10) + heap_bytes(160) + heap_bytes(1000));
    first = std::move(second);  // 100 words alone
    HeapFloat third = memory.number(1000);
    EXPECT_EQ(memory.peak_bytes(), number_bytes(100) + number_bytes(1000));
    first.free();
    third.settle();
    const auto more = memory.work(2000);
    EXPECT_EQ(memory.peak_bytes(), number_bytes(1000) + heap_bytes(2000));
}

TEST(StageMemory, TheMarginIsForBuffers) {
    RunSettings settings;
    settings.p = 50;
    EXPECT_EQ(StageMemory(settings, 0).room(50), 50u);
    EXPECT_EQ(StageMemory(settings, 100).room(50), 150u);
    EXPECT_EQ(StageMemory(settings, 100).settings().p, 50u);
    RunTimeParameters run(settings);
    EXPECT_EQ(StageMemory(run).room(50), 50u);
}

TEST(StageMemory, ACountCarriesNothingOutAndShowsNothing) {
    const RunSettings settings;
    const std::string printed = testing::console_output([&] {
        StageMemory memory(settings, 0);
        memory.carry_out([](RunTimeParameters&) { ADD_FAILURE(); });
        StageLines lines(memory, "Title...  ", "Event");
        lines.print_terms(1234);
        lines.start("Label: ");
        lines.finish();
    });
    EXPECT_EQ(printed, "");
}

TEST(StageMemory, ARunTakesWhatTheCountSays) {
    const auto stages = [](StageMemory& memory) {
        HeapFloat result;
        {
            const auto below = memory.array<cdi>(7);
            result = memory.number(11);
            memory.carry_out([&](RunTimeParameters& run) {
                EXPECT_EQ(run.heap.active, 2u);
                result.set_u64(12345);
            });
        }
        result.settle();
        const auto work = memory.work(300);
        memory.carry_out([&](RunTimeParameters&) {
            EXPECT_NE(work.get(), nullptr);
            EXPECT_EQ(result.get_size(), 11u);
            EXPECT_EQ(result.word_at(0), 12345u);
        });
    };
    RunTimeParameters run{RunSettings()};
    const upL_t bytes = count_bytes(run.settings, 0, stages);
    testing::HeapBlock block(bytes);
    run.heap = block.heap;
    StageMemory memory(run);
    stages(memory);
    EXPECT_EQ(run.heap.active, 0u);
    const upL_t peak = static_cast<upL_t>(run.heap.peak_top - run.heap.base) + 2 * heap_entry_bytes;
    EXPECT_LE(peak, bytes);
    EXPECT_GE(peak + heap_shift_rest(), bytes);
}

TEST(HeapFloat, MovingLeavesZeroBehind) {
    RunTimeParameters run{RunSettings()};
    testing::HeapBlock block(1000);
    run.heap = block.heap;
    StageMemory memory(run);
    HeapFloat a = memory.number(4);
    a.set_u64(7);
    const HeapFloat b = std::move(a);
    EXPECT_TRUE(a.is_zero());
    EXPECT_EQ(a.get_size(), 0u);
    EXPECT_EQ(b.word_at(0), 7u);
    EXPECT_EQ(run.heap.active, 1u);
}

TEST(HeapFloat, SettlingKeepsTheValueAndItsPlaceInTheBuffer) {
    RunTimeParameters run{RunSettings()};
    testing::HeapBlock block(2000);
    run.heap = block.heap;
    StageMemory memory(run);
    auto below = memory.array<cdi>(20);
    HeapFloat number = memory.number(8);
    for (upL_t i = 0; i < 8; i++) number.get_base()[i] = i + 1;
    number.set_view(BigFloat(number.get_base() + 2, 5, -3, false));
    const cdi* const before = number.get_base();
    below.memory.reset();
    number.settle();
    EXPECT_LT(number.get_base(), before);
    EXPECT_EQ(number.get_T(), number.get_base() + 2);
    EXPECT_EQ(number.get_L(), 5u);
    EXPECT_EQ(number.get_exp(), -3);
    EXPECT_FALSE(number.raw_sign());
    for (upL_t i = 0; i < 5; i++) EXPECT_EQ(number.get_T()[i], i + 3);
    EXPECT_EQ(number.hash_error(), 0u);
    HeapFloat().settle();
}

}  // namespace
}  // namespace znp
