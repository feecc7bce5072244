#include "foundation/allocation_bytes.hpp"

#include <gtest/gtest.h>

#include "foundation/basic_heap.hpp"
#include "foundation/guarded_alloc.hpp"
#include "heap_block.hpp"

namespace znp {
namespace {

TEST(AllocationBytes, AGuardedAllocationFitsItsHeapBytesExactly) {
    for (const upL_t alignment : {upL_t{1}, upL_t{8}, array_alignment, upL_t{64}}) {
        for (const upL_t bytes : {upL_t{0}, upL_t{1}, upL_t{8}, upL_t{1000}, upL_t{65536}}) {
            testing::HeapBlock block(heap_bytes(bytes, alignment));
            void* const memory = guarded_alloc(&block.heap, bytes, alignment);
            EXPECT_EQ(block.room(), 0u) << bytes << " " << alignment;
            guarded_free(memory);
        }
    }
}

// The number above a gap of any size, moved down: what remains is no more than promised.
TEST(AllocationBytes, AShiftLeavesNoMoreThanItsRest) {
    for (const upL_t alignment : {upL_t{8}, array_alignment, upL_t{64}}) {
        upL_t most = 0;
        for (upL_t gap = 0; gap < 200; gap += 8) {
            testing::HeapBlock block(1024);
            void* const below = guarded_alloc(&block.heap, gap, 8);
            void* const moved = guarded_alloc(&block.heap, 100, alignment);
            guarded_free(below);
            void* const shifted = heap_shift_down(moved, alignment);
            const auto used = static_cast<upL_t>(block.heap.top - block.heap.base);
            EXPECT_LE(used, guarded_bytes(100, alignment) + heap_shift_rest(alignment)) << gap;
            most = std::max(most, used);
            guarded_free(shifted);
        }
        EXPECT_EQ(most, guarded_bytes(100, alignment) + heap_shift_rest(alignment)) << alignment;
    }
}

}  // namespace
}  // namespace znp
