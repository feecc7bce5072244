// The merges of two neighbouring ranges, for each class of series, over exact numbers.
//
// The operands are the left and the right results; each result goes to a buffer that starts where the left
// operand of its name does, and may overlap it and a right operand, since every operand is transformed (or,
// of short numbers, multiplied) before its words are overwritten. The sizes: a product's La + Lb words, for
// a sum one more. Work buffer: work_bytes_for the longest product. Zero words at the low end of Q and R drop
// out in multiples of four.
#pragma once

#include <algorithm>

#include "multiply/basic_parameters.hpp"
#include "numbers/big_float.hpp"
#include "numbers/exact_float.hpp"

namespace znp {

using SeriesInt = BasicIntR<cdi>;
using ExactR = ExactFloatR<cdi>;
using Exact = ExactFloat<cdi>;

// Products of at most so many words are made directly, in a buffer on the stack, without images.
inline constexpr upL_t direct_merge_words = 58;

// P = Pl Qr +- Pr, Q = Ql Qr. Pr overlaps neither buffer.
void merge_P2B1(const BasicParameters& bp, ExactR& P, ExactR& Q, const Exact& Pl, const Exact& Ql,
                const Exact& Pr, const Exact& Qr, bool subtract);

// P = Pl Qr +- Ql Pr, Q = Ql Qr; t is a temporary of P's size.
void merge_P2B2(const BasicParameters& bp, ExactR& P, ExactR& Q, ExactR& t, const Exact& Pl, const Exact& Ql,
                const Exact& Pr, const Exact& Qr, bool subtract);

// P = Pl Qr +- Rl Pr, Q = Ql Qr and, if R is wanted (not null), R = Rl Rr; t is a temporary of P's size.
struct P2B3Operands {
    const Exact &P, &Q, &R;
};
void merge_P2B3(const BasicParameters& bp, ExactR& P, ExactR& Q, ExactR* R, ExactR& t,
                const P2B3Operands& left, const P2B3Operands& right, bool subtract);

}  // namespace znp
