// Conversions between binary words, digit values and digit text.
//
// The four forms of a run of digits:
//   u64   words of 16 hexadecimal digits, least significant word first
//   cdi   words below 10^19 of 19 decimal digits, least significant word first
//   raw   a byte for each digit with its value, most significant digit first
//   str   a byte for each digit as text, "0" to "9" and "a" to "f", most significant digit first
// A conversion between words and bytes therefore reverses the words and starts each with its top digit.
//
// Destination first. Lengths are in words, for the conversions in place in digits; 0 is allowed. No byte
// outside the named lengths is read or written, no alignment is asked of either buffer beyond that of its
// type, and the two do not overlap. Serial, no allocation, no errors but the flag of the str_to_raw routines.
// Cost: linear, without a division; from 3 digits a cycle (decimal words to digits, bound by multiplications
// and shifts) to 30 (bound by the cache). The references are in digit_conversion_reference.hpp.
#pragma once

#include "foundation/types.hpp"

namespace znp::CVN {

inline constexpr upL_t hexadecimal_digits = 16;  // of a word
inline constexpr upL_t decimal_digits = 19;
inline constexpr cdi decimal_base = 10'000'000'000'000'000'000u;  // 10^19

// L words to 16 L digits and back. The digits are valid.
void u64_to_raw(char* digits, const cdi* T, upL_t L);
void u64_to_str(char* digits, const cdi* T, upL_t L);
void raw_to_u64(cdi* T, const char* digits, upL_t L);

// L words below 10^19 to 19 L digits and back. The digits are valid.
void cdi_to_raw(char* digits, const cdi* T, upL_t L);
void cdi_to_str(char* digits, const cdi* T, upL_t L);
void raw_to_cdi(cdi* T, const char* digits, upL_t L);

// In place: d becomes d + 48, in hexadecimal and above 9 d + 87.
void hex_raw_to_str(char* digits, upL_t count);
void dec_raw_to_str(char* digits, upL_t count);

// In place: "a" to "f" (in hexadecimal) becomes the byte - 87, every other byte the byte - 48. Returns true
// if any byte was not a digit of the radix; capital letters are none. All bytes are converted in any case.
[[nodiscard]] bool hex_str_to_raw(char* digits, upL_t count);
[[nodiscard]] bool dec_str_to_raw(char* digits, upL_t count);

// What a digit reader or writer picks once, when it is opened.
enum class DigitForm { raw, str };

struct DigitRoutines {
    u64_t radix;
    DigitForm form;
    upL_t digits_per_word;
    void (*from_words)(char* digits, const cdi* T, upL_t L);  // to digits of the form
    void (*to_words)(cdi* T, const char* digits, upL_t L);    // from raw digits
    bool (*str_to_raw)(char* digits, upL_t count);
    void (*raw_to_str)(char* digits, upL_t count);
};

// Radix 10 or 16; another fires "Unsupported Radix".
const DigitRoutines& digit_routines(u64_t radix, DigitForm form);

}  // namespace znp::CVN
