// A heap over a block of its own, with guard words on both sides of the block.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "foundation/basic_heap.hpp"
#include "foundation/heap_words.hpp"

namespace znp::testing {

class HeapBlock {
  public:
    explicit HeapBlock(upL_t size_bytes) : words_(size_bytes / 8 + 2 * margin, filler) {
        heap_init(heap, words_.data() + margin, size_bytes);
    }
    ~HeapBlock() {
        EXPECT_TRUE(std::all_of(words_.begin(), words_.begin() + margin, is_filler));
        EXPECT_TRUE(std::all_of(words_.end() - margin, words_.end(), is_filler));
    }
    HeapBlock(const HeapBlock&) = delete;
    HeapBlock& operator=(const HeapBlock&) = delete;

    std::byte* at(upL_t offset) const { return heap.base + offset; }
    upL_t room() const { return static_cast<upL_t>(heap.table_limit - heap.top); }

    BasicHeap heap{};

  private:
    static constexpr std::ptrdiff_t margin = 16;
    static constexpr u64_t filler = 0xA5A5A5A5DEADBEEF;
    static bool is_filler(u64_t word) { return word == filler; }

    std::vector<u64_t> words_;
};

struct TableEntry {
    std::byte* address;
    u64_t size;
    bool operator==(const TableEntry&) const = default;
};

// The table as it lies in memory: 16-byte entries from end downward.
inline std::vector<TableEntry> table_of(const BasicHeap& heap) {
    std::vector<TableEntry> table(heap.active);
    for (u64_t i = 0; i < heap.active; ++i) std::memcpy(&table[i], heap.end - 16 * (i + 1), 16);
    return table;
}

// What holds for a heap at any time.
inline void check_invariants(const BasicHeap& heap) {
    const std::vector<TableEntry> table = table_of(heap);
    EXPECT_EQ(heap.table_limit, heap.end - 16 * heap.active);
    EXPECT_LE(heap.top, heap.table_limit);
    EXPECT_LE(heap.top, heap.peak_top);
    EXPECT_LE(heap.active, heap.peak_active);
    std::byte* cursor = heap.base;
    for (const TableEntry& block : table) {
        EXPECT_LE(cursor, block.address);
        EXPECT_EQ(block_owner(block.address), &heap);
        cursor = block.address + block.size;
    }
    EXPECT_EQ(heap.top, cursor);
}

}  // namespace znp::testing
