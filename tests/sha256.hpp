// SHA-256 of a text, as lower-case hexadecimal digits. FIPS 180-4.
#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace znp::testing {

namespace sha256_detail {

using State = std::array<std::uint32_t, 8>;

constexpr std::array<std::uint32_t, 64> primes() {
    std::array<std::uint32_t, 64> found{};
    std::size_t count = 0;
    for (std::uint32_t n = 2; count < found.size(); n++) {
        bool prime = true;
        for (std::uint32_t d = 2; d * d <= n; d++) prime = prime && n % d != 0;
        if (prime) found[count++] = n;
    }
    return found;
}

// The first 32 bits of the fraction of a root.
inline std::uint32_t fraction_bits(long double root) {
    return static_cast<std::uint32_t>(std::floor(std::ldexp(root - std::floor(root), 32)));
}

inline std::array<std::uint32_t, 64> round_constants() {
    std::array<std::uint32_t, 64> k{};
    for (std::size_t i = 0; i < k.size(); i++)
        k[i] = fraction_bits(std::cbrt(static_cast<long double>(primes()[i])));
    return k;
}

inline State initial_state() {
    State state{};
    for (std::size_t i = 0; i < state.size(); i++) {
        state[i] = fraction_bits(std::sqrt(static_cast<long double>(primes()[i])));
    }
    return state;
}

inline void add_block(State& state, const unsigned char* block) {
    static const std::array<std::uint32_t, 64> k = round_constants();
    std::array<std::uint32_t, 64> w{};
    for (std::size_t i = 0; i < 16; i++) {
        for (std::size_t j = 0; j < 4; j++) w[i] = w[i] << 8 | block[4 * i + j];
    }
    for (std::size_t i = 16; i < 64; i++) {
        const std::uint32_t a = w[i - 15], b = w[i - 2];
        w[i] = w[i - 16] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3) + w[i - 7] +
               (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10);
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t i = 0; i < 64; i++) {
        const std::uint32_t s1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
        const std::uint32_t t1 = h + s1 + ((e & f) ^ (~e & g)) + k[i] + w[i];
        const std::uint32_t s0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
        const std::uint32_t t2 = s0 + ((a & b) ^ (a & c) ^ (b & c));
        h = g, g = f, f = e, e = d + t1, d = c, c = b, b = a, a = t1 + t2;
    }
    const State result{a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < state.size(); i++) state[i] += result[i];
}

}  // namespace sha256_detail

inline std::string sha256(std::string text) {
    const std::uint64_t bits = std::uint64_t{text.size()} * 8;
    text += '\x80';
    while (text.size() % 64 != 56) text += '\0';
    for (int shift = 56; shift >= 0; shift -= 8) text += static_cast<char>(bits >> shift & 0xff);

    sha256_detail::State state = sha256_detail::initial_state();
    for (std::size_t i = 0; i < text.size(); i += 64) {
        sha256_detail::add_block(state, reinterpret_cast<const unsigned char*>(text.data()) + i);
    }
    std::string digits;
    for (const std::uint32_t word : state) {
        std::array<char, 9> buffer{};
        std::snprintf(buffer.data(), buffer.size(), "%08x", word);
        digits += buffer.data();
    }
    return digits;
}

}  // namespace znp::testing
