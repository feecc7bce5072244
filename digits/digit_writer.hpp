// Writers of digit files: one interface for the text file and the compressed forms.
//
// Digits come as one byte each with the digit's value, most significant digit first. Files are written
// without retry; every failure to create, write or close one is an exception with the path.
//
// A file has its name only once its digits are verified. Until then it is <name>.unverified, and a file that
// an earlier run left under the name stays: what stands under a name has been verified, whatever ended the
// run.
#pragma once

#include <memory>
#include <string>

#include "foundation/types.hpp"

namespace znp {

struct BasicHeap;

inline constexpr const wchar_t* unverified_suffix = L".unverified";

class DigitWriter {
  public:
    DigitWriter() = default;
    DigitWriter(const DigitWriter&) = delete;
    DigitWriter& operator=(const DigitWriter&) = delete;
    virtual ~DigitWriter() = default;

    // The buffer is used up: afterwards it may hold text instead of digit values.
    virtual void write(char* digits, upL_t count) = 0;
    // Completes the file and closes it; failures throw. The destructor closes what is still open.
    virtual void close() = 0;

    // Whether what was handed to the system, and is as long in the closed file, are the first digits up to
    // their point and so many digits behind them, of this hash (digits/digit_hash.hpp) together.
    virtual bool holds(u64_t count, u64_t hash) const = 0;
    // Gives the closed file its name. What keeps it from that is told, and the user asked to try again.
    virtual void publish() = 0;
};

struct DigitFileParameters {
    std::string constant;   // short name
    std::string algorithm;  // its name in files
    std::wstring path;      // folder; empty: the current one
    u64_t digits_per_file = 0;
    BasicHeap* heap = nullptr;
};

// Radix 10 or 16, otherwise a fatal error. first_digits: "3.14..." up to its point goes before the digits.
// Compressed files are not available yet: a fatal error, which the run gives before it computes anything.
std::unique_ptr<DigitWriter> open_digit_writer(const DigitFileParameters& parameters, u64_t radix,
                                               const std::string& first_digits);

// path + separator + "<constant> - Dec - <algorithm>", without an extension.
std::wstring digit_file_stem(const DigitFileParameters& parameters, u64_t radix);

}  // namespace znp
