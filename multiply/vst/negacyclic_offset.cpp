#include "multiply/vst/negacyclic_offset.hpp"

#include <cstring>
#include <initializer_list>

#include "multiply/vst/byte_words.hpp"

namespace znp::vst {

namespace {

unsigned offset_shift(const Geometry& g) {
    return g.c + (g.b == 1 ? 0 : g.b == 3 ? 2 : 3);
}

u64_t* pattern(const Frame& frame) {
    return reinterpret_cast<u64_t*>(frame.scratch);
}

}  // namespace

double scaled_offset(const Frame& frame, unsigned s) {
    const PrimeSet& set = *frame.tables->set;
    const auto p = static_cast<s128_t>(set.primes[s]);
    auto x = static_cast<s128_t>(set.crt_inverses[s]);
    const unsigned exponent = 2 * frame.geometry.input_bits() + offset_shift(frame.geometry);
    for (unsigned i = 0; i < exponent; i++) x = 2 * x % p;
    if (x > p / 2) x -= p;
    if (x < -(p / 2)) x += p;
    return static_cast<double>(static_cast<s64_t>(x));
}

void make_pattern(const Frame& frame) {
    const Geometry& g = frame.geometry;
    u64_t* const words = pattern(frame);
    std::memset(words, 0, g.input_words() * 4);
    for (upL_t i = 0; i < g.n(); i++) {
        const upL_t bit = i * g.input_bits() + offset_shift(g);
        words[bit / 64] |= u64_t{1} << (bit % 64);
    }
}

u64_t subtract_pattern(const Frame& frame, std::byte* words, u64_t borrow) {
    const u64_t* const y = pattern(frame);
    for (upL_t i = 0; i < frame.geometry.input_words() / 2; i++) {
        const u64_t word = load_word(words + 8 * i);
        const u64_t difference = word - y[i];
        store_word(words + 8 * i, difference - borrow);
        borrow = static_cast<u64_t>(word < y[i]) | static_cast<u64_t>(difference < borrow);
    }
    return borrow;
}

void correct_offset(const Geometry& g, ResultWords& words) {
    const unsigned d = offset_shift(g) + 1;
    u64_t number[8] = {};
    for (const unsigned bit : {d, d + g.input_bits()}) number[bit / 64] |= u64_t{1} << (bit % 64);
    words.add(0, number, 8, false);
}

}  // namespace znp::vst
