// Products of words by the algorithm that the selection tables name for their length. This is the header that
// number objects include.
//
// T has 2 n, La + Lb, or (windows) e - s words and overlaps nothing. bp's work buffer must have
// work_bytes_for<word>(key) bytes, key the product length (windows: of the narrowed operands; the whole
// product length is always enough). A window's lowest word can lack a carry from the words below it that were
// not computed: see multiply/bkt/window.hpp.
#pragma once

#include "multiply/basic_parameters.hpp"
#include "multiply/multiplier.hpp"
#include "multiply/transform.hpp"

namespace znp {

template <class word>
void sqr(const BasicParameters& bp, word* T, const word* A, upL_t n);
template <class word>
void mul(const BasicParameters& bp, word* T, const word* A, upL_t La, const word* B, upL_t Lb);
template <class word>
void sqr_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A, upL_t n);
template <class word>
void mul_window(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A, upL_t La, const word* B,
                upL_t Lb);
template <class word>
void mulp(const BasicParameters& bp, word* T, upL_t s, upL_t e, const word* A, upL_t La, const word* B,
          upL_t Lb);

// The transform for a product of L words, in the slot.
template <class word>
transform& make_transform(const BasicParameters& bp, TransformSlot& slot, upL_t L);

// Bytes of a work buffer with which every product of up to L words can be made.
template <class word>
upL_t work_bytes_for(upL_t L, u64_t threads, bool use_mulp = false);

}  // namespace znp
