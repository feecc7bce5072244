// Sums and differences of floats of any storage.
//
// A float tells the positions of its mantissa and gives its words in windows, with zeros outside, so that
// operands of any alignment are alike; the words of the result go to a sink, window by window from the lowest
// one up. Each operand is read once. Cost: one pass over the positions of the result.
#pragma once

#include <algorithm>
#include <concepts>

#include "foundation/types.hpp"
#include "multiply/kernels/word_arrays.hpp"

namespace znp {

template <class F>
concept WindowedFloat = requires(const F& x, cdi* out, s64_t position, upL_t n) {
    { x.get_exp() } -> std::same_as<s64_t>;
    { x.get_mag() } -> std::same_as<s64_t>;
    x.read_window(out, position, n);
};

// The lowest position and the words of a sum or difference to p words.
struct SumRange {
    s64_t bottom;
    upL_t L;

    template <WindowedFloat A, WindowedFloat B>
    SumRange(const A& a, const B& b, upL_t p) {
        const s64_t top = std::max(a.get_mag(), b.get_mag());
        bottom = std::max(top - static_cast<s64_t>(p) - 1, std::min(a.get_exp(), b.get_exp()));
        L = static_cast<upL_t>(top - bottom);
    }
};

// Room for a window of each operand.
struct SumWindows {
    cdi *a, *b;
    upL_t words;
};

inline constexpr auto add_chain = [](cdi* T, const cdi* A, const cdi* B, upL_t n, bool carry) {
    return add_words(T, A, B, n, carry);
};
inline constexpr auto sub_chain = [](cdi* T, const cdi* A, const cdi* B, upL_t n, bool borrow) {
    return sub_words(T, A, B, n, borrow);
};

// The L words from position `bottom` on of both operands, combined by a chain; returns the carry out.
// sink(done, n, make) takes the words [done, done + n) of the result: make(T) writes them to T, which may be
// a's window.
template <WindowedFloat A, WindowedFloat B, class Chain, class Sink>
bool combine(const A& a, const B& b, s64_t bottom, upL_t L, const SumWindows& windows, Chain chain,
             Sink sink) {
    bool carry = false;
    for (upL_t done = 0; done < L; done += windows.words) {
        const upL_t n = std::min(windows.words, L - done);
        const s64_t position = bottom + static_cast<s64_t>(done);
        a.read_window(windows.a, position, n);
        b.read_window(windows.b, position, n);
        sink(done, n, [&](cdi* T) { carry = chain(T, windows.a, windows.b, n, carry); });
    }
    return carry;
}

}  // namespace znp
