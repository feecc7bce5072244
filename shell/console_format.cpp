// Numbers and byte counts as text.
#include <array>
#include <iomanip>
#include <sstream>
#include <string>

#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp::Console {

namespace {

constexpr upL_t group_digits = 3;

std::string with_commas(u64_t value) {
    std::string text = to_string_u64(value);
    for (upL_t i = text.size(); i > group_digits;) {
        i -= group_digits;
        text.insert(i, 1, ',');
    }
    return text;
}

u64_t magnitude(s64_t value) {
    return value < 0 ? 0 - static_cast<u64_t>(value) : static_cast<u64_t>(value);
}

constexpr std::array<const char*, 6> binary_units{" KiB", " MiB", " GiB", " TiB", " PiB", " EiB"};

// From here on a value, in units of 1/1024 of its unit, goes over to the next unit.
constexpr u64_t next_unit_limit = 1000 * 1024;

}  // namespace

std::string format_bytes(u64_t value) {
    if (value <= 999) return to_string_u64(value) + " bytes";

    upL_t unit = 0;
    for (; value >= next_unit_limit; value >>= 10) ++unit;
    const u64_t thousandths = value * 1000 >> 10;  // of the unit: from 976 to 999999

    // Four columns in each case. A value that rounds up to the next width takes that width's form.
    std::string number;
    if (thousandths < 1'000) {
        const u64_t rounded = (thousandths + 5) / 10;
        number = rounded == 100 ? "1.00" : format_printf(8, "0.%lu", rounded);
    } else if (thousandths < 10'000) {
        const u64_t rounded = (thousandths + 5) / 10;
        number = rounded == 1000 ? "10.0" : format_printf(8, "%lu.%02lu", rounded / 100, rounded % 100);
    } else if (thousandths < 100'000) {
        const u64_t rounded = (thousandths + 50) / 100;
        number = rounded == 1000 ? " 100" : format_printf(8, "%lu.%lu", rounded / 10, rounded % 10);
    } else {
        const u64_t rounded = (thousandths + 500) / 1000;
        if (rounded == 1000) {
            number = "0.98";
            ++unit;
        } else {
            number = format_printf(8, " %lu", rounded);
        }
    }
    return number + binary_units[unit];
}

std::string format_int(u64_t value, IntFormat mode) {
    switch (mode) {
        case IntFormat::commas:
            return with_commas(value);
        case IntFormat::bytes:
            return format_bytes(value);
        case IntFormat::commas_and_bytes:
            return with_commas(value) + " (" + format_bytes(value) + ")";
        case IntFormat::plain:
            break;
    }
    return to_string_u64(value);
}

std::string format_int_signed(s64_t value, IntFormat mode) {
    std::string text = format_int(magnitude(value), mode);
    if (value < 0) text.insert(text.begin(), '-');
    return text;
}

std::string format_seconds(double value, int decimals) {
    std::ostringstream stream;
    stream << std::fixed << std::setprecision(decimals) << value;
    return stream.str();
}

}  // namespace znp::Console
