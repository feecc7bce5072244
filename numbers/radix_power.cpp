#include "numbers/radix_power.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/strings.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/kernels/word_arrays.hpp"
#include "multiply/kernels/word_primitives.hpp"
#include "numbers/number_storage.hpp"
#include "shell/console.hpp"

namespace znp::radix {

namespace {

// An exponent times the logarithm is exact to 2^-9 of a bit for up to 2^54 bits.
constexpr long double logarithm_error = 0x1p-9L / 64;

}  // namespace

double radix_bits(cdi radix) {
    return std::log2(static_cast<double>(radix));
}

PowerSize power_size(cdi radix, u64_t e) {
    const long double words = static_cast<long double>(e) * std::log2(static_cast<long double>(radix)) / 64;
    const auto at_least = static_cast<upL_t>(std::max(words - logarithm_error, 0.0L));
    const auto at_most = static_cast<upL_t>(words + logarithm_error);
    return {at_least + 1, at_most + 1, TrailingZeros(radix) * e / 64};
}

upL_t strip_zero_words(const cdi*& T, upL_t& L) {
    L = normalised_length(T, L);
    const upL_t zeros = low_zero_words(T, L);
    T += zeros;
    L -= zeros;
    return zeros;
}

bool power_holds(cdi radix, u64_t e, const cdi* P, upL_t L, upL_t zero_words) {
    const u64_t scale = residue::word_power64(static_cast<s64_t>(zero_words));
    const u64_t actual = residue::mul(residue::hash_words(P, L), scale);
    const u64_t expected = residue::pow(radix, e);
    if (actual == expected) return true;
    report_mismatch("Radix Conversion: Power Hash Mismatch", expected, actual);
    return false;
}

void report_mismatch(const char* text, u64_t expected, u64_t actual) {
    Console::print_error(text);
    Console::print_labelled_line("Expected", to_string_u64(expected));
    Console::print_labelled_line("Actual", to_string_u64(actual));
}

}  // namespace znp::radix
