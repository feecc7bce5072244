// Sizes that the output stages share: of their work, and of the numbers that they take.
#pragma once

#include "foundation/types.hpp"
#include "multiply/kernels/digit_conversion.hpp"

namespace znp {

constexpr upL_t hexadecimal_words(u64_t hex) {
    return (hex - 1) / CVN::hexadecimal_digits + 1;
}

// Words of base 10^19 that are converted: 39 to 57 digits more than wanted.
constexpr upL_t decimal_words(u64_t dec) {
    return dec / CVN::decimal_digits + 3;
}

// Words behind the point: as few as the wanted digits need, and as many as are looked at. p words hold a word
// in front of the point and all wanted digits; formulas keep two more, and may need none for an integer part.
constexpr upL_t least_fraction(upL_t p) {
    return p - 1;
}
constexpr upL_t most_fraction(upL_t p) {
    return p + 2;
}

// Work buffers of the conversion to w words and of its verification. A size beyond all multipliers throws.
upL_t conversion_work_bytes(upL_t w, u64_t threads);
upL_t verification_work_bytes(u64_t dec, u64_t threads);

}  // namespace znp
