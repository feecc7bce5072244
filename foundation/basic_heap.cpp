#include "foundation/basic_heap.hpp"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "foundation/allocation_bytes.hpp"
#include "foundation/fatal.hpp"
#include "foundation/guarded_alloc.hpp"
#include "foundation/heap_words.hpp"
#include "foundation/memory.hpp"
#include "foundation/strings.hpp"
#include "foundation/threads.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

// One entry of the table. Entry i lies at end - 16 * (i + 1).
struct HeapEntry {
    std::byte* address;
    u64_t size;

    std::byte* limit() const { return address + size; }
};

constexpr upL_t entry_bytes = heap_entry_bytes;
static_assert(sizeof(HeapEntry) == entry_bytes);
static_assert(sizeof(BasicHeap) == 10 * word_bytes);

constexpr const char* out_of_memory = "Memory Allocation Failure.";

upL_t bytes_between(const std::byte* low, const std::byte* high) {
    return static_cast<upL_t>(high - low);
}

HeapEntry& entry(const BasicHeap& heap, u64_t index) {
    return object_at<HeapEntry>(heap.end - entry_bytes * (index + 1));
}

// Where the gap before entry index begins; for index = active, where the free room begins.
std::byte* gap_start(const BasicHeap& heap, u64_t index) {
    return index == 0 ? heap.base : entry(heap, index - 1).limit();
}

void update_top(BasicHeap& heap) {
    heap.top = gap_start(heap, heap.active);
}

// Makes room at index and fills it; the caller has made sure of 16 bytes below table_limit.
void insert_entry(BasicHeap& heap, u64_t index, HeapEntry inserted) {
    std::byte* const old_limit = heap.table_limit;
    heap.table_limit -= entry_bytes;
    ++heap.active;
    heap.peak_active = std::max(heap.peak_active, heap.active);
    std::memmove(heap.table_limit, old_limit, entry_bytes * (heap.active - 1 - index));
    entry(heap, index) = inserted;
    update_top(heap);
}

void remove_entry(BasicHeap& heap, u64_t index) {
    std::byte* const old_limit = heap.table_limit;
    heap.table_limit += entry_bytes;
    std::memmove(heap.table_limit, old_limit, entry_bytes * (heap.active - 1 - index));
    --heap.active;
    update_top(heap);
}

// The last entry whose address is not above the block.
u64_t find_entry(const BasicHeap& heap, const std::byte* block) {
    u64_t low = 0;
    u64_t high = heap.active;
    while (low < high) {
        const u64_t middle = low + (high - low) / 2;
        if (entry(heap, middle).address <= block) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    if (low == 0 || entry(heap, low - 1).address != block) {
        assert_failure(fatal_category::invalid_parameters, L"BasicHeap", L"");
    }
    return low - 1;
}

void* give(BasicHeap& heap, std::byte* block) {
    heap.peak_top = std::max(heap.peak_top, heap.top);
    block_owner(block) = &heap;
    return block;
}

[[noreturn]] void creation_failure(upL_t size_bytes) {
    Console::print_newline();
    Console::print("Insufficient Memory or address space.", 'R');
    Console::print_newline();
    Console::print_labelled_line("Failed Allocation",
                                 Console::format_int(size_bytes, Console::IntFormat::commas), 'Y');
    pause_and_exit(1);
}

// Called once the child's block has left the parent's table, where it had position first. Survivors lie in
// address order inside that block, so their positions follow one another.
//
// The parent's table may grow into the child's, when the child's block was the highest one: it ends at or
// above the child's end and has lost the block's own entry, so that with k survivors inserted its limit is at
// or above the child's end - 16 (k - 1), and entry k of the child lies below that.
void hand_over(const BasicHeap& child, BasicHeap& parent, u64_t first) {
    for (u64_t i = 0; i < child.active; ++i) {
        const HeapEntry survivor = entry(child, i);
        std::byte* const top = std::max(parent.top, survivor.limit());
        if (parent.table_limit < top || bytes_between(top, parent.table_limit) < entry_bytes) {
            fatal_exit("Critical Internal Assertion Failure: APIs-448");
        }
        block_owner(survivor.address) = &parent;
        insert_entry(parent, first + i, survivor);
    }
}

}  // namespace

void heap_init(BasicHeap& heap, void* block, upL_t size_bytes) {
    if (address_of(block) % word_bytes != 0) fatal_exit("Alignment Error");
    heap = BasicHeap{};
    heap.base = static_cast<std::byte*>(block);
    heap.end = heap.base + (size_bytes & ~(word_bytes - 1));
    heap.top = heap.base;
    heap.table_limit = heap.end;
    heap.peak_top = heap.base;
}

void heap_create(BasicHeap& heap, BasicHeap* parent, upL_t size_bytes) {
    if (size_bytes > ~(2 * word_bytes)) creation_failure(size_bytes);
    const upL_t rounded = std::max(round_up_to_word(size_bytes), word_bytes);
    if (parent != nullptr) {
        auto* const block = static_cast<std::byte*>(heap_alloc(*parent, rounded));
        if (block == nullptr) creation_failure(rounded);
        heap_init(heap, block + word_bytes, rounded - word_bytes);
        heap.parent = parent;
        return;
    }
    void* const block = std::malloc(rounded);
    if (block == nullptr) creation_failure(rounded);
    first_touch(block, rounded, std::min(logical_cores(), max_threads));
    heap_init(heap, block, rounded);
}

void* heap_alloc(BasicHeap& heap, upL_t size_bytes) {
    assert(size_bytes >= word_bytes && size_bytes % word_bytes == 0);
    if (bytes_between(heap.top, heap.table_limit) < entry_bytes) return nullptr;
    std::byte* cursor = heap.base;
    for (u64_t i = 0; i < heap.active; ++i) {
        const HeapEntry next = entry(heap, i);
        if (size_bytes <= bytes_between(cursor, next.address)) {
            insert_entry(heap, i, {cursor, size_bytes});
            return give(heap, cursor);
        }
        cursor = next.limit();
    }
    if (size_bytes > bytes_between(cursor, heap.table_limit) - entry_bytes) return nullptr;
    insert_entry(heap, heap.active, {cursor, size_bytes});
    return give(heap, cursor);
}

void heap_free(void* block) {
    BasicHeap& heap = *block_owner(block);
    remove_entry(heap, find_entry(heap, static_cast<std::byte*>(block)));
}

void heap_destroy(BasicHeap& heap) {
    if (heap.parent == nullptr) {
        if (heap.active != 0) Console::print("Memory leak detected\n");
        std::free(heap.base);
        return;
    }
    BasicHeap& parent = *heap.parent;
    const u64_t position = find_entry(parent, heap.base - word_bytes);
    remove_entry(parent, position);
    hand_over(heap, parent, position);
}

void* heap_shift_down(void* payload, upL_t alignment) {
    std::byte*& back_pointer = guarded_back_pointer(payload);
    std::byte* const block = back_pointer;
    if (block_owner(block) == nullptr) return payload;
    BasicHeap& heap = *block_owner(block);
    if (heap.child_pair != nullptr) {
        assert_failure(fatal_category::invalid_parameters, L"heap_shift_down()", L"");
    }

    const u64_t index = find_entry(heap, block);
    HeapEntry& moved = entry(heap, index);
    const upL_t gap = bytes_between(gap_start(heap, index), block);
    const upL_t shift = gap & ~(std::max(alignment, word_bytes) - 1);
    if (shift == 0) return payload;

    moved.address -= shift;
    back_pointer -= shift;
    std::memmove(moved.address, block, moved.size);
    update_top(heap);
    return static_cast<std::byte*>(payload) - shift;
}

void heap_split(BasicHeap& heap, u64_t table_entries) {
    if (heap.child_pair != nullptr) {
        assert_failure(fatal_category::invalid_parameters, L"heap_split()", L"");
    }
    auto* const pair =
        static_cast<BasicHeap*>(guarded_alloc(&heap, 2 * sizeof(BasicHeap), alignof(BasicHeap)));
    std::uninitialized_value_construct_n(pair, 2);

    // Each half takes an entry of its own, and each of its survivors may need one later.
    constexpr upL_t pair_entries = 2 * entry_bytes;
    const upL_t room = bytes_between(heap.top, heap.table_limit);
    if (room < pair_entries || table_entries > (room - pair_entries) / pair_entries)
        fatal_exit(out_of_memory);
    const upL_t half = ((room - pair_entries * table_entries - pair_entries) / 2) & ~(word_bytes - 1);

    // The halves take all the room there is, which would make the peak that heap_join looks at meaningless.
    std::byte* const peak_top = heap.peak_top;
    heap.child_mark = heap.top;
    heap_create(pair[0], &heap, half);
    heap_create(pair[1], &heap, half);
    heap.peak_top = peak_top;
    heap.child_pair = pair;
}

void heap_join(BasicHeap& heap) {
    BasicHeap* const pair = heap.child_pair;
    const upL_t use = std::max(bytes_between(pair[0].base, pair[0].peak_top),
                               bytes_between(pair[1].base, pair[1].peak_top));
    std::byte* const peak = std::max(heap.peak_top, heap.child_mark + 2 * use);
    heap_destroy(pair[0]);
    heap_destroy(pair[1]);
    heap.child_pair = nullptr;
    guarded_free(pair);
    heap.peak_top = std::max(peak, heap.top);
}

// ---- Dump -------------------------------------------------------------------------------------------------

namespace {

std::string address_text(const void* address) {
    return format_printf(32, "0x%016llx", static_cast<unsigned long long>(address_of(address)));
}

std::string size_text(u64_t size) {
    return Console::format_int(size, Console::IntFormat::commas);
}

void dump_field(std::string label, upL_t width, const std::string& value) {
    label.resize(width, ' ');
    Console::print_labelled_line(label, value);
}

// The entries in address order with the gaps between them; returns the sum of the gaps.
u64_t dump_entries(const BasicHeap& heap) {
    u64_t fragmentation = 0;
    for (u64_t i = 0; i < heap.active; ++i) {
        const HeapEntry& block = entry(heap, i);
        const u64_t gap = bytes_between(gap_start(heap, i), block.address);
        if (gap != 0) Console::print_labelled_line("Free Space", size_text(gap));
        fragmentation += gap;
        Console::print("Base: " + address_text(block.address));
        Console::print_labelled_line("   Size", size_text(block.size));
    }
    return fragmentation;
}

}  // namespace

void heap_dump(const BasicHeap& heap) {
    constexpr upL_t wide = 20;
    constexpr upL_t narrow = 6;
    Console::println("Heap Table Dump:");
    dump_field("Parent", wide, address_text(heap.parent));
    dump_field("Total Size", wide, size_text(bytes_between(heap.base, heap.end)));
    dump_field("Active Allocations", wide, size_text(heap.active));
    dump_field("Peak Allocations", wide, size_text(heap.peak_active));
    dump_field("Current Usage", wide, size_text(bytes_between(heap.base, heap.top)));
    dump_field("Peak Heap Usage", wide, size_text(bytes_between(heap.base, heap.peak_top)));
    dump_field("Start", narrow, address_text(heap.base));
    dump_field("End", narrow, address_text(heap.end));
    if (heap.active == 0) Console::print("No Active Allocations\n");
    const u64_t fragmentation = dump_entries(heap);
    Console::println("Table Limit         : " + address_text(heap.table_limit));
    Console::println("Fragmentation       : " + size_text(fragmentation));
}

}  // namespace znp
