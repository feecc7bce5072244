// Twiddle tables of the floating-point FFT, and the tree of polynomials that they belong to.
//
// A transform of N = k 2^p real points works modulo X^M - i, M = N/2 (the right-angle convolution: the lower
// half of the points is the real part, the upper half the imaginary part). Each radix-4 step splits
//
//     X^(4m) - e^(4 ia)   into   X^m - e^(ia), X^m + e^(ia), X^m - i e^(ia), X^m + i e^(ia),
//
// in this order. So the block j at depth d (d binary levels below the root, 2^d blocks, children 4j .. 4j+3)
// is X^(M/2^d) - e^(4ia) with
//
//     a = 2 pi (4 bitreverse_d(j) + 1) / 2^(d+4),
//
// which does not depend on k and p: one table, read sequentially, serves every size, and the weights of the
// right-angle convolution are part of it. The tree is left after p-1 (p odd) or p-2 (p even) binary levels,
// with leaves X^C - rho, C = k or 2k, whose products are made directly: for k = 3 and 5 that is fewer
// operations than three passes of radix k.
//
// The angles are taken from the standard library's sine and cosine in the first octant, and reflected
// exactly.
#pragma once

#include "foundation/types.hpp"

namespace znp::fft {

struct Root {
    double c, s;  // cosine, sine
};

// e^(2 pi i num / 2^log2_den), correct to within one unit of the last place of each part.
Root unit_root(u64_t num, unsigned log2_den);

// e^(i pi/8), the root of the first step, and its third power e^(3 i pi/8).
inline constexpr double root_c = 0.9238795325112867;
inline constexpr double root_s = 0.3826834323650898;
inline constexpr double root_half = 0.7071067811865476;

// What the step at one block needs, with e = e^(ia) of the block and e_l = e^(ia) of its four children:
// the powers 1, 2, 3 of e_0 .. e_3 as vectors, and those of e to be broadcast.
struct alignas(32) BlockTwiddles {
    double child_c[3][4];
    double child_s[3][4];
    double c[3];
    double s[3];
    double unused[2];
};
static_assert(sizeof(BlockTwiddles) == 256);

inline constexpr unsigned max_depth = 20;  // of any block with a table entry

}  // namespace znp::fft

namespace znp {

// Header of the tables in the table holder's memory. level[d] has 2^d entries for even d, 2 to depth.
struct alignas(32) FFTTables {
    u64_t depth;
    const fft::BlockTwiddles* level[fft::max_depth + 1];
};

}  // namespace znp

namespace znp::fft {

// Depth of the blocks at which a size of the given p needs the last table level: even; p from 7 to 24.
constexpr unsigned bottom_depth(unsigned p) {
    return (p - 5) & ~1u;
}

// Bytes of tables down to an even depth, and their construction at memory (32-byte aligned), which returns
// the end of what it used.
upL_t tables_bytes(unsigned depth);
std::byte* build_tables(const FFTTables*& tables, unsigned depth, std::byte* memory);

}  // namespace znp::fft
