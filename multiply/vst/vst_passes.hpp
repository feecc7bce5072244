// The passes of a VST over an image: words to the transform and back, split over threads.
//
// The rows of a column are converted when the first stage comes to them, and the words of a column are
// recovered as soon as its last inverse stage is done, so that with one column stage an image crosses the
// memory bus twice in each direction. See vst_stages.hpp for the division in stages.
#pragma once

#include "foundation/types.hpp"
#include "multiply/vst/vst_frame.hpp"

namespace znp::vst {

// Scratch: see vst_slot.hpp. carry_bytes: of one thread.
upL_t carry_bytes(const Stages& stages);
upL_t scratch_bytes(const Geometry& g, const Stages& stages, u64_t threads);

// L 32-bit words, at most the capacity, read as bytes.
void forward_passes(const Frame& frame, double* image, const std::byte* words, upL_t L);

// image = image other (null: other is a copy of image), back to words modulo 2^capacity -+ 1. Returns the
// top bit: 1 means 2^capacity, with all words zero (negacyclic only). other may be image: the square.
u32_t inverse_passes(const Frame& frame, double* image, const double* other, const Result& result);

// Both forward passes and the inverse in one: what is made of a contiguous part is used while it is in the
// cache. B null: the square of A; T2 is not used then. T2 is left undefined. The words of A may lie in T2,
// and so may those of the result.
u32_t product_passes(const Frame& frame, double* T1, double* T2, const Operand& A, const Operand* B,
                     const Result& result);

// The residue of all words of the result, modulo 2^61 - 1.
u64_t hash_result(const Frame& frame, const double* image, const Result& result);

}  // namespace znp::vst
