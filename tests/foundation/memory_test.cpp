#include "foundation/memory.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "console_capture.hpp"
#include "foundation/heap_words.hpp"
#include "foundation/thread_counter.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::ThreadCounter;
namespace sent = testing::sent;

// ---- How much there is --------------------------------------------------------------------------------

TEST(Memory, PagesTimesPageSize) {
    EXPECT_EQ(memory_of_pages(1000, 4096), 4'096'000u);
    EXPECT_EQ(memory_of_pages(0, 4096), 0u);
    EXPECT_EQ(memory_of_pages(-1, 4096), 0u);
    EXPECT_EQ(memory_of_pages(1000, -1), 0u);
}

TEST(Memory, SizesAreClipped) {
    constexpr s64_t clip = 0x77fffffffffffff1;
    EXPECT_EQ(memory_of_pages(clip - 1, 1), 0x77fffffffffffff0u);
    EXPECT_EQ(memory_of_pages(clip, 1), 0x77fffffffffffff1u);
    EXPECT_EQ(memory_of_pages(clip + 1, 1), 0x77fffffffffffff1u);
    EXPECT_EQ(memory_of_pages(s64_t{1} << 60, 4096), 0x77fffffffffffff1u);  // beyond 64 bits
    EXPECT_EQ(memory_of_pages(s64_t{1} << 52, 4096), 0x77fffffffffffff1u);  // 2^64 would wrap to 0
}

TEST(Memory, OfThisMachine) {
    EXPECT_GT(physical_memory(), 0u);
    EXPECT_GT(available_memory(), 0u);
    EXPECT_LE(available_memory(), physical_memory());
    EXPECT_EQ(physical_memory() % 4096, 0u);
}

// ---- The warning --------------------------------------------------------------------------------------

TEST(Memory, WarnsAndGoesOn) {
    const std::string warning =
        sent::R +
        "Warning:\nThere is insufficient available memory to perform this operation.\n\nInsufficient memory "
        "may "
        "lead to virtual memory thrashing which can cause severe\nperformance degradation and/or system "
        "unresponsiveness.\n" +
        sent::pause + "\n";
    EXPECT_EQ(console_output([] { check_available_memory(1001, 1000); }, "\n"), warning);
    EXPECT_EQ(console_output([] { check_available_memory(~u64_t{0}, 1); }, "\n"), warning);
    EXPECT_EQ(console_output([] { check_available_memory(~u64_t{0}); }, "\n"), warning);
}

TEST(Memory, EnoughOrUnknownIsSilent) {
    EXPECT_EQ(console_output([] {
                  check_available_memory(1000, 1000);
                  check_available_memory(999, 1000);
                  check_available_memory(0, 0);
                  check_available_memory(~u64_t{0}, 0);
                  check_available_memory(0);
              }),
              "");
}

// ---- First touch --------------------------------------------------------------------------------------

bool all_equal(const unsigned char* bytes, upL_t size, unsigned char value) {
    return size == 0 || (bytes[0] == value && std::memcmp(bytes, bytes + 1, size - 1) == 0);
}

// Clears [offset, offset + size) of a block of ones and looks at what it left alone. Returns the threads that
// were created for it.
int touched(upL_t offset, upL_t size, u64_t threads) {
    constexpr upL_t margin = 4096;
    std::vector<unsigned char> bytes(offset + size + margin, 0xFF);
    ThreadCounter counter;
    first_touch(bytes.data() + offset, size, threads);
    const unsigned char* const low = bytes.data() + offset;
    EXPECT_TRUE(all_equal(bytes.data(), offset, 0xFF));
    EXPECT_TRUE(all_equal(low, size, 0));
    EXPECT_TRUE(all_equal(low + size, margin, 0xFF));
    return counter.created();
}

TEST(FirstTouch, SmallBlocksOnOneThread) {
    for (const upL_t size : {upL_t{0}, upL_t{1}, upL_t{8}, upL_t{4095}, upL_t{4096}, upL_t{100'000},
                             2 * first_touch_min_share - 1}) {
        EXPECT_EQ(touched(size % 77, size, 16), 0);
    }
}

TEST(FirstTouch, SharesOfAtLeastTheMinimum) {
    EXPECT_EQ(touched(0, 2 * first_touch_min_share, 16), 1);
    EXPECT_EQ(touched(24, 3 * first_touch_min_share - 8, 16), 1);
    EXPECT_EQ(touched(8, 3 * first_touch_min_share, 16), 2);
    EXPECT_EQ(touched(4096, 5 * first_touch_min_share + 1234, 16), 4);
}

TEST(FirstTouch, NoMoreThreadsThanAsked) {
    EXPECT_EQ(touched(16, 4 * first_touch_min_share, 1), 0);
    EXPECT_EQ(touched(16, 4 * first_touch_min_share, 0), 0);
    EXPECT_EQ(touched(16, 4 * first_touch_min_share, 3), 2);
}

}  // namespace
}  // namespace znp
