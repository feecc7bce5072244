#include "tools/stress_buffer.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <new>

#include "foundation/memory.hpp"
#include "tools/stress_signals.hpp"

namespace znp {

StressBuffer::StressBuffer(u64_t bytes) : bytes_(bytes) {
    if (bytes_ == 0) return;
    void* block = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED) throw std::bad_alloc();
    data_ = static_cast<std::byte*>(block);
}

StressBuffer::~StressBuffer() {
    if (data_ != nullptr) munmap(data_, bytes_);
}

void StressBuffer::clear(u64_t threads) {
    // In steps of a fraction of a second, so that an interrupt need not wait for all of a big machine's
    // memory.
    constexpr u64_t step = u64_t{1} << 30;
    for (u64_t done = 0; done < bytes_ && !StopSignals::requested(); done += step) {
        first_touch(data_ + done, std::min(step, bytes_ - done), threads);
    }
}

}  // namespace znp
