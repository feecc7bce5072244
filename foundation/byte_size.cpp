#include "foundation/byte_size.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/strings.hpp"

namespace znp {

namespace {

// The value of ".ddd" in front of the text, which moves behind it.
double take_fraction(std::string_view& text) {
    double fraction = 0;
    if (!text.starts_with('.')) return fraction;
    text.remove_prefix(1);
    double place = 0.1;
    for (; !text.empty() && is_decimal_digit(text.front()); text.remove_prefix(1)) {
        fraction += place * (text.front() - '0');
        place *= 0.1;
    }
    return fraction;
}

// The power of two behind a unit letter of either case; 0 where the letter is none.
unsigned unit_exponent(char letter) {
    constexpr std::string_view units = "kmgtpe";
    const upL_t index = units.find(to_lower_ascii(letter));
    return index == std::string_view::npos ? 0 : 10 * (static_cast<unsigned>(index) + 1);
}

}  // namespace

ByteSize scan_byte_size(std::string_view text) {
    const u64_t whole = take_u64(text);
    const double fraction = take_fraction(text);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));

    const unsigned exponent = text.empty() ? 0 : unit_exponent(text.front());
    if (exponent == 0) return {whole, 0};
    return {whole << exponent, std::ldexp(fraction, static_cast<int>(exponent))};
}

}  // namespace znp
