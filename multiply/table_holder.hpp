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
    const VSTTables* vst = nullptr;  // null if the limit is below vst_threshold_bits
    std::byte* memory = nullptr;     // where they were built
};

// Bytes of the tables for products of up to limit_bits by any row of the selection tables, and their
// construction at memory (32-byte aligned), which returns the end of what it used. The query allows a check
// of the memory before anything is allocated.
upL_t table_size(u64_t limit_bits);
std::byte* build_tables(TableHolder& holder, u64_t limit_bits, std::byte* memory);

// Builds them once more in their place: a fault in them would stay. No product may be under way on them. Does
// nothing where there are none.
void rebuild_tables(const TableHolder& holder);

}  // namespace znp
