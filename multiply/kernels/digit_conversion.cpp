#include "multiply/kernels/digit_conversion.hpp"

#include "foundation/fail.hpp"

namespace znp::CVN {

namespace {

constexpr DigitRoutines routines[] = {
    {10, DigitForm::raw, decimal_digits, cdi_to_raw, raw_to_cdi, dec_str_to_raw, dec_raw_to_str},
    {10, DigitForm::str, decimal_digits, cdi_to_str, raw_to_cdi, dec_str_to_raw, dec_raw_to_str},
    {16, DigitForm::raw, hexadecimal_digits, u64_to_raw, raw_to_u64, hex_str_to_raw, hex_raw_to_str},
    {16, DigitForm::str, hexadecimal_digits, u64_to_str, raw_to_u64, hex_str_to_raw, hex_raw_to_str},
};

}  // namespace

const DigitRoutines& digit_routines(u64_t radix, DigitForm form) {
    for (const DigitRoutines& entry : routines) {
        if (entry.radix == radix && entry.form == form) return entry;
    }
    fail(zn_exception(error_code::unsupported_radix, "Unsupported Radix"));
}

}  // namespace znp::CVN
