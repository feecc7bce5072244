// The negacyclic offset.
//
// Coefficients modulo X^N + 1 have both signs. K = 2^(2 input_bits + d), with 2^d the bound of the redundancy
// check, is added to each, which makes them positive and below 2 K. What was added to the result,
//
//     K sum 2^(input_bits i), i < points   =   sum 2^(input_bits i + d), 2 <= i < points + 2
//                                          =   sum 2^(input_bits i + d), i < points
//                                              - 2 (2^d + 2^(input_bits + d))   modulo 2^capacity + 1,
//
// is a pattern that is the same in every block, and a number that is put right at the end.
#pragma once

#include "multiply/vst/result_words.hpp"

namespace znp::vst {

// K modulo prime s times the factor crt_inverses, as the scaled residues have it.
double scaled_offset(const Frame& frame, unsigned s);

// The pattern of a block: input_words 32-bit words at the beginning of the frame's scratch.
constexpr upL_t pattern_bytes(const Geometry& g) {
    return whole_vector_bytes(g.input_bytes());
}
void make_pattern(const Frame& frame);

// Takes the pattern and a borrow off a block's words; returns the borrow.
bool subtract_pattern(const Frame& frame, std::byte* words, bool borrow);

// What the pattern takes off too much.
void correct_offset(const Geometry& g, ResultWords& words);

}  // namespace znp::vst
