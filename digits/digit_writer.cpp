#include "digits/digit_writer.hpp"

#include "digits/basic_text_writer.hpp"
#include "foundation/basic_file.hpp"
#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"

namespace znp {

namespace {

const wchar_t* radix_part(u64_t radix) {
    if (radix == 10) return L" - Dec - ";
    if (radix == 16) return L" - Hex - ";
    fatal_exit("Invalid Base");
}

}  // namespace

std::wstring digit_file_stem(const DigitFileParameters& parameters, u64_t radix) {
    return join_path(parameters.path, a_to_w_direct(parameters.constant) + radix_part(radix) +
                                          a_to_w_direct(parameters.algorithm));
}

std::unique_ptr<DigitWriter> open_digit_writer(const DigitFileParameters& parameters, u64_t radix,
                                               const std::string& first_digits) {
    const std::wstring stem = digit_file_stem(parameters, radix);
    if (parameters.digits_per_file != 0) not_available_yet("Compressed output");
    return std::make_unique<BasicTextWriter>(stem + L".txt", first_digits, true, radix);
}

}  // namespace znp
