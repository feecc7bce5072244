// The text file: the integer part and the point, then the digits, one ASCII character each; nothing else.
#pragma once

#include <optional>
#include <string>

#include "digits/digit_hash.hpp"
#include "digits/digit_writer.hpp"
#include "foundation/basic_file.hpp"

namespace znp {

// Digits go to the file in the caller's buffer, which is turned into text in place: no memory of its own.
// They are hashed from that text after the system has taken it: what changed before that shows in the hash.
//
// What fails is thrown: creating the file as FileException, writing and closing it as zn_exception with the
// errno and the path. After that the file is closed; what reached it stays.
class BasicTextWriter final : public DigitWriter {
  public:
    // convert: digits come as values; otherwise as text, which is not hashed and holds() nothing.
    //
    // Creates the file of the path and unverified_suffix, and writes first_digits up to its point. An empty
    // text writes nothing; one without a point, or with `convert` a radix other than 10 and 16, throws and
    // touches no file; so does a folder that has the path. A link is followed, so that the file comes to
    // stand where it leads; what is no file, such as a device, is written to in its place.
    BasicTextWriter(const std::wstring& path, const std::string& first_digits, bool convert, u64_t radix);

    void write(char* digits, upL_t count) override;
    void close() override;
    bool holds(u64_t count, u64_t hash) const override;
    void publish() override;

  private:
    void write_text(const char* text, upL_t count);

    const bool in_place_;  // nothing to rename
    const std::wstring path_, unverified_path_;
    BasicFile file_;
    void (*raw_to_str_)(char* digits, upL_t count) = nullptr;
    std::optional<DigitHash> hash_;
    u64_t text_count_ = 0;   // bytes handed over
    u64_t digit_count_ = 0;  // behind the point
};

}  // namespace znp
