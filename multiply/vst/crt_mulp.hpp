// CRT_mulp: a product from two transforms of half its length.
//
// With N = transform.capacity and the product C of operands of 2 N bits together, a cyclic convolution gives
// C modulo 2^N - 1 and a negacyclic one C modulo 2^N + 1. The moduli are coprime, so both residues give C
// modulo their product 2^(2N) - 1, which is C itself: a half-sum and a half-difference. The two run one after
// the other in the work area of one transform of half the length.
//
// Cost: two products of half the length and a few passes over the operands; serial beside the transforms.
#pragma once

#include "multiply/basic_parameters.hpp"
#include "multiply/vst/vst_transform.hpp"

namespace znp {

// Bytes of a work buffer: two images, the words of half a product, and the transform's scratch. At most 4.8
// bytes a byte of the longest product, where two images of the full length have up to 7.3.
upL_t crt_mulp_bytes(const VST& transform);

// Where the whole product lies in the work buffer afterwards: its halves, of N bits each.
template <class word>
struct CRTHalves {
    const word* lower;
    const word* upper;
    upL_t L;  // words of a half
};

// A window of the product, which ends at most at its length. The operands are in no order of length. More
// than 2 N bits together is the generic exception with a text as location. An operand of no words gives
// zeros, and no halves.
template <class word>
CRTHalves<word> CRT_mulp(const VST& transform, const BasicParameters& bp, Window<word> R, WordSpan<word> A,
                         WordSpan<word> B);

// The same with the guard residues of the product.
CheckedResult checked_CRT_mulp(const VST& transform, const BasicParameters& bp, Window<c64i> R,
                               WordSpan<c64i> A, WordSpan<c64i> B);

}  // namespace znp
