// The operands and the results of products.
#pragma once

#include <span>
#include <type_traits>

#include "foundation/types.hpp"

namespace znp {

// A number: its words, least significant first. As a parameter of a function template it deduces nothing, so
// that it takes {A, L} and containers; the word follows from the result.
template <class word>
using WordSpan = std::span<const std::type_identity_t<word>>;

// The words [s, e) of a result of any length, to be written to T[0..e - s).
template <class word>
struct Window {
    word* T;
    upL_t s, e;

    upL_t size() const { return e - s; }
};
template <class word>
Window(word*, upL_t, upL_t) -> Window<word>;

// Words as 32-bit ones: a 64-bit word is two of them, which are the same bytes on a little-endian machine.
// These hand on an address only: whoever gets them uses no object of type c32i behind it (see transform).
inline WordSpan<c32i> as_c32i(WordSpan<c32i> A) {
    return A;
}
inline WordSpan<c32i> as_c32i(WordSpan<c64i> A) {
    return {reinterpret_cast<const c32i*>(A.data()), 2 * A.size()};
}
inline Window<c32i> as_c32i(Window<c64i> R) {
    return {reinterpret_cast<c32i*>(R.T), 2 * R.s, 2 * R.e};
}

}  // namespace znp
