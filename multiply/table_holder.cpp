#include "multiply/table_holder.hpp"

#include <algorithm>

#include "multiply/selection.hpp"

namespace znp {

namespace {

const multiplier<c64i>& fft() {
    return *find_multiplier<c64i>("FFT");
}

const multiplier<c64i>& vst() {
    return *find_multiplier<c64i>("VST");
}

u64_t fft_limit(u64_t limit_bits) {
    return std::min(limit_bits, vst_threshold_bits);
}

}  // namespace

upL_t table_size(u64_t limit_bits) {
    const upL_t bytes = fft().table_bytes(fft_limit(limit_bits));
    return limit_bits < vst_threshold_bits ? bytes : bytes + vst().table_bytes(limit_bits);
}

std::byte* build_tables(TableHolder& holder, u64_t limit_bits, std::byte* memory) {
    holder = TableHolder{};
    std::byte* end = fft().build_tables(holder, fft_limit(limit_bits), memory);
    if (limit_bits >= vst_threshold_bits) end = vst().build_tables(holder, limit_bits, end);
    holder.limit_bits = limit_bits;
    holder.memory = memory;
    return end;
}

void rebuild_tables(const TableHolder& holder) {
    if (holder.memory == nullptr) return;
    TableHolder same;
    build_tables(same, holder.limit_bits, holder.memory);
}

}  // namespace znp
