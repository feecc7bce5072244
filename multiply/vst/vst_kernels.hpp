// The steps of the VST on the data of one prime.
//
// Serial, no allocation. Data as in geometry.hpp; `stride` counts doubles from a row of points to the next.
// Bounds are in multiples of the prime p. A product with |x| <= B p, |y| <= p / 2 has |result| <= (1/2 +
// B/32) p, see vst_vector.hpp, and all values stay below 16 p < 2^52.
#pragma once

#include "multiply/vst/vst_tables.hpp"

namespace znp::vst {

// The longest subtree that local_twiddles serves, in levels.
inline constexpr unsigned max_local_levels = 16;

// Twiddles of the subtree below `node`: at 2^e + j that of its node 2^e node + j, e < levels, j < 2^e.
// out has 2^levels + 4 elements, aligned to 32.
void local_twiddles(double* out, const PrimeTables& tables, Direction direction, u64_t node, unsigned levels);

// b > 1. The powers 1 to b - 1 of the root v of the block nodes below `node`, each `nodes` long, and the
// weights v z^k of its polynomials X^4 - v z^k, `nodes` b long. log2(nodes) = levels.
void local_powers(double* out, const PrimeTables& tables, unsigned b, upL_t block_nodes, Direction direction,
                  u64_t node, unsigned levels);
void local_weights(double* out, const PrimeTables& tables, unsigned b, u64_t node, unsigned levels);

// `levels` binary levels on 2^levels rows of `count` vectors, with the twiddles of their subtree.
// forward: input below 9 p; output below 13 p. reduce says that the input may exceed p.
// inverse: input below 2.7 p; output below 1.4 p, levels times multiplied by two.
struct Rows {
    double* data;
    upL_t stride;  // in doubles
    upL_t count;   // vectors of a row
    const double* twiddles;
    const PrimeTables* prime;
};
void forward_levels(const Rows& rows, unsigned levels, bool reduce);
void inverse_levels(const Rows& rows, unsigned levels);

// What the blocks of a part need beside the twiddles, which go down to their nodes.
struct PartTwiddles {
    const double* twiddles[2];  // local_twiddles of levels + block_levels(b)
    const double* powers[2];    // b > 1
    const double* weights;      // b > 1
    upL_t nodes;                // 2^levels 8, b > 1
};

// A contiguous part: `levels` binary levels on 2^levels blocks and those in the blocks. The inverse begins
// with the pointwise product by the part at `other` (may be data itself: the square; null: none).
struct Part {
    double* data;
    upL_t stride;
    unsigned b, levels;
    PartTwiddles twiddles;
    const PrimeTables* prime;
};
void forward_part(const Part& part, bool reduce);
void inverse_part(const Part& part, const double* other);

// The blocks [first, first + count) of a part alone.
void forward_blocks(const Part& part, upL_t first, upL_t count);
void inverse_blocks(const Part& part, const double* other, upL_t first, upL_t count);

// x = x scale for count vectors: input below 1.4 p, output below 0.55 p.
void scale_row(double* x, upL_t count, double scale, const PrimeTables& prime);
// The same with x + offset, both scaled already: output below 0.55 p.
void scale_row_offset(double* x, upL_t count, double scale, double offset, const PrimeTables& prime);

}  // namespace znp::vst
