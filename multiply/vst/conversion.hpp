// Between words and residues: what stands at both ends of a VST.
//
// Serial kernels on one block; the transform calls them block by block from its threads, fused with its
// outermost pass, so that a block is converted while it is in the cache. Vectorised; scalar references in
// conversion_reference.hpp.
#pragma once

#include "foundation/types.hpp"
#include "multiply/vst/geometry.hpp"
#include "multiply/vst/prime_sets.hpp"

namespace znp::vst {

// Residues of block i of an operand of L 32-bit words (read as bytes: may be unaligned to 8), times
// set.multipliers[s]^set.input_power modulo each prime, which inverse_scale takes out of products: balanced
// up to a rounding, |r| <= 0.6 p, at `block` (g.block_bytes(), aligned to vectors; the padding vectors are
// not written). Words past the operand count as zero; a block wholly past it is cleared.
void words_to_block(const Geometry& g, const PrimeSet& set, double* block, const std::byte* words, upL_t L,
                    upL_t i);

// The carries between neighbouring blocks: what a block adds above its own input_words.
struct BlockCarry {
    u64_t words[8];  // little endian number, added at the first bit of the next block
};

// The opposite: the n coefficients of a block, recovered, carried and written as the block's input_words
// words of the result. `block` has, for each coefficient and prime, the coefficient times
// set.crt_inverses[s] modulo the prime (inverse_scale has this factor), balanced up to a rounding,
// |r| <= 0.6 p; it is not changed. carry comes in from the block before and leaves for the one behind.
// Returns the OR of the coefficients' parts above 2 input_bits (shifted down to bit 0), which the redundancy
// check compares with its bound.
u64_t block_to_words(const Geometry& g, const PrimeSet& set, std::byte* words, const double* block,
                     BlockCarry& carry);

}  // namespace znp::vst
