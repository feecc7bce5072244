#include "multiply/vst/negacyclic_offset.hpp"

#include <cstring>
#include <initializer_list>

#include "multiply/kernels/carry_loop.hpp"
#include "multiply/vst/field.hpp"

namespace znp::vst {

namespace {

u64_t* pattern(const Frame& frame) {
    return reinterpret_cast<u64_t*>(frame.scratch);
}

}  // namespace

double scaled_offset(const Frame& frame, unsigned s) {
    const PrimeSet& set = *frame.tables->set;
    const Field f(set.primes[s]);
    const u64_t K = f.power(2, 2 * frame.geometry.input_bits() + frame.geometry.log2_points());
    return f.balanced(f.mul(K, f.from(set.crt_inverses[s])));
}

void make_pattern(const Frame& frame) {
    const Geometry& g = frame.geometry;
    u64_t* const words = pattern(frame);
    std::memset(words, 0, g.input_bytes());
    for (upL_t i = 0; i < g.n(); i++) {
        const upL_t bit = i * g.input_bits() + g.log2_points();
        words[bit / 64] |= u64_t{1} << (bit % 64);
    }
}

bool subtract_pattern(const Frame& frame, std::byte* words, bool borrow) {
    return sub_loop(words, words, pattern(frame), frame.geometry.input_bytes() / 8, borrow);
}

void correct_offset(const Geometry& g, ResultWords& words) {
    const unsigned d = g.log2_points() + 1;
    u64_t number[8] = {};
    for (const unsigned bit : {d, d + g.input_bits()}) number[bit / 64] |= u64_t{1} << (bit % 64);
    words.add(0, number, 8, false);
}

}  // namespace znp::vst
