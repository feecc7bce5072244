// Transform sizes of the floating-point FFT and the two tables that choose them.
//
// A size is N = k 2^p real points of w bits, k in 1, 3, 5, p >= 7, w from 9 to 21; it serves products of up
// to N w bits, its capacity. The rows are made by generators/fft_plan.py from measured times and the rounding
// bound (docs/FFT_ERRORS.md).
#pragma once

#include <span>

#include "foundation/types.hpp"

namespace znp::fft {

struct PlanRow {
    u32_t capacity_bits;
    signed char k, p, w;
    signed char zero;

    constexpr u64_t N() const { return u64_t(static_cast<unsigned char>(k)) << p; }
};
static_assert(sizeof(PlanRow) == 8);

// The fastest size for a product of up to so many bits; and the sizes that can be asked for by exact
// capacity.
std::span<const PlanRow> main_plan();
std::span<const PlanRow> exact_plan();

// The first row with at least so many bits; none: the generic exception, code -4.
const PlanRow& find_size(u64_t bits);

// The row of just this capacity; none: the generic exception, code -3 (past the last row: -4).
const PlanRow& find_exact_size(u64_t bits);

// The deepest twiddle table level that the rows of a plan up to the one for `bits` need.
unsigned depth_for(std::span<const PlanRow> plan, u64_t bits);

// The largest work buffer, 20 N bytes, of the sizes that serve products up to so many bits.
u64_t fft_capacity_bytes(u64_t bits);

}  // namespace znp::fft
