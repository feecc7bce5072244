// The shape of a VST of b 2^c points over a primes, and of its data.
//
// A point carries input_bits of input and is a vector of a residues. Points are grouped in blocks of
// n = b 2^t consecutive points. A block holds, for each prime, `lanes` vectors of 4 neighbouring points and
// one vector of padding, which keeps the primes of a block from falling on the same cache sets:
//
//     block i, prime s, point j of the block:   double at ((i block_vectors + s row) 4 + j)
//
// The data are residues as integer-valued doubles. They are never permuted: a forward transform leaves them
// in bit-reversed order, and the inverse starts there.
#pragma once

#include "foundation/types.hpp"

namespace znp::vst {

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
    constexpr upL_t image_bytes() const { return blocks() * block_bytes(); }

    constexpr bool operator==(const Geometry&) const = default;
};

static_assert(Geometry{4, 1, 10}.capacity() == 73728);
static_assert(Geometry{8, 1, 28}.capacity() == 45097156608);

}  // namespace znp::vst
