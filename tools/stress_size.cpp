#include "tools/stress_size.hpp"

#include <algorithm>

namespace znp {

StressLayout stress_layout(const multiplier<c64i>& component, u64_t n, u64_t threads) {
    StressLayout layout{};
    layout.operand_words = n / 2 & ~u64_t{3};
    layout.tables = component.table_bytes(64 * n);
    layout.per_thread = work_aligned(8 * n + component.work_bytes(n, threads));
    layout.total = work_aligned(layout.tables + threads * layout.per_thread + 4 * n);
    return layout;
}

u64_t largest_stress_words(const multiplier<c64i>& component, u64_t memory, u64_t threads) {
    const auto fits = [&](u64_t n) { return stress_layout(component, n, threads).total <= memory; };

    const u64_t limit = component.max_bits / 64 + 1;
    u64_t low = min_stress_words;
    if (low >= limit || !fits(low)) return 0;
    u64_t high = 2 * low;
    while (high < limit && fits(high)) {
        low = high;
        high *= 2;
    }
    high = std::min(high, limit);

    // Invariant: low fits; high does not, or is beyond the component's limits.
    while (high - low > 1) {
        const u64_t middle = low + (high - low) / 2;
        (fits(middle) ? low : high) = middle;
    }
    return low;
}

}  // namespace znp
