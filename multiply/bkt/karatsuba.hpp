// Karatsuba products, subtractive form, over the basecase.
//
// Same rules for operands and T as the basecase. S is scratch of exactly the bytes that the query gives,
// aligned to a word, disjoint from everything else. No allocation. Cost about n^1.585.
#pragma once

#include "foundation/types.hpp"

namespace znp::bkt {

// Lengths in words from which an operation splits, at least 2. Read on each call; settable. A 64-bit square
// also looks at kar_mul_c64i: it splits further only if its upper half has that length.
extern upL_t kar_sqr_c32i;
extern upL_t kar_mul_c32i;
extern upL_t kar_sqr_c64i;
extern upL_t kar_mul_c64i;

void sqr(const c32i* A, upL_t n, c32i* T, c32i* S);
void sqr(const c64i* A, upL_t n, c64i* T, c64i* S);
void elm(const c32i* A, const c32i* B, upL_t n, c32i* T, c32i* S);
void elm(const c64i* A, const c64i* B, upL_t n, c64i* T, c64i* S);
void mul(const c32i* A, upL_t La, const c32i* B, upL_t Lb, c32i* T, c32i* S);
void mul(const c64i* A, upL_t La, const c64i* B, upL_t Lb, c64i* T, c64i* S);

// Bytes of scratch of the three above, at the present thresholds: for every level the product of the
// differences, and in mul besides a product of twice the shorter length.
template <class word>
upL_t sqr_bytes(upL_t n);
template <class word>
upL_t elm_bytes(upL_t n);
template <class word>
upL_t mul_bytes(upL_t La, upL_t Lb);

}  // namespace znp::bkt
