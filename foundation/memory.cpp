#include "foundation/memory.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "foundation/heap_words.hpp"
#include "foundation/threads.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

u64_t memory_of(int pages_name) {
    return memory_of_pages(sysconf(pages_name), sysconf(_SC_PAGESIZE));
}

// Where share index of a block begins: the block's own ends outside, multiples of a huge page inside.
upL_t share_start(const void* block, upL_t size_bytes, u64_t index, u64_t shares) {
    if (index == 0) return 0;
    if (index == shares) return size_bytes;
    const upL_t offset = size_bytes / shares * index;
    return offset - ((address_of(block) + offset) & (huge_page_bytes - 1));
}

}  // namespace

u64_t memory_of_pages(s64_t pages, s64_t page_bytes) {
    if (pages < 0 || page_bytes < 0) return 0;
    const u128_t bytes = static_cast<u128_t>(pages) * static_cast<u128_t>(page_bytes);
    return bytes > max_memory_bytes ? max_memory_bytes : static_cast<u64_t>(bytes);
}

u64_t available_memory() {
    return memory_of(_SC_AVPHYS_PAGES);
}
u64_t physical_memory() {
    return memory_of(_SC_PHYS_PAGES);
}

void check_available_memory(u64_t needed_bytes) {
    check_available_memory(needed_bytes, available_memory());
}

void check_available_memory(u64_t needed_bytes, u64_t available_bytes) {
    if (available_bytes == 0 || available_bytes >= needed_bytes) return;
    Console::print(
        "Warning:\n"
        "There is insufficient available memory to perform this operation.\n\n"
        "Insufficient memory may lead to virtual memory thrashing which can cause severe\n"
        "performance degradation and/or system unresponsiveness.\n",
        'R');
    Console::pause();
    Console::print_newline();
}

void advise_huge_pages(void* block, upL_t size_bytes) {
    if (size_bytes < 2 * huge_page_bytes) return;
    const s64_t reported = sysconf(_SC_PAGESIZE);
    if (reported <= 0) return;
    const auto page = static_cast<upL_t>(reported);
    const upL_t head = -address_of(block) & (page - 1);
    const upL_t inside = (size_bytes - head) & ~(page - 1);
    // A kernel without huge pages refuses, and nothing changes.
    static_cast<void>(madvise(static_cast<std::byte*>(block) + head, inside, MADV_HUGEPAGE));
}

void first_touch(void* block, upL_t size_bytes, u64_t threads) {
    advise_huge_pages(block, size_bytes);
    const u64_t most = std::max<u64_t>(size_bytes / first_touch_min_share, 1);
    const u64_t shares = std::clamp<u64_t>(threads, 1, std::min(most, max_threads));
    auto task = make_task([=](u64_t index) {
        const upL_t low = share_start(block, size_bytes, index, shares);
        const upL_t high = share_start(block, size_bytes, index + 1, shares);
        std::memset(static_cast<std::byte*>(block) + low, 0, high - low);
    });
    fork_range(task, 0, shares);
}

}  // namespace znp
