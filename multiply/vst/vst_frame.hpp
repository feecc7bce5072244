// What the passes of a VST work on.
#pragma once

#include "foundation/types.hpp"
#include "multiply/vst/geometry.hpp"
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

// L 32-bit words, at most the capacity, read as bytes.
struct Operand {
    const std::byte* words;
    upL_t L;
};

// Where the words of a result are: those of blocks that lie wholly in the window [s, e) at R, where they
// belong; those of the others at the beginning of their block of the image.
struct Result {
    std::byte* R;
    upL_t s, e;  // in 32-bit words
};

// What an inverse hands on beside the words. The redundancy check judges the high parts: if they are too
// large, the words are wrong.
struct Outcome {
    u64_t high_parts;  // of all coefficients, above 2 input_bits: their OR
    bool top;          // negacyclic: the value is 2^capacity, and all words are zero
};

}  // namespace znp::vst
