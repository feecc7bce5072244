// The steps of the VST on the data of one prime.
//
// Serial, no allocation. Data as in geometry.hpp; `stride` counts doubles from a row of points to the next.
// Bounds are in multiples of the prime p; all values stay below 16 p < 2^52.
#pragma once

#include "multiply/vst/vst_tables.hpp"

namespace znp::vst {

// The longest subtree that local_twiddles serves, in levels.
inline constexpr unsigned max_local_levels = 16;

// Twiddles of the subtree below `node`: at 2^e + j that of its node 2^e node + j, e < levels, j < 2^e.
// out has 2^levels + vector_doubles elements, and the alignment of vectors.
void local_twiddles(double* out, const PrimeTables& tables, Direction direction, u64_t node, unsigned levels);

// b > 1. The powers 1 to b - 1 of the root v of the block nodes below `node`, each `nodes` long, and the
// weights v z^k of its polynomials X^4 - v z^k, `nodes` b long. log2(nodes) = levels.
void local_powers(double* out, const PrimeTables& tables, unsigned b, upL_t block_nodes, Direction direction,
                  u64_t node, unsigned levels);
void local_weights(double* out, const PrimeTables& tables, unsigned b, u64_t node, unsigned levels);

// out = factor x, and out = x y: count is rounded up to vectors, values up to 0.54 p in and out.
void scale_residues(double* out, double factor, const double* x, upL_t count, const PrimeTables& tables);
void multiply_residues(double* out, const double* x, const double* y, upL_t count, const PrimeTables& tables);

// Rows of points of one column. `twiddles`: local_twiddles of its subtree.
struct Rows {
    double* data;
    upL_t stride;  // in doubles
    upL_t count;   // vectors of a row
    const double* twiddles;
    const PrimeTables* prime;
    const double* next = nullptr;  // rows that are done after these: they come to the second-level cache
};

// What stands at the top of a forward step: any node with values up to p (any) or up to 10 p (large), or the
// root of X^N - 1, all of it or with zeros in its upper half, which are not read. A root has two levels at
// least, and values up to p.
enum class Top { any, large, root, half_root };

// `levels` binary levels on 2^levels rows. An inverse takes values below 1.2 p and gives values below 1.2 p,
// each level multiplying by two. The one that ends at the root multiplies by the scale, and its results are
// below 0.54 p.
void forward_levels(const Rows& rows, unsigned levels, Top top);
void inverse_levels(const Rows& rows, unsigned levels);
void inverse_levels_root(const Rows& rows, unsigned levels, double scale);

// What the blocks of a part need beside the twiddles, which go down to their nodes.
struct PartTwiddles {
    const double* twiddles[2];  // local_twiddles of levels + block_levels(b)
    const double* powers[2];    // b > 1
    const double* weights;      // b > 1
    upL_t nodes;                // 2^levels 8, b > 1
};

// A contiguous part: `levels` binary levels on 2^levels blocks and those in the blocks. The inverse begins
// with the pointwise product by the part at `other` (may be data itself: the square).
struct Part {
    double* data;
    upL_t stride;
    unsigned b, levels;
    PartTwiddles twiddles;
    const PrimeTables* prime;
    const double* next =
        nullptr;  // the part that is done after this one: a forward step brings it to the cache
};
void forward_part(const Part& part);
void inverse_part(const Part& part, const double* other);

// The blocks [first, first + count) of a part alone. Forward takes values up to 10 p; what it leaves is what
// the inverse takes, pointwise_bound of vst_bounds.hpp.
void forward_blocks(const Part& part, upL_t first, upL_t count);
void inverse_blocks(const Part& part, const double* other, upL_t first, upL_t count);

// x = x scale + offset for count vectors: input below 1.4 p, output below 0.54 p.
void scale_row_offset(double* x, upL_t count, double scale, double offset, const PrimeTables& prime);

}  // namespace znp::vst
