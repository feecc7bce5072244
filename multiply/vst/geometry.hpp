// The shape of a VST of b 2^c points over a primes, and of its data.
//
// A point carries input_bits of input and is a vector of a residues. Points are grouped in blocks of
// n = b 2^t consecutive points. A block holds, for each prime, `lanes` vectors of 4 neighbouring points and
// one vector of padding, which keeps the primes of a block from falling on the same cache sets:
//
//     block i, prime s, point j of the block:   double at block_offset(i) + 4 s row + j
//
// Blocks are contiguous. Long transforms have a gap behind each group of 2^part_levels blocks, an odd number
// of cache lines: without it all rows of a column would stand at a multiple of a large power of two from each
// other, in a few sets of the caches. Blocks 2^k apart, k >= part_levels, are at distance(k).
//
// The data are residues as integer-valued doubles. They are never permuted: a forward transform leaves them
// in bit-reversed order, and the inverse starts there.
#pragma once

#include <bit>

#include "foundation/types.hpp"

namespace znp::vst {

// What a contiguous part takes at most: it shall stay in the second-level cache.
inline constexpr upL_t max_part_bytes = 900 << 10;

// What the rows of one prime in a column take at most: more than the second-level cache holds, but a further
// stage costs a road through memory.
inline constexpr upL_t max_column_bytes = 1500 << 10;

struct Geometry {
    unsigned a, b, c;

    constexpr unsigned t() const { return b == 1 ? 6 : 5; }
    constexpr upL_t n() const { return upL_t{b} << t(); }  // points of a block: 64, 96, 160, 224
    constexpr upL_t lanes() const { return n() / 4; }      // vectors of a block and a prime
    constexpr upL_t row() const { return lanes() + 1; }    // the same with the padding
    constexpr upL_t block_vectors() const { return row() * a; }
    constexpr upL_t block_bytes() const { return block_vectors() * 32; }
    constexpr unsigned levels() const { return c - t(); }  // binary levels above a block; at least 4
    constexpr upL_t blocks() const { return upL_t{1} << levels(); }
    constexpr upL_t points() const { return upL_t{b} << c; }
    constexpr unsigned input_bits() const { return (a - 1) * 24; }               // of a point
    constexpr upL_t input_words() const { return n() * input_bits() / 32; }      // 32-bit words of a block
    constexpr u64_t capacity() const { return u64_t{input_bits()} * points(); }  // bits of a product

    // Binary levels above a block that a contiguous part has at most.
    constexpr unsigned part_levels() const {
        return static_cast<unsigned>(std::bit_width(max_part_bytes / block_bytes())) - 1;
    }
    // Binary levels of a column.
    constexpr unsigned max_column_levels() const {
        return static_cast<unsigned>(std::bit_width(max_column_bytes / (row() * 32))) - 1;
    }
    constexpr bool has_gaps() const { return levels() >= part_levels() + 5; }
    constexpr upL_t gap_bytes() const { return has_gaps() ? ((row() / 2) | 1) * 64 : 0; }

    // In doubles. distance(k): from a block to the one 2^k further.
    constexpr upL_t block_offset(u64_t block) const {
        return (block * block_bytes() + (block >> part_levels()) * gap_bytes()) / sizeof(double);
    }
    constexpr upL_t distance(unsigned k) const { return block_offset(u64_t{1} << k); }
    constexpr upL_t image_bytes() const { return block_offset(blocks()) * sizeof(double); }

    constexpr bool operator==(const Geometry&) const = default;
};

static_assert(Geometry{4, 1, 10}.capacity() == 73728);
static_assert(Geometry{8, 1, 28}.capacity() == 45097156608);

}  // namespace znp::vst
