// The output stages, which all constants share: the binary number to hexadecimal and decimal digits in files.
//
// The number: positive, its top word next to the point on either side (magnitude 1 or 0), and at least p - 1
// words behind the point, as the formulas deliver it. Another is a fatal error. Digits are truncated, never
// rounded. A file that cannot be written is an exception (digits/digit_writer.hpp).
//
// What leaves for a file is compared with the words that it was made from, by a hash of the text that was
// written, and those with the number. A file has its name only behind that: what else ends a run leaves it
// ".unverified". What came out wrong is made once more where that can help, and told ("... Failed -
// Reattempting..."); a second failure, or a number that has changed, is a fatal error ("...: Checksum
// Mismatch").
#pragma once

#include "compute/engine/stage_memory.hpp"
#include "digits/digit_writer.hpp"
#include "multiply/kernels/digit_conversion.hpp"
#include "numbers/radix_conversion.hpp"

namespace znp {

// Hexadecimal digits to their file, compared with the number; nothing if the run has none.
void write_hex(StageMemory& memory, const BigFloat& number);

// Converts the fraction to decimal, writes the digits and verifies the conversion against the binary number.
// The conversion's time counts as computation: the stopwatch, stopped before, runs meanwhile. A conversion or
// verification that notices its own failure is repeated without limit; for digits that disagree with the
// number all of it is done once more. A size beyond all multipliers throws.
void convert_and_write_B(StageMemory& memory, const BigFloat& number);

// What stands behind the stages. Tests let it fail; nothing else changes it.
struct ConversionCalls {
    decltype(&convert) conversion;
    decltype(&power_check) verification;
    decltype(&open_digit_writer) writer;
};
extern ConversionCalls conversion_calls;

// ---- Sizes

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

}  // namespace znp
