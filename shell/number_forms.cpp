#include "shell/number_forms.hpp"

#include "foundation/byte_size.hpp"
#include "foundation/strings.hpp"

namespace znp {

u64_t parse_digit_count(std::string_view text) {
    const u64_t number = take_u64(text);
    switch (text.empty() ? ' ' : to_lower_ascii(text.front())) {
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
    const ByteSize size = scan_byte_size(text);
    return size.whole + static_cast<u64_t>(size.fraction);
}

}  // namespace znp
