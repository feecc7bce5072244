// The exception family and its one way out.
//
// Code that finds something wrong fills in a zn_exception (or a class derived from it) and calls fire(); the
// record's action decides whether it is printed, thrown, or ends the program. zn_error is outside the family
// on purpose: it passes every handler of zn_exception and reaches only the outermost one.
//
// An exception goes from one thread to another at a join only (foundation/threads.hpp), and none leaves a
// destructor.
#pragma once

#include <exception>
#include <string>

#include "foundation/types.hpp"

namespace znp {

// Codes that are not errno values.
namespace error_code {
inline constexpr s32_t unspecified = 0;
inline constexpr s32_t action_1 = 1;
inline constexpr s32_t numerical_result = 2;
inline constexpr s32_t divide_by_zero = -3;
inline constexpr s32_t invalid_exact_size = -3;  // a request that is no row of a table of exact sizes
inline constexpr s32_t size_beyond_tables = -4;
inline constexpr s32_t work_space_too_small = 0x10000000;
inline constexpr s32_t invalid_parameters = static_cast<s32_t>(0x80000001);
inline constexpr s32_t bad_digit_file = static_cast<s32_t>(0x80001000);
inline constexpr s32_t invalid_extension = static_cast<s32_t>(0x80001002);
inline constexpr s32_t unsupported_radix = static_cast<s32_t>(0x80001003);
inline constexpr s32_t no_decimal_place = static_cast<s32_t>(0x80001005);
inline constexpr s32_t invalid_digit = static_cast<s32_t>(0x80001006);
inline constexpr s32_t file_set_mismatch = static_cast<s32_t>(0x80002000);
inline constexpr s32_t outside_file_range = static_cast<s32_t>(0x80004000);
inline constexpr s32_t set_file_unreadable = static_cast<s32_t>(0x80004002);
inline constexpr s32_t out_of_range = static_cast<s32_t>(0x80004008);
inline constexpr s32_t digit_stream = static_cast<s32_t>(0x80008001);
}  // namespace error_code

// What fire() does with a record.
namespace action {
inline constexpr s32_t drop = 0;             // nothing; the failure is dropped (also below 0)
inline constexpr s32_t end_program = 1;      // print the report, then fatal_exit
inline constexpr s32_t throw_silently = 2;   // raise without printing
inline constexpr s32_t print_and_throw = 3;  // print the report, then raise (also above 3)
}  // namespace action

class zn_exception : public std::exception {
  public:
    s32_t code;
    const char* message;  // static text or null
    std::string text;
    std::wstring wide_text;  // file paths go here
    s32_t action;
    const char* title;
    const char* location;   // "Class::function()" or null
    bool reported = false;  // by the thread that it ended

    explicit zn_exception(s32_t code_, const char* message_ = nullptr, std::string text_ = {},
                          std::wstring wide_text_ = {}, s32_t action_ = action::print_and_throw,
                          const char* title_ = "Generic Exception", const char* location_ = nullptr);
    zn_exception(const zn_exception&) = default;
    zn_exception& operator=(const zn_exception&) = default;
    ~zn_exception() override = default;

    // Throws a copy of the most derived object.
    [[noreturn]] virtual void raise() const;
};

class FileException : public zn_exception {
  public:
    std::wstring path;
    FileException(s32_t code, const char* title, std::wstring path);
    [[noreturn]] void raise() const override;
};

class BufferTooSmallException : public zn_exception {
  public:
    u64_t size_needed;
    u64_t size_given;
    std::string detail;
    BufferTooSmallException(const char* location, u64_t size_given, u64_t size_needed);
    [[noreturn]] void raise() const override;
};

class ConvolutionTooSmallException : public zn_exception {
  public:
    u64_t size_needed;
    u64_t size_given;
    std::string algorithm;
    ConvolutionTooSmallException(std::string algorithm, u64_t size_needed, u64_t size_given);
    [[noreturn]] void raise() const override;
};

// A normal signal: algorithm selection catches it and tries the next candidate.
class InvalidTransformParametersException : public zn_exception {
  public:
    explicit InvalidTransformParametersException(const char* title);
    [[noreturn]] void raise() const override;
};

class UnsupportedValueException : public zn_exception {
  public:
    static UnsupportedValueException negative(const char* location);
    static UnsupportedValueException zero(const char* location);
    [[noreturn]] void raise() const override;

  private:
    UnsupportedValueException(const char* message, const char* location);
};

// A check found a result wrong: memory or processor have failed. Where the operands are whole the operation
// can be repeated (foundation/repeat_once.hpp).
class ArithmeticFailure : public zn_exception {
  public:
    using zn_exception::zn_exception;
    [[noreturn]] void raise() const override;
};

// A residue check of a series term failed. Caught by the series' bottom level, which repeats the block.
class zl_BSRModularCheckFailed : public ArithmeticFailure {
  public:
    explicit zl_BSRModularCheckFailed(std::string text);
    [[noreturn]] void raise() const override;
};

namespace Threads {
class ThreadException : public zn_exception {
  public:
    ThreadException(s32_t code, const char* title);
    [[noreturn]] void raise() const override;
};
}  // namespace Threads

namespace Serialization {
class ParseException : public zn_exception {
  public:
    explicit ParseException(const char* message, std::string text = {});
    [[noreturn]] void raise() const override;
};
}  // namespace Serialization

// An unrecoverable state. Not a zn_exception.
class zn_error : public std::exception {
  public:
    zn_exception exception;
    const char* note;  // static text
    zn_error(zn_exception exception, const char* note);
    const char* what() const noexcept override;
};

// The one way a record leaves its point of origin.
void fire(const zn_exception& exception);

// The report of an exception on the console; changes nothing.
void print_exception(const zn_exception& exception);

// The exception of a failed file operation: message from the errno table, the path as wide text.
zn_exception errno_exception(int error_number, std::wstring path);

}  // namespace znp
