// A hash of digits in a file, which the words that they are made from have too: file and number are compared
// by it.
//
// The digits go in groups of a word each, 19 decimal or 16 hexadecimal ones, and the hash is
//     sum of group * 10^(digits behind the group)   modulo 2^61 - 1;
// the last group may be shorter. Of decimal digits that is the residue of the number that they form.
// Hexadecimal ones are weighted by powers of ten all the same: the order of 10 modulo 2^61 - 1 is 2^60 - 1,
// that of 16 only 61, and errors that repeat at a distance of words would cancel out.
#pragma once

#include <optional>

#include "foundation/types.hpp"

namespace znp {

// Takes the digits as text, in pieces of any length. About 0.2 ns a digit; serial, no allocation.
class DigitHash {
  public:
    // 10 or 16; another radix throws.
    explicit DigitHash(u64_t radix);

    void add(const char* text, upL_t count);
    // What comes next starts a group of its own.
    void end_group();

    // Nothing if anything but digits, in lower case, was among them.
    std::optional<u64_t> value() const;

  private:
    void add_groups(const char* text, upL_t groups);
    u64_t pending_value(bool& valid) const;

    static constexpr upL_t longest_group = 19;

    u64_t radix_;
    upL_t group_;                  // digits of a whole group
    u64_t hash_ = 0;               // of the whole groups
    char pending_[longest_group];  // the digits behind them
    upL_t pending_count_ = 0;
    bool valid_ = true;
};

// The hash of the integer, a group of its own, and the first count digits that follow it: w words of 19 or 16
// digits, least significant first, of which the top ones are wanted; count is at most 19 w or 16 w.
u64_t digit_hash_of_words(u64_t radix, cdi integer, const cdi* words, upL_t w, u64_t count);

}  // namespace znp
