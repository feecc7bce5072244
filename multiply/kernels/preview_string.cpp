#include "multiply/kernels/preview_string.hpp"

#include <algorithm>

#include "foundation/strings.hpp"
#include "multiply/kernels/digit_conversion.hpp"

namespace znp::CVN {

namespace {

constexpr upL_t hexadecimal_words = (preview_digits - 1) / hexadecimal_digits + 1;
constexpr upL_t decimal_words = (preview_digits - 1) / decimal_digits + 1;
static_assert(hexadecimal_words == 4 && decimal_words == 3);

using Routine = void (*)(char* digits, const cdi* T, upL_t L);

// The first min(n, 50) digits of the top `words` words below `end`.
std::string fraction_digits(upL_t n, const cdi* end, upL_t words, upL_t digits_per_word, Routine to_str) {
    std::string digits(words * digits_per_word, '\0');
    to_str(digits.data(), end - words, words);
    digits.resize(std::min({n, preview_digits, upL_t{digits.size()}}));
    return digits;
}

}  // namespace

std::string preview_string_hex(upL_t n, const cdi* end, upL_t L, u64_t integer) {
    std::string digits(hexadecimal_digits, '\0');
    u64_to_str(digits.data(), &integer, 1);
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
    return digits + "." +
           fraction_digits(n, end, std::min(L, hexadecimal_words), hexadecimal_digits, u64_to_str);
}

std::string preview_string_dec(upL_t n, const cdi* end, upL_t L, u64_t integer) {
    return to_string_u64(integer) + "." +
           fraction_digits(n, end, std::min(L, decimal_words), decimal_digits, cdi_to_str);
}

}  // namespace znp::CVN
