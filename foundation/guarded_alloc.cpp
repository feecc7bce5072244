#include "foundation/guarded_alloc.hpp"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "foundation/allocation_bytes.hpp"
#include "foundation/basic_heap.hpp"
#include "foundation/fatal.hpp"
#include "foundation/heap_words.hpp"
#include "foundation/memory.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

constexpr upL_t max_small_alignment = 128;

constexpr const char* out_of_memory = "Memory Allocation Failure.";

// A size that with all that is added to it stays in the range.
upL_t checked_size(upL_t size_bytes, upL_t alignment) {
    if (size_bytes > ~upL_t{0} - alignment - guarded_overhead_bytes - word_bytes) fatal_exit(out_of_memory);
    return size_bytes;
}

void check_alignment(upL_t alignment, const wchar_t* function) {
    if (!is_power_of_two(alignment)) assert_failure(fatal_category::invalid_parameters, function, L"");
}

u64_t& payload_size(std::byte* payload) {
    return object_at<u64_t>(payload - 16);
}
u64_t& low_guard(std::byte* payload) {
    return object_at<u64_t>(payload - 8);
}
u64_t& high_guard(std::byte* payload) {
    return object_at<u64_t>(payload + payload_size(payload));
}

void check_guard(u64_t found, const wchar_t* detail) {
    if (found == guard_word) return;
    Console::print("\n\n" + to_string_u64(found));
    assert_failure(fatal_category::array_bounds, L"", detail);
}

}  // namespace

std::byte*& guarded_back_pointer(void* payload) {
    return object_at<std::byte*>(static_cast<std::byte*>(payload) - 24);
}

void* guarded_alloc(BasicHeap* heap, upL_t size_bytes, upL_t alignment) {
    alignment = std::max(alignment, word_bytes);
    check_alignment(alignment, L"guarded_alloc()");
    const upL_t rounded = round_up_to_word(checked_size(size_bytes, alignment));
    const upL_t raw_bytes = guarded_bytes(rounded, alignment);

    void* const raw = heap != nullptr ? heap_alloc(*heap, raw_bytes) : std::malloc(raw_bytes);
    if (raw == nullptr) fatal_exit(out_of_memory);
    if (heap == nullptr) advise_huge_pages(raw, raw_bytes);  // twiddle tables and the like
    block_owner(raw) = heap;

    auto* const block = static_cast<std::byte*>(raw);
    const std::uintptr_t start = address_of(raw);
    const std::uintptr_t target = alignment + ((start + 32) & -alignment);
    std::byte* const payload = block + (target - start);
    guarded_back_pointer(payload) = block;
    payload_size(payload) = rounded;
    low_guard(payload) = guard_word;
    high_guard(payload) = guard_word;
    return payload;
}

void* guarded_alloc_or_marker(BasicHeap* heap, upL_t size_bytes, upL_t alignment) {
    return size_bytes == 0 ? all_ones_marker : guarded_alloc(heap, size_bytes, alignment);
}

void guarded_free(void* payload) {
    if (payload == nullptr || payload == all_ones_marker) return;
    auto* const bytes = static_cast<std::byte*>(payload);
    check_guard(low_guard(bytes), L"An array under-run has been detected.");
    check_guard(high_guard(bytes), L"An array over-run has been detected.");
    std::byte* const block = guarded_back_pointer(payload);
    if (block_owner(block) == nullptr) {
        std::free(block);
    } else {
        heap_free(block);
    }
}

void* aligned_alloc_small(upL_t size_bytes, upL_t alignment) {
    check_alignment(alignment, L"aligned_alloc_small()");
    if (alignment > max_small_alignment) {
        assert_failure(fatal_category::invalid_parameters, L"aligned_alloc_small()", L"");
    }
    alignment = std::max(alignment, word_bytes);
    void* const raw = std::malloc(checked_size(size_bytes, alignment) + alignment + word_bytes);
    if (raw == nullptr) fatal_exit(out_of_memory);
    const std::uintptr_t start = address_of(raw);
    const std::uintptr_t target = (start + word_bytes + alignment - 1) & -alignment;
    std::byte* const payload = static_cast<std::byte*>(raw) + (target - start);
    object_at<void*>(payload - word_bytes) = raw;
    return payload;
}

void aligned_free_small(void* payload) {
    if (payload == nullptr) return;
    std::free(object_at<void*>(static_cast<std::byte*>(payload) - word_bytes));
}

}  // namespace znp
