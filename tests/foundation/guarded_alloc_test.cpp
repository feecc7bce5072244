#include "foundation/guarded_alloc.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "console_capture.hpp"
#include "foundation/basic_heap.hpp"
#include "foundation/heap_block.hpp"
#include "foundation/heap_words.hpp"

// Sizes that no machine has are part of these tests: the allocators of the sanitizers are to answer them with
// null, as the system's does.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
extern "C" const char* __tsan_default_options() {
    return "allocator_may_return_null=1";
}

namespace znp {
namespace {

using testing::dying;
using ::testing::ExitedWithCode;
using testing::HeapBlock;

u64_t word_at(const void* payload, std::ptrdiff_t offset) {
    u64_t word;
    std::memcpy(&word, static_cast<const std::byte*>(payload) + offset, sizeof word);
    return word;
}

// Every alignment, every residue of the size and of the raw address.
TEST(GuardedAlloc, LayoutLiesInsideTheRawBlock) {
    for (upL_t alignment = 1; alignment <= 4096; alignment *= 2) {
        const upL_t effective = alignment < 8 ? 8 : alignment;
        for (upL_t size = 0; size <= 40; ++size) {
            for (upL_t start = 0; start < 16; ++start) {
                HeapBlock block(3 * 4096);
                if (start != 0) static_cast<void>(heap_alloc(block.heap, 8 * start));
                std::byte* const raw = block.heap.top;
                auto* const payload = static_cast<std::byte*>(guarded_alloc(&block.heap, size, alignment));
                const upL_t rounded = (size + 7) / 8 * 8;
                const u64_t raw_bytes = testing::table_of(block.heap).back().size;

                ASSERT_EQ(raw_bytes, rounded + effective + 40);
                ASSERT_EQ(address_of(payload), effective + ((address_of(raw) + 32) & -effective));
                ASSERT_EQ(address_of(payload) % effective, 0u);
                ASSERT_GE(payload - 24, raw + 8);
                ASSERT_LE(payload + rounded + 8, raw + raw_bytes);
                ASSERT_EQ(word_at(raw, 0), address_of(&block.heap));
                ASSERT_EQ(word_at(payload, -24), address_of(raw));
                ASSERT_EQ(word_at(payload, -16), rounded);
                ASSERT_EQ(word_at(payload, -8), guard_word);
                ASSERT_EQ(word_at(payload, static_cast<std::ptrdiff_t>(rounded)), guard_word);
                std::memset(payload, 0xFF, rounded);
                guarded_free(payload);
            }
        }
    }
}

TEST(GuardedAlloc, GeneralAllocatorHasANullOwner) {
    for (upL_t alignment = 8; alignment <= 4096; alignment *= 2) {
        auto* const payload = static_cast<std::byte*>(guarded_alloc(nullptr, 100, alignment));
        EXPECT_EQ(address_of(payload) % alignment, 0u);
        EXPECT_EQ(block_owner(guarded_back_pointer(payload)), nullptr);
        std::memset(payload, 0xFF, 104);
        guarded_free(payload);
    }
}

TEST(GuardedAlloc, MarkerAndNullMayBeReleased) {
    HeapBlock block(256);
    void* const marker = guarded_alloc_or_marker(&block.heap, 0, 32);
    EXPECT_EQ(address_of(marker), ~std::uintptr_t{0});
    EXPECT_EQ(block.heap.active, 0u);
    guarded_free(marker);
    guarded_free(nullptr);
    void* const real = guarded_alloc_or_marker(&block.heap, 8, 32);
    EXPECT_EQ(block.heap.active, 1u);
    guarded_free(real);
    EXPECT_EQ(block.heap.active, 0u);
}

TEST(GuardedAlloc, OwnerReleasesAtTheEndOfTheScope) {
    HeapBlock block(512);
    {
        GuardedArray<u64_t> array = make_guarded_array<u64_t>(&block.heap, 10);
        array[9] = 5;
        EXPECT_EQ(address_of(array.get()) % 32, 0u);
        EXPECT_EQ(block.heap.active, 1u);
    }
    EXPECT_EQ(block.heap.active, 0u);
}

TEST(GuardedAllocDeathTest, OverRunReportsTheOverwrittenWord) {
    for (const bool from_heap : {true, false}) {
        HeapBlock block(512);
        BasicHeap* const heap = from_heap ? &block.heap : nullptr;
        auto* const array = static_cast<u64_t*>(guarded_alloc(heap, 41, 32));
        const auto overrun = [&] {
            array[6] = 123456789;  // one word past the rounded size
            guarded_free(array);
        };
        EXPECT_EXIT(dying(overrun), ExitedWithCode(1),
                    "\n\n123456789.*\n\nFATAL ERROR: Assertion Failure\n\nArray Bounds Checking: \n\n"
                    "An array over-run has been detected\\.");
        guarded_free(array);
    }
}

TEST(GuardedAllocDeathTest, UnderRunReportsTheOverwrittenWord) {
    for (const bool from_heap : {true, false}) {
        HeapBlock block(512);
        BasicHeap* const heap = from_heap ? &block.heap : nullptr;
        auto* const array = static_cast<u64_t*>(guarded_alloc(heap, 40, 32));
        const auto underrun = [&] {
            array[-1] = 987654321;
            guarded_free(array);
        };
        EXPECT_EXIT(dying(underrun), ExitedWithCode(1),
                    "\n\n987654321.*\n\nFATAL ERROR: Assertion Failure\n\nArray Bounds Checking: \n\n"
                    "An array under-run has been detected\\.");
        guarded_free(array);
    }
}

TEST(GuardedAllocDeathTest, NoRoom) {
    HeapBlock block(256);
    const upL_t most = 256 - 16 - 32 - 40;
    void* const fits = guarded_alloc(&block.heap, most, 32);
    guarded_free(fits);
    EXPECT_EXIT(dying([&] { static_cast<void>(guarded_alloc(&block.heap, most + 1, 32)); }),
                ExitedWithCode(1), "Memory Allocation Failure\\.");
    for (const u64_t size : {u64_t{1} << 60, ~u64_t{0}, ~u64_t{0} - 80}) {
        EXPECT_EXIT(dying([=] { static_cast<void>(guarded_alloc(nullptr, size, 32)); }), ExitedWithCode(1),
                    "Memory Allocation Failure\\.");
    }
    EXPECT_EXIT(dying([] { static_cast<void>(make_guarded_array<u64_t>(nullptr, u64_t{1} << 61)); }),
                ExitedWithCode(1), "Memory Allocation Failure\\.");
}

TEST(GuardedAllocDeathTest, AlignmentThatIsNoPowerOfTwo) {
    EXPECT_EXIT(dying([] { static_cast<void>(guarded_alloc(nullptr, 8, 48)); }), ExitedWithCode(1),
                "Invalid Function Parameters:   ");
}

// ---- Short tables -------------------------------------------------------------------------------------

TEST(AlignedAllocSmall, AlignsAndKeepsTheRawPointer) {
    for (upL_t alignment = 1; alignment <= 128; alignment *= 2) {
        for (upL_t size = 0; size < 40; ++size) {
            void* const table = aligned_alloc_small(size, alignment);
            EXPECT_EQ(address_of(table) % alignment, 0u);
            EXPECT_LE(word_at(table, -8) + 8, address_of(table));
            std::memset(table, 0xFF, size);
            aligned_free_small(table);
        }
    }
    aligned_free_small(nullptr);
}

TEST(AlignedAllocSmall, TypedFormsCountElements) {
    u64_t* const a = aligned_alloc_small_array<u64_t, 1>(5);
    double* const b = aligned_alloc_small_array<double, 8>(5);
    u64_t* const c = aligned_alloc_small_array<u64_t, 16>(5);
    EXPECT_EQ(address_of(c) % 16, 0u);
    a[4] = c[4] = 1;
    b[4] = 1;
    aligned_free_small(a);
    aligned_free_small(b);
    aligned_free_small(c);
}

TEST(AlignedAllocSmallDeathTest, AlignmentAboveTheLimit) {
    EXPECT_EXIT(dying([] { static_cast<void>(aligned_alloc_small(8, 256)); }), ExitedWithCode(1),
                "Invalid Function Parameters:   ");
    EXPECT_EXIT(dying([] { static_cast<void>(aligned_alloc_small(8, 0)); }), ExitedWithCode(1),
                "Invalid Function Parameters:   ");
    EXPECT_EXIT(dying([] { static_cast<void>(aligned_alloc_small(~u64_t{0}, 16)); }), ExitedWithCode(1),
                "Memory Allocation Failure\\.");
}

}  // namespace
}  // namespace znp
