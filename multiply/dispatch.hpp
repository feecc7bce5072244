// Products of words by the algorithm that the selection tables name for their length. This is the header that
// number objects include.
//
// With n, La and Lb for the operands' lengths, T has 2 n or La + Lb words; a window's end is at most the
// product's length. The result overlaps nothing. An operand of length 0 gives zeros.
//
// bp's work buffer must have work_bytes_for<word>(key, bp.tds) bytes (mulp: with use_mulp), key being the
// product length. For windows that is the length of the narrowed operands' product: 2 n after
// bkt::narrow_sqr, La + Lb after bkt::narrow_mul. The whole product's length is always enough.
//
// The value of a window is the narrowed product's: the words of the operands that cannot reach the window do
// not count, so its lowest words can lack the carry from below. Callers keep guard words there.
//
// A length beyond the tables is the generic exception, code size_beyond_tables.
#pragma once

#include "multiply/basic_parameters.hpp"
#include "multiply/multiplier.hpp"
#include "multiply/transform.hpp"
#include "multiply/word_span.hpp"

namespace znp {

template <class word>
void sqr(const BasicParameters& bp, word* T, WordSpan<word> A);
template <class word>
void mul(const BasicParameters& bp, word* T, WordSpan<word> A, WordSpan<word> B);
template <class word>
void sqr_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A);
template <class word>
void mul_window(const BasicParameters& bp, Window<word> R, WordSpan<word> A, WordSpan<word> B);

// mul_window by the route of the algorithm that splits a product in two half-length convolutions, if it has
// one.
template <class word>
void mulp(const BasicParameters& bp, Window<word> R, WordSpan<word> A, WordSpan<word> B);

// A window of the whole product, of operands that are not narrowed, with its guard residues; checked_mulp by
// the route of mulp. B may be A.
CheckedResult checked_mul(const BasicParameters& bp, Window<c64i> R, WordSpan<c64i> A, WordSpan<c64i> B);
CheckedResult checked_mulp(const BasicParameters& bp, Window<c64i> R, WordSpan<c64i> A, WordSpan<c64i> B);

// The transform for a product of L words, in the slot, in place of the one that was there.
template <class word>
transform& make_transform(const BasicParameters& bp, TransformSlot& slot, upL_t L);

// Bytes of a work buffer with which every product of up to L words can be made. use_mulp: by mulp.
template <class word>
upL_t work_bytes_for(upL_t L, u64_t threads, bool use_mulp = false);

}  // namespace znp
