// Twiddle tables of the VST, and the tree of polynomials that they belong to.
//
// A transform of N = b 2^c points works modulo X^N - 1, and a negacyclic one modulo X^N + 1, the right child
// of X^2N - 1 in the tree
//
//     X^(2m) - w   =   (X^m - sqrt w) (X^m + sqrt w).
//
// Its node j at depth d (children 2j, 2j + 1) is X^(N/2^d) - e(r(j)) with e(x) a root of unity of angle
// 2 pi x and r(j) the bits of j reversed behind the binary point: r(1) = 1/2, r(2) = 1/4, r(3) = 3/4. The
// twiddle of a node, T[j] = e(r(j) / 2), depends neither on d nor on N. Since r(j + 2^e k) = r(j) + r(2^e k)
// for j < 2^e,
//
//     T[2^e k + j] = T[2^e k] T[j],
//
// so that a table of a few hundred entries and one factor for each subtree serve every length: the twiddles
// of a subtree are made where it begins (local_twiddles), by one multiplication each, and stay in the cache.
// No table grows with the length of the transform.
//
// The binary levels end at a block's nodes X^(4b) - w. With v = w^(1/b), the root of 2-power order, and z of
// order b, these are split into X^4 - v z^k, k = 0 .. b-1, whose products are made directly. v goes by the
// bits of j in the same way.
#pragma once

#include "foundation/types.hpp"
#include "multiply/vst/geometry.hpp"
#include "multiply/vst/prime_sets.hpp"

namespace znp::vst {

enum Direction : unsigned { forward_direction = 0, inverse_direction = 1 };

// The constants of a DFT of b points with z (see odd_dft.hpp). With c_j = (z^j + z^-j) / 2 and
// s_j = (z^j - z^-j) / 2, j from 1 to (b - 1) / 2, the sums of pairs of inputs are multiplied by matrices of
// the c_j, the differences by matrices of the s_j.
struct OddConstants {
    double z;
    double mean[2];  // b = 5: -1/4. b = 7: the means of the c_j and of s_1, s_2, -s_3
    double factors[2][3];
};

// All residues balanced. The arrays hold one entry for each of the two directions, the second being the
// inverses of the first.
struct PrimeTables {
    double p;
    double inverse;               // 1 / p
    double product_magic;         // 1.5 2^(52+k), see WideSum
    OddConstants odd[2];          // b > 1
    const double* twiddles[2];    // T[j], j < table_nodes
    const double* bits[2];        // T[2^i]
    const double* powers[2];      // b > 1: V[j]^r at (r - 1) block_nodes + j, r from 1 to b - 1
    const double* power_bits[2];  // b > 1: V[2^i]
    const double* weights;        // b > 1: V[j] z^k at j b + k, j < block_nodes
};

// The tables of one set (a, b).
struct SetTables {
    Geometry geometry;  // of the largest transform served
    const PrimeSet* set;
    upL_t table_nodes;
    upL_t block_nodes;  // nodes X^(4b) - w of a part; b > 1
    PrimeTables prime[max_primes];
};

}  // namespace znp::vst

namespace znp {

struct VSTTables {
    const vst::SetTables* sets[7][4];  // by a - 3, (b - 1) / 2; null where the plan has none
};

}  // namespace znp

namespace znp::vst {

// Which sets, and for how long transforms: c of the largest, by a - 3 and (b - 1) / 2; 0 for a set that is
// not needed.
struct TablePlan {
    unsigned c[7][4] = {};

    TablePlan() = default;
    // All rows of the size plans up to the first that holds limit_bits.
    explicit TablePlan(u64_t limit_bits);
    void require(const Geometry& g);
};

// Bytes of the tables, and their construction at memory (aligned to vectors), which returns the end of what
// it used: exactly table_bytes behind memory. A few milliseconds. A set whose contiguous parts would have
// less than three levels, which no row of the size plans has, is the generic exception with code 1.
upL_t table_bytes(const TablePlan& plan);
std::byte* build_tables(const VSTTables*& tables, const TablePlan& plan, std::byte* memory);

}  // namespace znp::vst
