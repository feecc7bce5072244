// The text file: the integer part and the point, then the digits, one ASCII character each; nothing else.
#pragma once

#include <string>

#include "digits/digit_writer.hpp"
#include "foundation/basic_file.hpp"

namespace znp {

// Digits go to the file in the caller's buffer, which is turned into text in place: no memory of its own.
//
// What fails is thrown: creating the file as FileException, writing and closing it as zn_exception with the
// errno and the path. After that the file is closed; what reached it stays.
class BasicTextWriter final : public DigitWriter {
  public:
    // Creates the file, and writes first_digits up to its point. An empty text writes nothing; one without a
    // point, or with `convert` a radix other than 10 and 16, throws and touches no file.
    // convert: digits come as values; otherwise as text.
    BasicTextWriter(const std::wstring& path, const std::string& first_digits, bool convert, u64_t radix);

    void write(char* digits, upL_t count) override;
    void close() override;

  private:
    void write_text(const char* text, upL_t count);

    BasicFile file_;
    void (*raw_to_str_)(char* digits, upL_t count);  // or null
};

}  // namespace znp
