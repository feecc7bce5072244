// The leaf of the radix conversion: the only place where digit words are made.
#pragma once

#include "foundation/types.hpp"

namespace znp::radix {

// Most digit words of a leaf, and the fraction words that a leaf of n needs: two beyond its digits, so that
// what is dropped on the way cannot reach the overlap word.
inline constexpr upL_t max_leaf = 15;
constexpr upL_t leaf_fraction_words(upL_t n) {
    return n + 2;
}

// The first n words of a fraction in the radix, n at most max_leaf, and the word behind them, which is
// returned. The fraction is the n + 2 words that end at `end`; they are destroyed. out[0..n), least
// significant first, overlaps nothing.
//
// A word is the carry of the fraction times the radix. After each product the lowest fraction word is
// dropped: what it could still add to the word behind the last is less than 2^-60. No division; (n^2 + 5 n +
// 4) / 2 word products, about one a cycle.
cdi convert_leaf(cdi* out, upL_t n, cdi* end, cdi radix);

// The plain form against which the tuned one is tested.
cdi convert_leaf_reference(cdi* out, upL_t n, cdi* end, cdi radix);

}  // namespace znp::radix
