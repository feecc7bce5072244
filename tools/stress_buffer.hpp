// StressBuffer: the working buffer of a run, straight from the system.
#pragma once

#include "foundation/types.hpp"

namespace znp {

class StressBuffer {
  public:
    static constexpr upL_t alignment = 4096;

    explicit StressBuffer(u64_t bytes);  // throws std::bad_alloc
    StressBuffer(const StressBuffer&) = delete;
    StressBuffer& operator=(const StressBuffer&) = delete;
    ~StressBuffer();

    std::byte* data() const { return data_; }
    u64_t bytes() const { return bytes_; }

    // Zeros everywhere, stored on `threads` threads; the first time this is what makes the memory real. A
    // stop request ends it early.
    void clear(u64_t threads);

  private:
    std::byte* data_ = nullptr;
    u64_t bytes_;
};

}  // namespace znp
