// The passes of a VST over an image: words to the transform and back, split over threads.
//
// The rows of a column are converted when the first stage comes to them, and the words of a column are
// recovered as soon as its last inverse stage is done, so that with one column stage an image crosses the
// memory bus twice in each direction. See vst_stages.hpp for the division in stages.
#pragma once

#include "foundation/types.hpp"
#include "multiply/vst/conversion.hpp"
#include "multiply/vst/vst_stages.hpp"
#include "multiply/vst/vst_tables.hpp"

namespace znp::vst {

enum class Ring { cyclic, negacyclic };  // modulo X^N - 1, X^N + 1

// One transform at work.
struct Frame {
    const SetTables* tables;
    Geometry geometry;
    Stages stages;
    Ring ring;
    u64_t threads;
    std::byte* scratch;  // scratch_bytes
};

// Scratch: for each thread the twiddles of a subtree, a block of words, and a carry for each row of a column
// of the first stage.
upL_t carry_bytes(const Stages& stages);
upL_t scratch_bytes(const Geometry& g, const Stages& stages, u64_t threads);

// L 32-bit words, at most the capacity, read as bytes.
void forward_passes(const Frame& frame, double* image, const std::byte* words, upL_t L);

// Where the words of a result are: those of blocks that lie wholly in the window [s, e) at R, where they
// belong; those of the others at the beginning of their block of the image.
struct Result {
    std::byte* R;
    upL_t s, e;  // in 32-bit words
};

// image = image other (null: other is a copy of image), back to words modulo 2^capacity -+ 1. Returns the
// top bit: 1 means 2^capacity, with all words zero (negacyclic only). other may be image: the square.
u32_t inverse_passes(const Frame& frame, double* image, const double* other, const Result& result);

// Both forward passes and the inverse in one: what is made of a contiguous part is used while it is in the
// cache. B null: the square of A; T2 is not used then. T2 is left undefined.
struct Operand {
    const std::byte* words;
    upL_t L;
};
u32_t product_passes(const Frame& frame, double* T1, double* T2, const Operand& A, const Operand* B,
                     const Result& result);

// The residue of all words of the result, modulo 2^61 - 1.
u64_t hash_result(const Frame& frame, const double* image, const Result& result);

}  // namespace znp::vst
