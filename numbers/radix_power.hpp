// What is known of a power of a radix before it is computed, and the check of its words.
//
// A power is kept without its zero low words: radix^e = P 2^(64 z), with z the whole words of its low zero
// bits. 10^n has n of them, near a third of all.
#pragma once

#include "foundation/types.hpp"

namespace znp::radix {

struct PowerSize {
    upL_t least, most;  // words of radix^e, zero words included; differ only where a logarithm is too close
    upL_t zero_words;   // low words that are zero

    // Words of P.
    upL_t least_stripped() const { return least - zero_words; }
    upL_t most_stripped() const { return most - zero_words; }
};

// The radix is at least 2, radix^e below 2^(2^54).
PowerSize power_size(cdi radix, u64_t e);
double radix_bits(cdi radix);  // log2 of the radix

// P without zero words below and above: strips T[0..L). Returns the count of low words that were zero.
upL_t strip_zero_words(const cdi*& T, upL_t& L);

// Whether P 2^(64 zero_words) has the residue of radix^e. If not, says so on the console.
bool power_holds(cdi radix, u64_t e, const cdi* P, upL_t L, upL_t zero_words);

// Says on the console that a value is not what it should be.
void report_mismatch(const char* text, u64_t expected, u64_t actual);

}  // namespace znp::radix
