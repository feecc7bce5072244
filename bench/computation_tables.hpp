// The twiddle tables and work buffers that a computation would hand down.
#pragma once

#include "foundation/guarded_alloc.hpp"
#include "multiply/basic_parameters.hpp"
#include "multiply/selection.hpp"
#include "multiply/table_holder.hpp"

namespace znp::bench {

// Tables for every product below the large transform's range; built at the first call.
inline const TableHolder& computation_tables() {
    static const GuardedArray<std::byte> memory =
        make_guarded_array<std::byte>(nullptr, table_size(vst_threshold_bits - 1), 64);
    static const TableHolder holder = [] {
        TableHolder built;
        build_tables(built, vst_threshold_bits - 1, memory.get());
        return built;
    }();
    return holder;
}

// A work buffer of exactly the given bytes, noted in bp.
inline GuardedArray<std::byte> work_buffer(BasicParameters& bp, upL_t bytes) {
    GuardedArray<std::byte> work = make_guarded_array<std::byte>(nullptr, bytes, 64);
    bp.M = work.get();
    bp.ML = bytes;
    return work;
}

}  // namespace znp::bench
