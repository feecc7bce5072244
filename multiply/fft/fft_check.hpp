// The check of the floating-point FFT: every point of a result lies near an integer.
//
// The last pass looks at three of eight points, each within 1/8 of an integer or not, which costs it two
// instructions for four points. If one of them strays, all are examined here: the rounding errors of wide
// rows reach beyond 1/8 for extreme operands, but not to the limit. What goes wrong in an image, in the
// tables or in a step of a transform adds a wave of any amplitude to the points of the result, or to those of
// a part of them, and a wave that moves a point by one half or more moves others by a fraction. A wrong digit
// of an operand or of a result moves points by integers: the residues see those.
//
// Serial, no allocation. Cost of the look: 1.7 % of the instructions of the shortest product (128 points),
// 0.8 % of those of one of 32,768. An examination is scalar and takes the time of two or three products:
// faults cause one, and extreme operands of the wide rows.
#pragma once

#include "foundation/types.hpp"

namespace znp::fft {

// How far a rounding error may go: ten times its root mean square for maximal digits that fill all points
// (docs/FFT_ERRORS.md, sigma), at least 1/8, at most 29/64: an error of
// 1/2 or more, which makes a wrong digit, shows as 1/2 or as what is left to the next integer, in steps of
// 1/32 for the largest points of the widest rows. Errors observed reach 6.6 times sigma.
double distance_limit(upL_t N, unsigned w);

// The largest distance of a point from an integer, operation by operation as the last pass computes them; a
// point that is not below 2^49 in magnitude counts as 1.
double largest_distance(const double* image, upL_t N, double scale);

// What the last pass returns.
bool has_strays(const double* image, upL_t N, double scale);

// The image of a last pass that found strays. Beyond the limit: says so on the console and raises the generic
// exception with code 1.
void check_distances(const double* image, upL_t N, unsigned w, double scale);

}  // namespace znp::fft
