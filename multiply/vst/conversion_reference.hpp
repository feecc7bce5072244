// Scalar forms of the two conversions, by integer arithmetic: see conversion.hpp.
//
// The residues are those in [-(p - 1) / 2, (p - 1) / 2]; the vector forms may exceed that a little. A value
// that is not below the redundancy bound can differ by the product of the primes.
#pragma once

#include "multiply/vst/conversion.hpp"

namespace znp::vst {

void words_to_block_reference(const Geometry& g, const PrimeSet& set, double* block, const std::byte* words,
                              upL_t L, upL_t i);
u64_t block_to_words_reference(const Geometry& g, const PrimeSet& set, std::byte* words, const double* block,
                               BlockCarry& carry);

// Every residue of the block is an integer and |r| <= 0.6 p: what both conversions promise or ask. For
// assertions.
bool is_balanced(const Geometry& g, const PrimeSet& set, const double* block);

}  // namespace znp::vst
