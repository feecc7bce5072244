#include "digits/basic_text_writer.hpp"

#include <sys/stat.h>

#include <cerrno>

#include "foundation/exceptions.hpp"
#include "foundation/fail.hpp"
#include "foundation/strings.hpp"
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

// A folder that has the name would only show when the file is to have it.
void check_name(const std::wstring& path) {
    struct stat status;
    if (::stat(w_to_a_direct(path).c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return;
    fail(FileException(EISDIR, "Unable to create file.", path));
}

bool has_length(const std::wstring& path, u64_t bytes) {
    struct stat status;
    return ::stat(w_to_a_direct(path).c_str(), &status) == 0 && static_cast<u64_t>(status.st_size) == bytes;
}

}  // namespace

BasicTextWriter::BasicTextWriter(const std::wstring& path, const std::string& first_digits, bool convert,
                                 u64_t radix)
    : path_(path), unverified_path_(path + unverified_suffix) {
    if (convert) {
        raw_to_str_ = CVN::digit_routines(radix, CVN::DigitForm::raw).raw_to_str;
        hash_.emplace(radix);
    }
    const upL_t count = length_through_point(first_digits);
    check_name(path);
    file_.create(unverified_path_, false);
    write_text(first_digits.data(), count);
    if (!hash_ || count == 0) return;
    hash_->add(first_digits.data(), count - 1);
    hash_->end_group();
}

void BasicTextWriter::write(char* digits, upL_t count) {
    if (raw_to_str_ != nullptr) raw_to_str_(digits, count);
    write_text(digits, count);
    digit_count_ += count;
    if (hash_) hash_->add(digits, count);
}

void BasicTextWriter::close() {
    errno = 0;
    if (!file_.try_close()) give_up(file_, errno, unable_to_close_text, unverified_path_);
}

bool BasicTextWriter::holds(u64_t count, u64_t hash) const {
    return hash_ && digit_count_ == count && hash_->value() == hash &&
           has_length(unverified_path_, text_count_);
}

void BasicTextWriter::publish() {
    rename_file(unverified_path_, path_);
}

void BasicTextWriter::write_text(const char* text, upL_t count) {
    errno = 0;
    if (file_.write(text, count) != count) give_up(file_, errno, "Error writing to file.", unverified_path_);
    text_count_ += count;
}

}  // namespace znp
