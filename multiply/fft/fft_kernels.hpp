// The steps of the floating-point FFT on one image.
//
// Data: an image is N doubles, in groups of 4 real and then 4 imaginary parts. Complex point j (0 .. M-1, M =
// N/2) is lane j & 3 of group j >> 2 until the bottom of the tree; there, the 16 C points of a bottom block
// become, in place, 4 leaves of C coefficients in 4 lanes: group r C + t, lane l is the coefficient of X^t of
// the leaf r of child l. Nothing outside sees that order: only the inverse reads it.
//
//   forward:  first_pass (digits of the operand, two levels), forward_tree (all further levels)
//   inverse:  inverse_tree (pointwise step in the lowest levels), last_pass (two levels, rounding, carry,
//   words)
//
// Images are aligned to 32 bytes. Serial, no allocation. Cost: about 2.5 N log2 N floating-point operations.
#pragma once

#include "multiply/fft/fft_tables.hpp"

namespace znp::fft {

// Where the eight digit streams of an operand begin. Stream s holds the digits s N/8 .. (s+1) N/8 - 1, w bits
// each; 16 bytes behind a stream's end are read, too. upper: whether streams 4 to 7 are not all zero.
struct DigitStreams {
    const std::byte* begin[8];
    bool upper;
};

void first_pass(double* image, upL_t N, unsigned w, const DigitStreams& digits);

// C = k or 2k: the length of the leaves.
void forward_tree(double* image, upL_t N, unsigned C, const FFTTables& tables);

// The pointwise step is the square (B = image), the product (B another image), or none (B null).
void inverse_tree(double* image, const double* B, upL_t N, unsigned C, const FFTTables& tables);

// Rounds scale times the points to integers, propagates carries within each of the eight streams and packs
// the digits: stream s to the byte s N/8 w/8 of words, N w bits in all. carry[s] is what leaves the end of
// stream s. scale is a power of two; the scaled points are below 2^49 in magnitude; w is 9 to 21. Returns
// whether one of the points that it looked at (three of eight) is farther than 1/8 from an integer or too
// large: then the image, which stays as it was, is to be examined (fft_check.hpp).
bool last_pass(std::byte* words, s64_t carry[8], const double* image, upL_t N, unsigned w, double scale);

}  // namespace znp::fft
