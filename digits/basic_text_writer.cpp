#include "digits/basic_text_writer.hpp"

#include <cerrno>

#include "foundation/exceptions.hpp"
#include "foundation/fail.hpp"
#include "multiply/kernels/digit_conversion.hpp"

namespace znp {

namespace {

upL_t length_through_point(const std::string& first_digits) {
    if (first_digits.empty()) return 0;
    const upL_t point = first_digits.find('.');
    if (point == std::string::npos) {
        fail(zn_exception(error_code::invalid_parameters, nullptr, "No decimal place was found."));
    }
    return point + 1;
}

// Closes a file of which a write or the closing has failed. The stream still holds what it could not write
// and fails once more: nothing new.
[[noreturn]] void give_up(BasicFile& file, int error_number, const char* message, const std::wstring& path) {
    static_cast<void>(file.try_close());
    errno = error_number;
    print_errno();
    fail(zn_exception(error_number, message, {}, path));
}

}  // namespace

BasicTextWriter::BasicTextWriter(const std::wstring& path, const std::string& first_digits, bool convert,
                                 u64_t radix)
    : raw_to_str_(convert ? CVN::digit_routines(radix, CVN::DigitForm::raw).raw_to_str : nullptr) {
    const upL_t count = length_through_point(first_digits);
    file_.create(path, false);
    write_text(first_digits.data(), count);
}

void BasicTextWriter::write(char* digits, upL_t count) {
    if (raw_to_str_ != nullptr) raw_to_str_(digits, count);
    write_text(digits, count);
}

void BasicTextWriter::close() {
    const std::wstring path = file_.path();
    errno = 0;
    if (!file_.try_close()) give_up(file_, errno, unable_to_close_text, path);
}

void BasicTextWriter::write_text(const char* text, upL_t count) {
    const std::wstring path = file_.path();
    errno = 0;
    if (file_.write(text, count) != count) give_up(file_, errno, "Error writing to file.", path);
}

}  // namespace znp
