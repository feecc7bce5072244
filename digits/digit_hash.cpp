#include "digits/digit_hash.hpp"

#include <algorithm>
#include <cstring>

#include "multiply/kernels/digit_conversion.hpp"
#include "multiply/kernels/residue.hpp"

namespace znp {

namespace {

constexpr upL_t block_groups = 128;  // that are turned back into words at a time
constexpr u64_t weight = 10;         // of a digit against the one behind it

u64_t power(u64_t radix, upL_t digits) {
    u64_t result = 1;
    for (; digits > 0; --digits) result *= radix;
    return result;
}

const CVN::DigitRoutines& routines_of(u64_t radix) {
    return CVN::digit_routines(radix, CVN::DigitForm::raw);
}

u64_t append(u64_t hash, u64_t group, upL_t digits) {
    return residue::add(residue::mul(hash, residue::pow(weight, digits)), residue::reduce(group));
}

}  // namespace

DigitHash::DigitHash(u64_t radix) : radix_(radix), group_(routines_of(radix).digits_per_word) {}

void DigitHash::add(const char* text, upL_t count) {
    if (pending_count_ != 0) {
        const upL_t taken = std::min(count, group_ - pending_count_);
        std::memcpy(pending_ + pending_count_, text, taken);
        pending_count_ += taken;
        text += taken;
        count -= taken;
        if (pending_count_ == group_) end_group();
    }
    const upL_t groups = count / group_;
    add_groups(text, groups);
    const upL_t rest = count - groups * group_;
    if (rest == 0) return;
    std::memcpy(pending_, text + groups * group_, rest);
    pending_count_ = rest;
}

void DigitHash::add_groups(const char* text, upL_t groups) {
    const CVN::DigitRoutines& routines = routines_of(radix_);
    char digits[longest_group * block_groups];
    cdi words[block_groups];
    while (groups != 0) {
        const upL_t n = std::min(groups, block_groups);
        std::memcpy(digits, text, n * group_);
        valid_ &= !routines.str_to_raw(digits, n * group_);
        routines.to_words(words, digits, n);
        hash_ = residue::hash_radix64(words, n, power(weight, group_), hash_);
        text += n * group_;
        groups -= n;
    }
}

u64_t DigitHash::pending_value(bool& valid) const {
    char digits[longest_group];
    std::memcpy(digits, pending_, pending_count_);
    valid = !routines_of(radix_).str_to_raw(digits, pending_count_);
    u64_t value = 0;
    for (upL_t i = 0; i < pending_count_; ++i) value = value * radix_ + static_cast<unsigned char>(digits[i]);
    return value;
}

void DigitHash::end_group() {
    bool valid;
    hash_ = append(hash_, pending_value(valid), pending_count_);
    valid_ &= valid;
    pending_count_ = 0;
}

std::optional<u64_t> DigitHash::value() const {
    bool valid;
    const u64_t hash = append(hash_, pending_value(valid), pending_count_);
    if (!valid || !valid_) return std::nullopt;
    return hash;
}

u64_t digit_hash_of_words(u64_t radix, cdi integer, const cdi* words, upL_t w, u64_t count) {
    const upL_t group = routines_of(radix).digits_per_word;
    const upL_t whole = count / group;
    const upL_t rest = count % group;
    const u64_t hash = residue::hash_radix64(words + (w - whole), whole, power(weight, group), integer);
    if (rest == 0) return hash;
    return append(hash, words[w - whole - 1] / power(radix, group - rest), rest);
}

}  // namespace znp
