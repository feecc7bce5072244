// The passes of a VST over an image: words to the transform and back, split over threads.
//
// The rows of a column are converted when the first stage comes to them, and the words of a column are
// recovered as soon as its last inverse stage is done, so that with one column stage an image crosses the
// memory bus twice in each direction. See vst_stages.hpp for the division in stages.
#pragma once

#include "foundation/types.hpp"
#include "multiply/transform.hpp"
#include "multiply/vst/vst_frame.hpp"

namespace znp::vst {

// See vst_slot.hpp.
upL_t scratch_bytes(const Geometry& g, const Stages& stages, u64_t threads);

void forward_passes(const Frame& frame, double* image, const Operand& A);

// image = image other, back to words modulo 2^capacity -+ 1. other may be image: the
// square.
Outcome inverse_passes(const Frame& frame, double* image, const double* other, const Result& result);

// Both forward passes and the inverse in one: what is made of a contiguous part is used while it is in the
// cache. B null: the square of A; T2 is not used then. T2 is left undefined. The words of A may lie in T2,
// and so may those of the result.
Outcome product_passes(const Frame& frame, double* T1, double* T2, const Operand& A, const Operand* B,
                       const Result& result);

// The guard residues of a result (multiply/transform.hpp); the window lies between words of 64 bits.
CheckedResult checked_result(const Frame& frame, const double* image, const Result& result);

}  // namespace znp::vst
