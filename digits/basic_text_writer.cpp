#include "digits/basic_text_writer.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

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

struct stat status_of(const std::wstring& path) {
    struct stat status {};
    if (::stat(w_to_a_direct(path).c_str(), &status) != 0) status.st_mode = 0;
    return status;
}

// A folder that has the name would only show when the file is to have it.
void check_name(const std::wstring& path) {
    if (S_ISDIR(status_of(path).st_mode)) fail(FileException(EISDIR, "Unable to create file.", path));
}

// A device, or another end that a file cannot take the place of.
bool is_special(const std::wstring& path) {
    const mode_t mode = status_of(path).st_mode;
    return mode != 0 && !S_ISREG(mode);
}

// Where a file of the name stands: links that lead to another place go on doing so.
std::wstring behind_links(const std::wstring& path) {
    namespace fs = std::filesystem;
    constexpr int most_links = 40;
    fs::path place = w_to_a_direct(path);
    std::error_code error;
    for (int links = 0; links < most_links && fs::is_symlink(place, error); ++links) {
        place = place.parent_path() / fs::read_symlink(place, error);
    }
    const std::string text = place.string();
    const auto is_plain = [](char c) { return static_cast<unsigned char>(c) <= 127; };
    return std::all_of(text.begin(), text.end(), is_plain) ? a_to_w_direct(text) : path;
}

}  // namespace

BasicTextWriter::BasicTextWriter(const std::wstring& path, const std::string& first_digits, bool convert,
                                 u64_t radix)
    : in_place_(is_special(path)),
      path_(in_place_ ? path : behind_links(path)),
      unverified_path_(in_place_ ? path : path_ + unverified_suffix) {
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
    if (!hash_ || digit_count_ != count || hash_->value() != hash) return false;
    return in_place_ || static_cast<u64_t>(status_of(unverified_path_).st_size) == text_count_;
}

void BasicTextWriter::publish() {
    if (!in_place_) rename_file(unverified_path_, path_);
}

void BasicTextWriter::write_text(const char* text, upL_t count) {
    errno = 0;
    if (file_.write(text, count) != count) give_up(file_, errno, "Error writing to file.", unverified_path_);
    text_count_ += count;
}

}  // namespace znp
