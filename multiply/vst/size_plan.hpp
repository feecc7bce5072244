// The size plans of the VST: which transforms there are, by capacity.
//
// Made by generators/vst_size_plan.py from measurements. Constants, usable before main.
#pragma once

#include <span>

#include "foundation/types.hpp"
#include "multiply/vst/geometry.hpp"

namespace znp::vst {

// A transform of b 2^c points over a primes.
struct SizePlanRow {
    unsigned char a, b, c;

    constexpr Geometry geometry() const { return {a, b, c}; }
    constexpr u64_t capacity() const { return geometry().capacity(); }
};

// Sorted by capacity: 159 rows with c from 9 to 28, and 296 rows with c from 11 to 43.
std::span<const SizePlanRow> main_plan();
std::span<const SizePlanRow> large_plan();

// The first row of the main plan with at least this capacity; if there is none, that of the large plan. None:
// the generic exception, code size_beyond_tables.
const SizePlanRow& find_size(u64_t bits);

}  // namespace znp::vst
