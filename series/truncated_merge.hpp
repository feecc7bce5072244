// Merges of floats, for what is not exact any more: the recursion with truncated products, and a section with
// the sum of all to its right.
//
// P = Pl Qr +- Rl Pr, Q = Ql Qr and, if R is wanted (not null), R = Rl Rr, each to p words: p + 2 are kept.
// What a series without R multiplies Pr with takes Rl's place. Of the second product in P only q words are
// made, or fewer where it lies so far below the first that P keeps less of it: q is what the right range
// needs. Qr may have as few words, since P and Q are multiplied with the same Qr and only their quotient
// counts.
//
// Buffers: p + 2 words for P, Q, R and the temporary x, q + 2 for t; a product that is shorter takes no more
// than its words, a sum one more. P may overlap any operand, Q those named Q, R those named R, and x the
// operand Pl. The work buffer serves a product of truncated_merge_words.
#pragma once

#include "multiply/basic_parameters.hpp"
#include "numbers/big_float.hpp"

namespace znp {

using FloatR = BigFloatR<cdi>;
using Float = BigFloat<cdi>;

struct TruncatedOperands {
    Float P, Q, R;
};

void truncated_merge(const BasicParameters& bp, FloatR& P, FloatR& Q, FloatR* R, FloatR& x, FloatR& t,
                     const TruncatedOperands& left, const TruncatedOperands& right, upL_t p, upL_t q,
                     bool subtract);

// The longest product, for operands of at most so many words.
upL_t truncated_merge_words(upL_t left, upL_t right, upL_t p);

// Drops low zero words in multiples of four. Same value.
void strip_low(FloatR& x);

}  // namespace znp
