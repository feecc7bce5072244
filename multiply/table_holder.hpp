// The twiddle tables of one computation. Built once, then read-only and shared by all threads.
#pragma once

#include "foundation/guarded_alloc.hpp"
#include "foundation/types.hpp"

namespace znp {

struct FFTTables;
struct VSTTables;

struct TableHolder {
    u64_t limit_bits = 0;  // products up to this length are served
    u64_t reserved = 0x100000;
    const FFTTables* fft = nullptr;
    const VSTTables* vst = nullptr;
};

}  // namespace znp
