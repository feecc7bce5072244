// The shape of a VST of b 2^c points over a primes, and of its data.
//
// A point carries input_bits of input and is a vector of a residues. Points are grouped in blocks of
// n = b 2^t consecutive points. A block holds, for each prime, `lanes` vectors of neighbouring points and one
// vector of padding, which keeps the primes of a block from falling on the same cache sets:
//
//     block i, prime s, point j of the block:   double at block_offset(i) + s row_doubles + j
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
#include "multiply/vst/vector_width.hpp"

namespace znp::vst {

// What a contiguous part takes at most: it shall stay in the second-level cache.
inline constexpr upL_t max_part_bytes = 900 << 10;

// What the rows of one prime in a column take at most: more than the second-level cache holds, but a further
// stage costs a road through memory.
inline constexpr upL_t max_column_bytes = 1500 << 10;

inline constexpr unsigned max_primes = 9;

// Of a block: log2 of its points over b, binary levels down to X^4 - w (b = 1) or X^(4b) - w, and the vectors
// of a prime's points.
constexpr unsigned block_t(unsigned b) {
    return b == 1 ? 6 : 5;
}
constexpr unsigned block_levels(unsigned b) {
    return block_t(b) - 2;
}
constexpr upL_t block_lanes(unsigned b) {
    return (upL_t{b} << block_t(b)) / vector_doubles;
}

struct Geometry {
    unsigned a, b, c;

    constexpr unsigned t() const { return block_t(b); }
    constexpr upL_t n() const { return upL_t{b} << t(); }  // points of a block: 64, 96, 160, 224
    constexpr upL_t lanes() const { return block_lanes(b); }
    constexpr upL_t row() const { return lanes() + 1; }  // with the padding
    constexpr upL_t row_doubles() const { return row() * vector_doubles; }
    constexpr upL_t block_vectors() const { return row() * a; }
    constexpr upL_t block_doubles() const { return block_vectors() * vector_doubles; }
    constexpr upL_t block_bytes() const { return block_vectors() * vector_bytes; }
    constexpr bool long_enough() const { return c >= t() + 4; }  // for a transform
    constexpr unsigned levels() const { return c - t(); }        // binary levels above a block
    constexpr upL_t blocks() const { return upL_t{1} << levels(); }
    constexpr upL_t points() const { return upL_t{b} << c; }
    constexpr unsigned log2_points() const { return c + (b == 1 ? 0 : b == 3 ? 2 : 3); }  // rounded up
    constexpr unsigned input_bits() const { return (a - 1) * 24; }                        // of a point
    constexpr upL_t input_bytes() const { return n() * input_bits() / 8; }                // of a block
    constexpr upL_t input_words() const { return input_bytes() / 4; }                     // of 32 bits
    constexpr u64_t capacity() const { return u64_t{input_bits()} * points(); }           // bits of a product

    // Binary levels above a block that a contiguous part has at most.
    constexpr unsigned part_levels() const {
        return static_cast<unsigned>(std::bit_width(max_part_bytes / block_bytes())) - 1;
    }
    // Binary levels of a column.
    constexpr unsigned max_column_levels() const {
        return static_cast<unsigned>(std::bit_width(max_column_bytes / (row() * vector_bytes))) - 1;
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

inline constexpr upL_t max_input_bytes = Geometry{max_primes, 7, 9}.input_bytes();

static_assert(Geometry{4, 1, 10}.capacity() == 73728);
static_assert(Geometry{8, 1, 28}.capacity() == 45097156608);

}  // namespace znp::vst
