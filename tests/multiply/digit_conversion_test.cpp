#include "multiply/kernels/digit_conversion.hpp"

#include <gmp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/strings.hpp"
#include "multiply/kernels/digit_conversion_reference.hpp"
#include "test_seed.hpp"

namespace znp::CVN {
namespace {

constexpr u64_t all_ones = std::numeric_limits<u64_t>::max();
constexpr upL_t longest = 300;

// `size` things at a chosen offset from a cache line, between guard bytes. Without a guard behind it the
// buffer ends where its allocation ends, so that the address sanitizer sees a read too far.
template <class T>
class Buffer {
  public:
    explicit Buffer(upL_t size, upL_t offset = 0, upL_t guard_behind = 64)
        : begin_(64 + offset * sizeof(T)),
          end_(begin_ + size * sizeof(T)),
          total_(end_ + guard_behind),
          memory_(static_cast<unsigned char*>(::operator new (total_, std::align_val_t{64}))) {
        std::fill_n(memory_.get(), total_, guard);
    }

    T* data() { return reinterpret_cast<T*>(memory_.get() + begin_); }
    const T* data() const { return reinterpret_cast<const T*>(memory_.get() + begin_); }
    upL_t size() const { return (end_ - begin_) / sizeof(T); }
    bool intact() const {
        const auto is_guard = [](unsigned char byte) { return byte == guard; };
        return std::all_of(memory_.get(), memory_.get() + begin_, is_guard) &&
               std::all_of(memory_.get() + end_, memory_.get() + total_, is_guard);
    }

  private:
    static constexpr unsigned char guard = 0xA5;
    struct Free {
        void operator()(unsigned char* p) const { ::operator delete (p, std::align_val_t{64}); }
    };
    upL_t begin_;
    upL_t end_;
    upL_t total_;
    std::unique_ptr<unsigned char, Free> memory_;
};

template <class T>
std::string text_of(const Buffer<T>& buffer) {
    return std::string(reinterpret_cast<const char*>(buffer.data()), buffer.size() * sizeof(T));
}

// A conversion from words, its way back, and their references.
struct Pair {
    const char* name;
    upL_t digits;  // of a word
    cdi bound;     // highest word
    void (*to_raw)(char*, const cdi*, upL_t);
    void (*to_str)(char*, const cdi*, upL_t);
    void (*from_raw)(cdi*, const char*, upL_t);
    void (*to_raw_reference)(char*, const cdi*, upL_t);
    void (*to_str_reference)(char*, const cdi*, upL_t);
    void (*from_raw_reference)(cdi*, const char*, upL_t);
};

constexpr Pair pairs[] = {
    {"u64", hexadecimal_digits, all_ones, u64_to_raw, u64_to_str, raw_to_u64, u64_to_raw_reference,
     u64_to_str_reference, raw_to_u64_reference},
    {"cdi", decimal_digits, decimal_base - 1, cdi_to_raw, cdi_to_str, raw_to_cdi, cdi_to_raw_reference,
     cdi_to_str_reference, raw_to_cdi_reference},
};

class WordConversion : public ::testing::TestWithParam<Pair> {
  protected:
    // Vector and reference there and back, and nothing written outside.
    void check(const cdi* words, upL_t L, upL_t word_offset, upL_t digit_offset, upL_t guard_behind) {
        const Pair& pair = GetParam();
        Buffer<cdi> T(L, word_offset, guard_behind);
        std::copy_n(words, L, T.data());
        Buffer<char> raw(L * pair.digits, digit_offset, guard_behind);
        Buffer<char> str(L * pair.digits, digit_offset, guard_behind);
        Buffer<char> expected(L * pair.digits);

        pair.to_raw(raw.data(), T.data(), L);
        pair.to_raw_reference(expected.data(), words, L);
        ASSERT_EQ(text_of(raw), text_of(expected)) << pair.name << " L = " << L;
        pair.to_str(str.data(), T.data(), L);
        pair.to_str_reference(expected.data(), words, L);
        ASSERT_EQ(text_of(str), text_of(expected)) << pair.name << " L = " << L;

        Buffer<cdi> back(L, word_offset, guard_behind);
        pair.from_raw(back.data(), raw.data(), L);
        ASSERT_EQ(text_of(back), text_of(T)) << pair.name << " L = " << L;
        pair.from_raw_reference(back.data(), raw.data(), L);
        ASSERT_EQ(text_of(back), text_of(T)) << pair.name << " L = " << L;
        ASSERT_TRUE(T.intact() && raw.intact() && str.intact() && back.intact()) << pair.name << " L = " << L;
    }

    std::vector<cdi> random_words(std::mt19937_64& rng, upL_t L) const {
        std::vector<cdi> T(L);
        for (cdi& word : T) word = GetParam().bound == all_ones ? rng() : rng() % decimal_base;
        return T;
    }
};

INSTANTIATE_TEST_SUITE_P(Digits, WordConversion, ::testing::ValuesIn(pairs),
                         [](const auto& suite_info) { return std::string(suite_info.param.name); });

TEST_P(WordConversion, SameAsReferenceAtEveryLength) {
    auto rng = testing::make_rng(30);
    for (upL_t L = 0; L <= longest; L++) {
        check(random_words(rng, L).data(), L, L % 8, L % 61, 64);
        check(random_words(rng, L).data(), L, L % 8, L % 61, 0);
        check(std::vector<cdi>(L, 0).data(), L, 0, 0, 64);
        check(std::vector<cdi>(L, GetParam().bound).data(), L, 1, 1, 64);
    }
}

TEST_P(WordConversion, SameAsReferenceAtEveryAlignment) {
    auto rng = testing::make_rng(31);
    for (upL_t word_offset = 0; word_offset < 8; word_offset++) {
        for (upL_t digit_offset = 0; digit_offset < 64; digit_offset++) {
            for (const upL_t L : {1u, 3u, 4u, 7u, 8u, 9u}) {
                check(random_words(rng, L).data(), L, word_offset, digit_offset, 64);
            }
        }
    }
}

// Around every place where a digit or a group of digits turns over.
TEST_P(WordConversion, SameAsReferenceAtBoundaries) {
    auto rng = testing::make_rng(32);
    const cdi bound = GetParam().bound;
    std::vector<cdi> words = {0, bound, bound - 1};
    const auto add_around = [&](u128_t x) {
        for (const u128_t w : {x - 1, x, x + 1}) {
            if (w <= bound) words.push_back(static_cast<cdi>(w));
        }
    };
    for (u128_t power = 1; power <= bound; power *= 10) {
        for (cdi digit = 1; digit <= 9; digit++) add_around(power * digit);
        const u128_t multiples = bound / power;
        for (int i = 0; i < 200; i++) add_around(power * (rng() % static_cast<u64_t>(multiples) + 1));
        add_around(power * multiples);
    }
    for (unsigned bit = 1; bit < 64; bit++) add_around(u128_t{1} << bit);
    check(words.data(), words.size(), 0, 0, 64);
}

TEST_P(WordConversion, SameAsReferenceOnManyRandomWords) {
    auto rng = testing::make_rng(33);
    for (int round = 0; round < 100; round++) check(random_words(rng, 1000).data(), 1000, 0, 0, 64);
    std::vector<cdi> all_sizes = random_words(rng, 6400);
    for (upL_t i = 0; i < all_sizes.size(); i++) all_sizes[i] >>= i % 64;
    check(all_sizes.data(), all_sizes.size(), 0, 0, 64);
}

TEST(DigitConversion, DigitsOfANumberAgainstGmp) {
    auto rng = testing::make_rng(34);
    std::vector<cdi> words(100);
    for (cdi& word : words) word = rng();
    words.back() |= u64_t{1} << 63;
    mpz_t value;
    mpz_init(value);
    mpz_import(value, words.size(), -1, sizeof(cdi), 0, 0, words.data());
    Buffer<char> hexadecimal(1600);
    u64_to_str(hexadecimal.data(), words.data(), 100);
    std::string expected(1700, '\0');
    EXPECT_EQ(text_of(hexadecimal), mpz_get_str(expected.data(), 16, value));

    mpz_set_ui(value, 0);
    for (cdi& word : words) word = decimal_base / 10 + word % (decimal_base - decimal_base / 10);
    for (upL_t i = words.size(); i-- != 0;) {
        mpz_mul_ui(value, value, decimal_base);
        mpz_add_ui(value, value, words[i]);
    }
    Buffer<char> decimal(1900);
    cdi_to_str(decimal.data(), words.data(), 100);
    expected.assign(2000, '\0');
    EXPECT_EQ(text_of(decimal), mpz_get_str(expected.data(), 10, value));
    mpz_clear(value);
}

TEST(DigitConversion, TheLargestDecimalWordIs19Nines) {
    const cdi word = 9999999999999999999u;
    Buffer<char> digits(19);
    cdi_to_str(digits.data(), &word, 1);
    EXPECT_EQ(text_of(digits), std::string(19, '9'));
    cdi_to_raw(digits.data(), &word, 1);
    EXPECT_EQ(text_of(digits), std::string(19, '\x09'));
    cdi back = 0;
    raw_to_cdi(&back, digits.data(), 1);
    EXPECT_EQ(back, word);
}

TEST(DigitConversion, MultiplesOfTenTo9DoNotComeOutOneLower) {
    auto rng = testing::make_rng(35);
    for (int i = 0; i < 10000; i++) {
        const u64_t quotient = rng() % 10'000'000'000u;
        const cdi word = quotient * 1'000'000'000u;
        char digits[19];
        cdi_to_str(digits, &word, 1);
        ASSERT_EQ(std::string(digits, 19), format_printf(32, "%010lu000000000", quotient));
    }
}

TEST(DigitConversion, TheTopDigitOfTheTopWordComesFirst) {
    const cdi hexadecimal[] = {0x0123456789abcdef, 0xfedcba9876543210};
    Buffer<char> digits(32);
    u64_to_str(digits.data(), hexadecimal, 2);
    EXPECT_EQ(text_of(digits), "fedcba98765432100123456789abcdef");
    const cdi decimal[] = {123456789, 9876543210123456789u};
    Buffer<char> decimal_text(38);
    cdi_to_str(decimal_text.data(), decimal, 2);
    EXPECT_EQ(text_of(decimal_text), "98765432101234567890000000000123456789");
}

// A conversion of bytes in place and its reference; `invalid` of the conversions that check, else always
// false.
struct InPlace {
    const char* name;
    bool (*run)(char*, upL_t);
    bool (*reference)(char*, upL_t);
    const char* valid;  // all valid bytes, or null if any byte is
};

template <void (*convert)(char*, upL_t)>
bool unchecked(char* digits, upL_t count) {
    convert(digits, count);
    return false;
}

constexpr InPlace in_place[] = {
    {"hex_str_to_raw", hex_str_to_raw, hex_str_to_raw_reference, "0123456789abcdef"},
    {"dec_str_to_raw", dec_str_to_raw, dec_str_to_raw_reference, "0123456789"},
    {"hex_raw_to_str", unchecked<hex_raw_to_str>, unchecked<hex_raw_to_str_reference>, nullptr},
    {"dec_raw_to_str", unchecked<dec_raw_to_str>, unchecked<dec_raw_to_str_reference>, nullptr},
};

class InPlaceConversion : public ::testing::TestWithParam<InPlace> {
  protected:
    void check(const std::string& bytes, upL_t offset, upL_t guard_behind) {
        Buffer<char> buffer(bytes.size(), offset, guard_behind);
        std::copy(bytes.begin(), bytes.end(), buffer.data());
        std::string expected = bytes;
        const bool expected_flag = GetParam().reference(expected.data(), expected.size());
        ASSERT_EQ(GetParam().run(buffer.data(), buffer.size()), expected_flag) << bytes.size();
        ASSERT_EQ(text_of(buffer), expected) << bytes.size();
        ASSERT_TRUE(buffer.intact()) << bytes.size();
    }

    std::string random_bytes(std::mt19937_64& rng, upL_t count, bool valid) const {
        std::string bytes(count, '\0');
        const std::string all = GetParam().valid == nullptr ? "" : GetParam().valid;
        for (char& c : bytes) c = valid && !all.empty() ? all[rng() % all.size()] : static_cast<char>(rng());
        return bytes;
    }
};

INSTANTIATE_TEST_SUITE_P(Digits, InPlaceConversion, ::testing::ValuesIn(in_place),
                         [](const auto& suite_info) { return std::string(suite_info.param.name); });

TEST_P(InPlaceConversion, SameAsReferenceAtEveryLengthAndAlignment) {
    auto rng = testing::make_rng(36);
    for (upL_t count = 0; count <= longest; count++) {
        for (const bool valid : {true, false}) {
            check(random_bytes(rng, count, valid), count % 61, 64);
            check(random_bytes(rng, count, valid), count % 61, 0);
        }
    }
    for (upL_t offset = 0; offset < 64; offset++) check(random_bytes(rng, 131, true), offset, 64);
}

TEST_P(InPlaceConversion, SameAsReferenceOnEveryByteAtEveryPlace) {
    const char valid = GetParam().valid == nullptr ? '\0' : '7';
    for (int byte = 0; byte < 256; byte++) {
        check(std::string(1, static_cast<char>(byte)), 0, 64);
        for (upL_t place = 0; place < 97; place++) {
            std::string bytes(97, valid);
            bytes[place] = static_cast<char>(byte);
            check(bytes, 0, 64);
        }
    }
}

TEST(DigitConversion, StrToRawFlagsExactlyTheBytesThatAreNoDigits) {
    for (int byte = 0; byte < 256; byte++) {
        const bool decimal = '0' <= byte && byte <= '9';
        const bool letter = 'a' <= byte && byte <= 'f';
        char c = static_cast<char>(byte);
        EXPECT_EQ(dec_str_to_raw(&c, 1), !decimal) << byte;
        EXPECT_EQ(c, static_cast<char>(byte - 48));
        c = static_cast<char>(byte);
        EXPECT_EQ(hex_str_to_raw(&c, 1), !decimal && !letter) << byte;
        EXPECT_EQ(c, static_cast<char>(byte - (letter ? 87 : 48)));
    }
}

TEST(DigitConversion, DecimalStrToRawFlagsLetterA) {
    std::string digits = "0123a";
    EXPECT_TRUE(dec_str_to_raw(digits.data(), digits.size()));
}

TEST(DigitConversion, HexadecimalStrToRawFlagsCapitalLetterA) {
    std::string digits = "0123A";
    EXPECT_TRUE(hex_str_to_raw(digits.data(), digits.size()));
    digits = "0123a";
    EXPECT_FALSE(hex_str_to_raw(digits.data(), digits.size()));
}

TEST(DigitConversion, StrToRawConvertsEverythingInSpiteOfABadByte) {
    for (const upL_t bad : {0u, 63u, 64u, 100u, 199u}) {
        std::string digits(200, '5');
        digits[bad] = 'z';
        EXPECT_TRUE(dec_str_to_raw(digits.data(), digits.size()));
        std::string expected(200, '\x05');
        expected[bad] = static_cast<char>('z' - 48);
        EXPECT_EQ(digits, expected);
    }
}

TEST(DigitConversion, TextThereAndBack) {
    std::string raw(16, '\0');
    for (upL_t d = 0; d < 16; d++) raw[d] = static_cast<char>(d);
    std::string text = raw;
    hex_raw_to_str(text.data(), text.size());
    EXPECT_EQ(text, "0123456789abcdef");
    EXPECT_FALSE(hex_str_to_raw(text.data(), text.size()));
    EXPECT_EQ(text, raw);
    dec_raw_to_str(text.data(), 10);
    EXPECT_EQ(text.substr(0, 10), "0123456789");
}

TEST(DigitRoutines, ArePickedByRadixAndForm) {
    const cdi word = 0x12ab;
    for (const DigitForm form : {DigitForm::raw, DigitForm::str}) {
        const char zero = form == DigitForm::raw ? '\0' : '0';
        for (const u64_t radix : {u64_t{10}, u64_t{16}}) {
            const DigitRoutines& routines = digit_routines(radix, form);
            EXPECT_EQ(routines.radix, radix);
            EXPECT_EQ(routines.form, form);
            EXPECT_EQ(routines.digits_per_word, radix == 10 ? 19u : 16u);
            std::string digits(routines.digits_per_word, '?');
            routines.from_words(digits.data(), &word, 1);
            EXPECT_EQ(digits[0], zero);
            if (form == DigitForm::raw) routines.raw_to_str(digits.data(), digits.size());
            EXPECT_EQ(digits.substr(digits.size() - 4), radix == 10 ? "4779" : "12ab");
            EXPECT_FALSE(routines.str_to_raw(digits.data(), digits.size()));
            cdi back = 0;
            routines.to_words(&back, digits.data(), 1);
            EXPECT_EQ(back, word);
        }
    }
}

TEST(DigitRoutines, OfAnotherRadixAreUnsupported) {
    for (const u64_t radix : {u64_t{0}, u64_t{2}, u64_t{8}, u64_t{11}, u64_t{256}, all_ones}) {
        const std::string report = testing::console_output([&] {
            try {
                digit_routines(radix, DigitForm::raw);
                FAIL() << "radix " << radix;
            } catch (const zn_exception& exception) {
                EXPECT_EQ(exception.code, static_cast<s32_t>(0x80001003));
                EXPECT_STREQ(exception.message, "Unsupported Radix");
            }
        });
        EXPECT_NE(report.find("Unsupported Radix"), std::string::npos);
    }
}

}  // namespace
}  // namespace znp::CVN
