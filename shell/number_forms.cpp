#include "shell/number_forms.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/strings.hpp"

namespace znp {
namespace {

constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

void skip_digits(std::string_view& text) {
    text.remove_prefix(
        static_cast<upL_t>(std::find_if_not(text.begin(), text.end(), is_decimal_digit) - text.begin()));
}

// The value of ".ddd" in front of the text, which moves behind it.
double take_fraction(std::string_view& text) {
    double fraction = 0;
    if (text.empty() || text.front() != '.') return fraction;
    text.remove_prefix(1);
    double step = 0.1;
    while (!text.empty() && is_decimal_digit(text.front())) {
        fraction += step * (text.front() - '0');
        step *= 0.1;
        text.remove_prefix(1);
    }
    return fraction;
}

}  // namespace

u64_t parse_digit_count(std::string_view text) {
    const u64_t number = parse_u64(text);
    skip_digits(text);
    switch (text.empty() ? ' ' : lower(text.front())) {
        case 'k':
            return number * 1'000;
        case 'm':
            return number * 1'000'000;
        case 'b':
            return number * 1'000'000'000;
        case 't':
            return number * 1'000'000'000'000;
        default:
            return number;
    }
}

u64_t parse_byte_size(std::string_view text) {
    const u64_t whole = parse_u64(text);
    skip_digits(text);
    const double fraction = take_fraction(text);
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);

    constexpr std::string_view units = "kmgtpe";
    const upL_t unit = text.empty() ? std::string_view::npos : units.find(lower(text.front()));
    if (unit == std::string_view::npos) return whole;
    const unsigned power = 10 * (static_cast<unsigned>(unit) + 1);
    return (whole << power) + static_cast<u64_t>(std::ldexp(fraction, static_cast<int>(power)));
}

}  // namespace znp
