#include "foundation/basic_heap.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "console_capture.hpp"
#include "foundation/guarded_alloc.hpp"
#include "foundation/heap_block.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

using testing::check_invariants;
using testing::console_output;
using testing::dying;
using ::testing::ExitedWithCode;
using testing::HeapBlock;
using testing::table_of;
using Table = std::vector<testing::TableEntry>;

std::byte* bytes(void* pointer) {
    return static_cast<std::byte*>(pointer);
}

// ---- Set-up -------------------------------------------------------------------------------------------

TEST(BasicHeap, InitRoundsTheSizeDownAndClearsTheRest) {
    alignas(8) std::byte block[103];
    BasicHeap heap;
    std::memset(static_cast<void*>(&heap), 0xFF, sizeof heap);
    heap_init(heap, block, sizeof block);
    EXPECT_EQ(heap.base, block);
    EXPECT_EQ(heap.end, block + 96);
    EXPECT_EQ(heap.top, block);
    EXPECT_EQ(heap.table_limit, block + 96);
    EXPECT_EQ(heap.parent, nullptr);
    EXPECT_EQ(heap.child_pair, nullptr);
    EXPECT_EQ(heap.active, 0u);
    EXPECT_EQ(heap.peak_active, 0u);
    EXPECT_EQ(heap.peak_top, heap.base);
}

TEST(BasicHeapDeathTest, MisalignedBlock) {
    alignas(8) static std::byte block[64];
    BasicHeap heap;
    EXPECT_EXIT(dying([&] { heap_init(heap, block + 4, 32); }), ExitedWithCode(1), "Alignment Error");
}

TEST(BasicHeap, CreatedFromTheSystemIsZero) {
    BasicHeap heap;
    heap_create(heap, nullptr, 1'000'003);
    EXPECT_EQ(heap.parent, nullptr);
    EXPECT_EQ(heap.end - heap.base, 1'000'008);
    EXPECT_TRUE(std::all_of(heap.base, heap.end, [](std::byte b) { return b == std::byte{0}; }));
    heap_destroy(heap);
}

TEST(BasicHeap, CreatedFromAParentKeepsTheFirstWordForTheOwner) {
    HeapBlock block(1024);
    BasicHeap child;
    heap_create(child, &block.heap, 101);
    EXPECT_EQ(child.parent, &block.heap);
    EXPECT_EQ(child.base, block.at(8));
    EXPECT_EQ(child.end, block.at(104));
    EXPECT_EQ(block_owner(block.at(0)), &block.heap);
    EXPECT_EQ(table_of(block.heap), (Table{{block.at(0), 104}}));
    heap_destroy(child);
    EXPECT_EQ(block.heap.active, 0u);
}

TEST(BasicHeap, EmptyHeapHasNoRoom) {
    HeapBlock block(256);
    BasicHeap child;
    heap_create(child, &block.heap, 0);
    EXPECT_EQ(child.base, child.end);
    EXPECT_EQ(heap_alloc(child, 8), nullptr);
    heap_destroy(child);
}

TEST(BasicHeapDeathTest, CreateFailureFromTheSystem) {
    BasicHeap heap;
    EXPECT_EXIT(
        dying([&] { heap_create(heap, nullptr, u64_t{1} << 60); }), ExitedWithCode(1),
        "Insufficient Memory or address space\\.[^I]*Failed Allocation: [^I]*1,152,921,504,606,846,976");
    EXPECT_EXIT(dying([&] { heap_create(heap, nullptr, ~u64_t{0}); }), ExitedWithCode(1),
                "Failed Allocation: [^I]*18,446,744,073,709,551,615");
}

TEST(BasicHeapDeathTest, CreateFailureFromAParent) {
    HeapBlock block(256);
    BasicHeap child;
    EXPECT_EXIT(dying([&] { heap_create(child, &block.heap, 248); }), ExitedWithCode(1),
                "Insufficient Memory or address space\\.");
}

// ---- Allocation and release ---------------------------------------------------------------------------

TEST(BasicHeap, ExactRemainingRoomNeedsSixteenBytesMore) {
    HeapBlock exact(256);
    EXPECT_EQ(heap_alloc(exact.heap, 240), exact.at(0));
    EXPECT_EQ(exact.room(), 0u);

    HeapBlock one_byte_less(255);
    EXPECT_EQ(heap_alloc(one_byte_less.heap, 240), nullptr);
    EXPECT_EQ(heap_alloc(one_byte_less.heap, 232), one_byte_less.at(0));
}

TEST(BasicHeap, EntriesLieAtTheEndLowestAddressHighest) {
    HeapBlock block(512);
    void* const a = heap_alloc(block.heap, 64);
    void* const b = heap_alloc(block.heap, 32);
    EXPECT_EQ(a, block.at(0));
    EXPECT_EQ(b, block.at(64));
    EXPECT_EQ(table_of(block.heap), (Table{{block.at(0), 64}, {block.at(64), 32}}));
    EXPECT_EQ(block.heap.top, block.at(96));
    EXPECT_EQ(block.heap.table_limit, block.heap.end - 32);
    check_invariants(block.heap);
}

TEST(BasicHeap, GapOfAFreedMiddleBlockIsReusedAheadOfTheEnd) {
    HeapBlock block(512);
    void* const a = heap_alloc(block.heap, 64);
    void* const b = heap_alloc(block.heap, 64);
    void* const c = heap_alloc(block.heap, 64);
    heap_free(b);
    EXPECT_EQ(heap_alloc(block.heap, 72), block.at(192));  // too big for the gap
    EXPECT_EQ(heap_alloc(block.heap, 40), b);
    EXPECT_EQ(heap_alloc(block.heap, 24), bytes(b) + 40);
    EXPECT_EQ(
        table_of(block.heap),
        (Table{{bytes(a), 64}, {bytes(b), 40}, {bytes(b) + 40, 24}, {bytes(c), 64}, {block.at(192), 72}}));
    check_invariants(block.heap);
}

TEST(BasicHeap, GapAtTheBaseIsReused) {
    HeapBlock block(512);
    void* const a = heap_alloc(block.heap, 64);
    void* const b = heap_alloc(block.heap, 64);
    heap_free(a);
    EXPECT_EQ(heap_alloc(block.heap, 64), block.at(0));
    EXPECT_EQ(table_of(block.heap), (Table{{block.at(0), 64}, {bytes(b), 64}}));
}

TEST(BasicHeap, BelowSixteenFreeBytesNoGapIsUsed) {
    HeapBlock block(64 + 64 + 64 + 3 * 16 + 8);
    EXPECT_NE(heap_alloc(block.heap, 64), nullptr);
    void* const middle = heap_alloc(block.heap, 64);
    EXPECT_NE(heap_alloc(block.heap, 64), nullptr);
    heap_free(middle);
    EXPECT_EQ(heap_alloc(block.heap, 8), middle);
    EXPECT_EQ(block.room(), 8u);
    EXPECT_EQ(heap_alloc(block.heap, 8), nullptr);
    EXPECT_EQ(block.heap.active, 3u);
}

TEST(BasicHeap, TopFallsToTheLastBlockAndPeaksStay) {
    HeapBlock block(512);
    void* const a = heap_alloc(block.heap, 64);
    void* const b = heap_alloc(block.heap, 64);
    void* const c = heap_alloc(block.heap, 64);
    heap_free(b);
    EXPECT_EQ(block.heap.top, block.at(192));
    heap_free(c);
    EXPECT_EQ(block.heap.top, block.at(64));
    heap_free(a);
    EXPECT_EQ(block.heap.top, block.heap.base);
    EXPECT_EQ(block.heap.table_limit, block.heap.end);
    EXPECT_EQ(block.heap.peak_top, block.at(192));
    EXPECT_EQ(block.heap.peak_active, 3u);
}

TEST(BasicHeapDeathTest, SecondReleaseOfABlock) {
    HeapBlock block(512);
    void* const a = heap_alloc(block.heap, 64);
    void* const b = heap_alloc(block.heap, 64);
    heap_free(b);
    EXPECT_EXIT(dying([&] { heap_free(b); }), ExitedWithCode(1), "Invalid Function Parameters:   ");
    heap_free(a);
    EXPECT_EXIT(dying([&] { heap_free(a); }), ExitedWithCode(1), "Invalid Function Parameters:   ");
}

// ---- Destruction --------------------------------------------------------------------------------------

TEST(BasicHeap, LeakInARootHeapIsReported) {
    BasicHeap heap;
    heap_create(heap, nullptr, 1024);
    ASSERT_NE(heap_alloc(heap, 64), nullptr);
    EXPECT_EQ(console_output([&] { heap_destroy(heap); }), "Memory leak detected\n");

    heap_create(heap, nullptr, 1024);
    EXPECT_EQ(console_output([&] { heap_destroy(heap); }), "");
}

TEST(BasicHeap, SurvivorsPassToTheParentInPlace) {
    HeapBlock block(4096);
    void* const before = heap_alloc(block.heap, 64);
    BasicHeap child;
    heap_create(child, &block.heap, 1024);
    void* const after = heap_alloc(block.heap, 64);

    auto* const x = static_cast<u64_t*>(guarded_alloc(&child, 40, 8));
    void* const y = guarded_alloc(&child, 40, 8);
    auto* const z = static_cast<u64_t*>(guarded_alloc(&child, 40, 8));
    std::fill_n(x, 5, 17u);
    std::fill_n(z, 5, 18u);
    guarded_free(y);
    const Table survivors = table_of(child);
    heap_destroy(child);

    EXPECT_EQ(table_of(block.heap),
              (Table{{bytes(before), 64}, survivors[0], survivors[1], {bytes(after), 64}}));
    check_invariants(block.heap);
    EXPECT_EQ(std::count(x, x + 5, 17u), 5);
    EXPECT_EQ(std::count(z, z + 5, 18u), 5);
    guarded_free(z);
    guarded_free(x);
    EXPECT_EQ(table_of(block.heap), (Table{{bytes(before), 64}, {bytes(after), 64}}));
}

TEST(BasicHeap, SurvivorsOfTheHighestBlockFitAlwaysEvenInAFullParent) {
    for (u64_t survivors = 0; survivors <= 20; ++survivors) {
        HeapBlock block(1024);
        BasicHeap child;
        heap_create(child, &block.heap, block.room() - 16);
        ASSERT_EQ(block.room(), 0u);
        Table expected;
        for (u64_t i = 0; i < survivors; ++i) {
            // The last one fills the child to the last byte.
            const upL_t size = i + 1 < survivors ? 8 * (i + 1) % 32 + 8
                                                 : static_cast<upL_t>(child.table_limit - child.top) - 16;
            auto* const given = static_cast<std::byte*>(heap_alloc(child, size));
            ASSERT_NE(given, nullptr);
            std::fill(given + 8, given + size, static_cast<std::byte>(i));
            expected.push_back({given, size});
        }
        heap_destroy(child);
        EXPECT_EQ(table_of(block.heap), expected);
        check_invariants(block.heap);
        for (u64_t i = 0; i < survivors; ++i) {
            std::byte* const first = expected[i].address + 8;
            std::byte* const last = expected[i].address + expected[i].size;
            EXPECT_TRUE(
                std::all_of(first, last, [=](std::byte b) { return b == static_cast<std::byte>(i); }));
        }
    }
}

TEST(BasicHeapDeathTest, NoRoomForSurvivorsInTheParentsTable) {
    HeapBlock block(1024);
    BasicHeap child;
    heap_create(child, &block.heap, 512);
    ASSERT_NE(heap_alloc(block.heap, block.room() - 16), nullptr);
    ASSERT_NE(heap_alloc(child, 64), nullptr);
    ASSERT_NE(heap_alloc(child, 64), nullptr);
    EXPECT_EXIT(dying([&] { heap_destroy(child); }), ExitedWithCode(1),
                "Critical Internal Assertion Failure: APIs-448");
}

TEST(BasicHeap, OneSurvivorFitsIntoAParentWithoutRoom) {
    HeapBlock block(1024);
    BasicHeap child;
    heap_create(child, &block.heap, 512);
    ASSERT_NE(heap_alloc(block.heap, block.room() - 16), nullptr);
    ASSERT_EQ(block.room(), 0u);
    void* const survivor = heap_alloc(child, 64);
    heap_destroy(child);
    EXPECT_EQ(block.heap.active, 2u);
    check_invariants(block.heap);
    heap_free(survivor);
    EXPECT_EQ(block.heap.active, 1u);
}

// ---- Shift --------------------------------------------------------------------------------------------

TEST(BasicHeap, ShiftMovesContentsIntoTheGap) {
    HeapBlock block(4096);
    void* const first = guarded_alloc(&block.heap, 100, 32);
    auto* const moved = static_cast<u64_t*>(guarded_alloc(&block.heap, 400, 32));
    std::generate_n(moved, 50, [n = u64_t{0}]() mutable { return n++; });
    const upL_t gap = static_cast<upL_t>(guarded_back_pointer(moved) - block.heap.base);
    guarded_free(first);

    auto* const shifted = static_cast<u64_t*>(heap_shift_down(moved, 32));
    EXPECT_EQ(bytes(moved) - bytes(shifted), static_cast<std::ptrdiff_t>(gap / 32 * 32));
    EXPECT_EQ(address_of(shifted) % 32, 0u);
    for (u64_t i = 0; i < 50; ++i) EXPECT_EQ(shifted[i], i);
    check_invariants(block.heap);
    EXPECT_EQ(table_of(block.heap)[0].address, guarded_back_pointer(shifted));
    guarded_free(shifted);
    EXPECT_EQ(block.heap.active, 0u);
}

TEST(BasicHeap, ShiftWithoutAGapOrOutsideAHeapDoesNothing) {
    HeapBlock block(1024);
    void* const a = guarded_alloc(&block.heap, 64, 32);
    void* const b = guarded_alloc(&block.heap, 64, 32);
    EXPECT_EQ(heap_shift_down(a, 32), a);
    EXPECT_EQ(heap_shift_down(b, 32), b);
    void* const outside = guarded_alloc(nullptr, 64, 32);
    EXPECT_EQ(heap_shift_down(outside, 32), outside);
    guarded_free(outside);

    // A gap below the alignment: the block stays.
    void* const c = guarded_alloc(&block.heap, 8, 8);
    void* const d = guarded_alloc(&block.heap, 64, 32);
    guarded_free(c);
    EXPECT_EQ(heap_shift_down(d, 64), d);
}

TEST(BasicHeapDeathTest, ShiftInAHeapWithAPair) {
    HeapBlock block(4096);
    void* const a = guarded_alloc(&block.heap, 64, 32);
    heap_split(block.heap, 1);
    EXPECT_EXIT(dying([&] { static_cast<void>(heap_shift_down(a, 32)); }), ExitedWithCode(1),
                "Invalid Function Parameters:   ");
    heap_join(block.heap);
}

// ---- Pair ---------------------------------------------------------------------------------------------

TEST(BasicHeap, SplitGivesEqualHalvesAndJoinRestores) {
    for (const upL_t size : {2048u, 2056u, 2064u, 2072u, 4096u}) {
        HeapBlock block(size);
        void* const a = guarded_alloc(&block.heap, 64, 32);
        std::byte* const top = block.heap.top;
        // The record of the pair: two heaps of 80 bytes, 48 bytes around them, 16 for the entry.
        const upL_t room = block.room() - (160 + 48) - 16;
        heap_split(block.heap, 3);
        const BasicHeap* const pair = block.heap.child_pair;
        ASSERT_NE(pair, nullptr);
        EXPECT_EQ(block.heap.child_mark, top + 208);
        const upL_t half = (room - 32 * 3 - 32) / 2 / 8 * 8;
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(pair[i].parent, &block.heap);
            EXPECT_EQ(static_cast<upL_t>(pair[i].end - pair[i].base), half - 8);
        }
        EXPECT_EQ(pair[1].base - pair[0].base, static_cast<std::ptrdiff_t>(half));
        EXPECT_GE(block.room(), 32u * 3);
        EXPECT_LT(block.room(), 32u * 3 + 16);
        heap_join(block.heap);
        EXPECT_EQ(block.heap.child_pair, nullptr);
        EXPECT_EQ(block.heap.top, top);
        EXPECT_EQ(block.heap.active, 1u);
        check_invariants(block.heap);
        guarded_free(a);
    }
}

TEST(BasicHeap, JoinCountsThePairAsTwiceTheLargerUse) {
    HeapBlock block(8192);
    heap_split(block.heap, 0);
    std::byte* const mark = block.heap.child_mark;
    BasicHeap* const pair = block.heap.child_pair;
    void* const small = heap_alloc(pair[0], 400);
    void* const large = heap_alloc(pair[1], 1000);
    heap_free(small);
    heap_free(large);
    heap_join(block.heap);
    EXPECT_EQ(block.heap.peak_top, mark + 2000);

    void* const own = heap_alloc(block.heap, 7000);
    heap_free(own);
    heap_split(block.heap, 0);
    heap_join(block.heap);
    EXPECT_EQ(block.heap.peak_top, block.at(7000));
}

TEST(BasicHeap, SurvivorsOfBothHalvesPassOn) {
    HeapBlock block(8192);
    heap_split(block.heap, 2);
    BasicHeap* const pair = block.heap.child_pair;
    std::vector<u64_t*> survivors;
    for (u64_t i = 0; i < 4; ++i) {
        survivors.push_back(static_cast<u64_t*>(guarded_alloc(&pair[i % 2], 80, 32)));
        std::fill_n(survivors.back(), 10, i);
    }
    heap_join(block.heap);
    EXPECT_EQ(block.heap.active, 4u);
    check_invariants(block.heap);
    for (u64_t i = 0; i < 4; ++i) {
        EXPECT_EQ(std::count(survivors[i], survivors[i] + 10, i), 10);
        guarded_free(survivors[i]);
    }
    EXPECT_EQ(block.heap.active, 0u);
}

TEST(BasicHeap, PairsNest) {
    HeapBlock block(8192);
    heap_split(block.heap, 1);
    heap_split(block.heap.child_pair[0], 1);
    void* const deep = guarded_alloc(&block.heap.child_pair[0].child_pair[1], 80, 32);
    heap_join(block.heap.child_pair[0]);
    heap_join(block.heap);
    EXPECT_EQ(block.heap.active, 1u);
    guarded_free(deep);
    check_invariants(block.heap);
}

TEST(BasicHeapDeathTest, SplitWithTooManyTableEntries) {
    // After the record of the pair 1024 - 224 = 800 bytes are left: 24 entries pass the test.
    HeapBlock fits(1024);
    heap_split(fits.heap, 23);
    heap_join(fits.heap);
    HeapBlock block(1024);
    EXPECT_EXIT(dying([&] { heap_split(block.heap, 25); }), ExitedWithCode(1),
                "Memory Allocation Failure\\.");
    EXPECT_EXIT(dying([&] { heap_split(block.heap, ~u64_t{0}); }), ExitedWithCode(1),
                "Memory Allocation Failure\\.");
    HeapBlock tiny(224);
    EXPECT_EXIT(dying([&] { heap_split(tiny.heap, 0); }), ExitedWithCode(1), "Memory Allocation Failure\\.");
}

TEST(BasicHeapDeathTest, SecondSplit) {
    HeapBlock block(4096);
    heap_split(block.heap, 0);
    EXPECT_EXIT(dying([&] { heap_split(block.heap, 0); }), ExitedWithCode(1),
                "Invalid Function Parameters:   ");
    heap_join(block.heap);
}

// ---- Dump ---------------------------------------------------------------------------------------------

std::string address_text(const void* address) {
    return format_printf(32, "0x%016llx", static_cast<unsigned long long>(address_of(address)));
}

TEST(BasicHeap, DumpOfAnEmptyHeap) {
    HeapBlock block(2048);
    EXPECT_EQ(console_output([&] { heap_dump(block.heap); }),
              "Heap Table Dump:\n"
              "Parent              : 0x0000000000000000\n"
              "Total Size          : 2,048\n"
              "Active Allocations  : 0\n"
              "Peak Allocations    : 0\n"
              "Current Usage       : 0\n"
              "Peak Heap Usage     : 0\n"
              "Start : " +
                  address_text(block.heap.base) + "\nEnd   : " + address_text(block.heap.end) +
                  "\n"
                  "No Active Allocations\n"
                  "Table Limit         : " +
                  address_text(block.heap.end) + "\nFragmentation       : 0\n");
}

TEST(BasicHeap, DumpShowsBlocksAndGapsInAddressOrder) {
    HeapBlock block(4096);
    void* const a = heap_alloc(block.heap, 64);
    void* const b = heap_alloc(block.heap, 1000);
    void* const c = heap_alloc(block.heap, 72);
    void* const d = heap_alloc(block.heap, 24);
    heap_free(a);
    heap_free(c);
    EXPECT_EQ(console_output([&] { heap_dump(block.heap); }),
              "Heap Table Dump:\n"
              "Parent              : 0x0000000000000000\n"
              "Total Size          : 4,096\n"
              "Active Allocations  : 2\n"
              "Peak Allocations    : 4\n"
              "Current Usage       : 1,160\n"
              "Peak Heap Usage     : 1,160\n"
              "Start : " +
                  address_text(block.heap.base) + "\nEnd   : " + address_text(block.heap.end) +
                  "\n"
                  "Free Space: 64\n"
                  "Base: " +
                  address_text(b) +
                  "   Size: 1,000\n"
                  "Free Space: 72\n"
                  "Base: " +
                  address_text(d) +
                  "   Size: 24\n"
                  "Table Limit         : " +
                  address_text(block.heap.table_limit) + "\nFragmentation       : 136\n");
}

}  // namespace
}  // namespace znp
