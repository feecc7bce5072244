#include "foundation/exceptions.hpp"

#include <cerrno>
#include <utility>

#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp {

zn_exception::zn_exception(s32_t code_, const char* message_, std::string text_, std::wstring wide_text_,
                           s32_t action_, const char* title_, const char* location_)
    : code(code_),
      message(message_),
      text(std::move(text_)),
      wide_text(std::move(wide_text_)),
      action(action_),
      title(title_),
      location(location_) {}

void zn_exception::raise() const {
    throw *this;
}

FileException::FileException(s32_t code_, const char* title_, std::wstring path_)
    : zn_exception(code_, nullptr, {}, path_, action::throw_silently, title_), path(std::move(path_)) {}

void FileException::raise() const {
    throw *this;
}

BufferTooSmallException::BufferTooSmallException(const char* location_, u64_t size_given_, u64_t size_needed_)
    : zn_exception(error_code::action_1, nullptr, {}, {}, action::print_and_throw, "Buffer is too small.",
                   location_),
      size_needed(size_needed_),
      size_given(size_given_),
      detail("Needed: " + to_string_u64(size_needed_) + "  Given: " + to_string_u64(size_given_)) {
    text = detail;
}

void BufferTooSmallException::raise() const {
    throw *this;
}

ConvolutionTooSmallException::ConvolutionTooSmallException(std::string algorithm_, u64_t size_needed_,
                                                           u64_t size_given_)
    : zn_exception(error_code::action_1, nullptr, {}, {}, action::end_program,
                   "Convolution length is too small."),
      size_needed(size_needed_),
      size_given(size_given_),
      algorithm(std::move(algorithm_)) {
    text = algorithm + "  Needed: " + to_string_u64(size_needed) + "  Given: " + to_string_u64(size_given);
}

void ConvolutionTooSmallException::raise() const {
    throw *this;
}

InvalidTransformParametersException::InvalidTransformParametersException(const char* title_)
    : zn_exception(error_code::invalid_parameters, nullptr, {}, {}, action::throw_silently, title_) {}

void InvalidTransformParametersException::raise() const {
    throw *this;
}

UnsupportedValueException::UnsupportedValueException(const char* message_, const char* location_)
    : zn_exception(error_code::action_1, message_, {}, {}, action::end_program, "Value is unsupported.",
                   location_) {}

UnsupportedValueException UnsupportedValueException::negative(const char* location) {
    return {"A negative value was encountered.", location};
}

UnsupportedValueException UnsupportedValueException::zero(const char* location) {
    return {"Zero was encountered.", location};
}

void UnsupportedValueException::raise() const {
    throw *this;
}

// The check that fails prints its text itself: the record goes out silently.
void ArithmeticFailure::raise() const {
    throw *this;
}

zl_BSRModularCheckFailed::zl_BSRModularCheckFailed(std::string text_)
    : ArithmeticFailure(error_code::numerical_result, nullptr, std::move(text_), {}, action::throw_silently) {
}

void zl_BSRModularCheckFailed::raise() const {
    throw *this;
}

namespace Threads {

ThreadException::ThreadException(s32_t code_, const char* title_)
    : zn_exception(code_, nullptr, {}, {}, action::end_program, title_) {}

void ThreadException::raise() const {
    throw *this;
}

}  // namespace Threads

namespace Serialization {

ParseException::ParseException(const char* message_, std::string text_)
    : zn_exception(error_code::invalid_parameters, message_, std::move(text_)) {}

void ParseException::raise() const {
    throw *this;
}

}  // namespace Serialization

zn_error::zn_error(zn_exception exception_, const char* note_)
    : exception(std::move(exception_)), note(note_) {}

const char* zn_error::what() const noexcept {
    return note != nullptr ? note : std::exception::what();
}

void fire(const zn_exception& exception) {
    if (exception.action <= action::drop) return;
    if (exception.action != action::throw_silently) print_exception(exception);
    if (exception.action == action::end_program) fatal_exit("");
    if (exception.action >= action::print_and_throw) Console::set_color('w');
    exception.raise();
}

void print_exception(const zn_exception& exception) {
    Console::print("\n\n");
    Console::print_labelled_line("Exception Encountered", std::string(exception.title), 'R');
    Console::println("Error Code: " + std::to_string(exception.code));
    if (exception.location != nullptr) Console::println(std::string("Location: ") + exception.location);
    if (exception.message != nullptr) Console::println(exception.message);
    if (!exception.text.empty()) Console::println(exception.text);
    if (!exception.wide_text.empty()) Console::println(exception.wide_text);
    Console::print("\n\n");
}

namespace {

const char* errno_message(int error_number) {
    switch (error_number) {
        case ENOENT:
            return "File Does Not Exist";
        case EIO:
            return "Hardware Error";
        case ENOMEM:
            return "Not Enough Memory";
        case EACCES:
            return "Access Denied";
        case ENOSPC:
            return "Disk is Full";
        default:
            return "Unknown C/C++ Error";
    }
}

}  // namespace

zn_exception errno_exception(int error_number, std::wstring path) {
    return zn_exception(error_number, errno_message(error_number), {}, std::move(path));
}

}  // namespace znp
