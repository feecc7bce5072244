// The carries that leave the eight streams of the last pass, and the wrap modulo 2^bits + 1.
#pragma once

#include "foundation/types.hpp"

namespace znp::fft {

// words: bits / 8 bytes, bits a multiple of 128, no alignment needed. carry[s] is added where stream s + 1
// begins (at bit (s + 1) bits / 8); what leaves the top wraps, negated, to the bottom. Returns the top bit of
// the residue: 1 means the value 2^bits, and the words are cleared then. Serial; constant time unless a carry
// ripples.
u32_t resolve_carries(std::byte* words, const s64_t carry[8], u64_t bits);

}  // namespace znp::fft
