#include "multiply/kernels/digit_conversion_reference.hpp"

#include "multiply/kernels/digit_conversion.hpp"

namespace znp::CVN {

namespace {

char digit_text(char digit) {
    const unsigned value = static_cast<unsigned char>(digit);
    return static_cast<char>(value + (value > 9 ? 87 : 48));
}

void to_raw(char* digits, const cdi* T, upL_t L, cdi radix, upL_t digits_per_word) {
    for (upL_t i = 0; i < L; i++) {
        char* const word_digits = digits + (L - 1 - i) * digits_per_word;
        cdi word = T[i];
        for (upL_t d = digits_per_word; d-- != 0; word /= radix) {
            word_digits[d] = static_cast<char>(word % radix);
        }
    }
}

void from_raw(cdi* T, const char* digits, upL_t L, cdi radix, upL_t digits_per_word) {
    for (upL_t i = 0; i < L; i++) {
        const char* const word_digits = digits + (L - 1 - i) * digits_per_word;
        cdi word = 0;
        for (upL_t d = 0; d < digits_per_word; d++) {
            word = word * radix + static_cast<unsigned char>(word_digits[d]);
        }
        T[i] = word;
    }
}

}  // namespace

void u64_to_raw_reference(char* digits, const cdi* T, upL_t L) {
    to_raw(digits, T, L, 16, hexadecimal_digits);
}

void u64_to_str_reference(char* digits, const cdi* T, upL_t L) {
    u64_to_raw_reference(digits, T, L);
    hex_raw_to_str_reference(digits, L * hexadecimal_digits);
}

void raw_to_u64_reference(cdi* T, const char* digits, upL_t L) {
    from_raw(T, digits, L, 16, hexadecimal_digits);
}

void cdi_to_raw_reference(char* digits, const cdi* T, upL_t L) {
    to_raw(digits, T, L, 10, decimal_digits);
}

void cdi_to_str_reference(char* digits, const cdi* T, upL_t L) {
    cdi_to_raw_reference(digits, T, L);
    dec_raw_to_str_reference(digits, L * decimal_digits);
}

void raw_to_cdi_reference(cdi* T, const char* digits, upL_t L) {
    from_raw(T, digits, L, 10, decimal_digits);
}

void hex_raw_to_str_reference(char* digits, upL_t count) {
    for (upL_t i = 0; i < count; i++) digits[i] = digit_text(digits[i]);
}

void dec_raw_to_str_reference(char* digits, upL_t count) {
    for (upL_t i = 0; i < count; i++) digits[i] = static_cast<char>(digits[i] + 48);
}

bool hex_str_to_raw_reference(char* digits, upL_t count) {
    bool invalid = false;
    for (upL_t i = 0; i < count; i++) {
        const char c = digits[i];
        const bool is_letter = 'a' <= c && c <= 'f';
        invalid |= !is_letter && !('0' <= c && c <= '9');
        digits[i] = static_cast<char>(c - (is_letter ? 87 : 48));
    }
    return invalid;
}

bool dec_str_to_raw_reference(char* digits, upL_t count) {
    bool invalid = false;
    for (upL_t i = 0; i < count; i++) {
        invalid |= !('0' <= digits[i] && digits[i] <= '9');
        digits[i] = static_cast<char>(digits[i] - 48);
    }
    return invalid;
}

}  // namespace znp::CVN
