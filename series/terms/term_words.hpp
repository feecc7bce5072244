// Products of a few words, unrolled: the arithmetic of a series' terms.
//
// Values of a fixed number of words, least significant first. Results have the words that the largest
// operands need, so nothing overflows; top words may be zero until store() strips them.
#pragma once

#include <algorithm>
#include <array>

#include "foundation/types.hpp"
#include "numbers/basic_int.hpp"

namespace znp::terms {

template <upL_t N>
using Words = std::array<u64_t, N>;

constexpr Words<2> two_words(u128_t x) {
    return {static_cast<u64_t>(x), static_cast<u64_t>(x >> 64)};
}

// a w + c.
template <upL_t N>
constexpr Words<N + 1> times(const Words<N>& a, u64_t w, u64_t c = 0) {
    Words<N + 1> out;
    for (upL_t i = 0; i < N; i++) {
        const u128_t x = static_cast<u128_t>(a[i]) * w + c;
        out[i] = static_cast<u64_t>(x);
        c = static_cast<u64_t>(x >> 64);
    }
    out[N] = c;
    return out;
}

// a b.
template <upL_t N, upL_t M>
constexpr Words<N + M> times(const Words<N>& a, const Words<M>& b) {
    Words<N + M> out{};
    for (upL_t j = 0; j < M; j++) {
        u64_t carry = 0;
        for (upL_t i = 0; i < N; i++) {
            const u128_t x = static_cast<u128_t>(a[i]) * b[j] + out[i + j] + carry;
            out[i + j] = static_cast<u64_t>(x);
            carry = static_cast<u64_t>(x >> 64);
        }
        out[j + N] = carry;
    }
    return out;
}

// The product of two, three, ... words.
constexpr Words<2> product(u64_t a, u64_t b) {
    return two_words(static_cast<u128_t>(a) * b);
}
template <class... Rest>
constexpr auto product(u64_t a, u64_t b, u64_t c, Rest... rest) {
    return times(product(b, c, rest...), a);
}

// The polynomial with these coefficients, from the highest power down, at b.
template <upL_t N>
constexpr Words<N> horner_from(const Words<N>& value, u64_t) {
    return value;
}
template <upL_t N, class... Rest>
constexpr auto horner_from(const Words<N>& value, u64_t b, u64_t c, Rest... rest) {
    return horner_from(times(value, b, c), b, rest...);
}
template <class... Rest>
constexpr auto horner(u64_t b, u64_t highest, Rest... rest) {
    return horner_from(Words<1>{highest}, b, static_cast<u64_t>(rest)...);
}

// x = value, in the N words that it may take.
template <upL_t N>
void store(BasicIntR& x, const char* location, const Words<N>& value) {
    x.check_size(location, N);
    std::copy_n(value.data(), N, x.get_T());
    x.set_LN(N);
}

}  // namespace znp::terms
