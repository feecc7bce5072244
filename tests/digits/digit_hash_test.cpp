#include "digits/digit_hash.hpp"

#include <gmp.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "multiply/kernels/digit_conversion.hpp"
#include "multiply/kernels/residue.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

constexpr u64_t radices[] = {10, 16};

upL_t group_of(u64_t radix) {
    return radix == 10 ? 19 : 16;
}

std::string random_digits(std::mt19937_64& rng, u64_t radix, upL_t count) {
    std::string text(count, '0');
    for (char& c : text) c = "0123456789abcdef"[rng() % radix];
    return text;
}

// By its definition: sum of group * 10^(digits behind it), the integer part being a group of its own.
u64_t expected_hash(u64_t radix, const std::string& integer, const std::string& digits) {
    mpz_t sum, group;
    mpz_init_set_str(sum, integer.c_str(), static_cast<int>(radix));
    mpz_init(group);
    for (upL_t at = 0; at < digits.size(); at += group_of(radix)) {
        const std::string text = digits.substr(at, group_of(radix));
        mpz_set_str(group, text.c_str(), static_cast<int>(radix));
        for (upL_t i = 0; i < text.size(); ++i) mpz_mul_ui(sum, sum, 10);
        mpz_add(sum, sum, group);
    }
    const u64_t result = mpz_fdiv_ui(sum, residue::p);
    mpz_clears(sum, group, nullptr);
    return result;
}

u64_t hash_of(u64_t radix, const std::string& integer, const std::string& digits) {
    DigitHash hash(radix);
    hash.add(integer.data(), integer.size());
    hash.end_group();
    hash.add(digits.data(), digits.size());
    return hash.value().value();
}

TEST(DigitHash, IsItsDefinition) {
    auto rng = testing::make_rng(1);
    for (const u64_t radix : radices) {
        for (const upL_t count :
             {0u, 1u, 15u, 16u, 17u, 18u, 19u, 20u, 37u, 38u, 39u, 2431u, 2432u, 2433u, 10000u}) {
            const std::string integer = random_digits(rng, radix, 1 + rng() % 16);
            const std::string digits = random_digits(rng, radix, count);
            EXPECT_EQ(hash_of(radix, integer, digits), expected_hash(radix, integer, digits))
                << radix << ' ' << count;
        }
    }
}

// The residue of the digits as one number, whatever the length of the integer part.
TEST(DigitHash, OfDecimalDigitsIsTheirResidue) {
    auto rng = testing::make_rng(2);
    for (const upL_t length : {1u, 19u, 20u}) {
        const std::string integer = random_digits(rng, 10, length);
        const std::string digits = random_digits(rng, 10, 1000);
        mpz_t number;
        mpz_init_set_str(number, (integer + digits).c_str(), 10);
        EXPECT_EQ(hash_of(10, integer, digits), mpz_fdiv_ui(number, residue::p));
        mpz_clear(number);
    }
}

TEST(DigitHash, PiecesOfAnyLength) {
    auto rng = testing::make_rng(3);
    for (const u64_t radix : radices) {
        for (int round = 0; round < 200; ++round) {
            const std::string digits = random_digits(rng, radix, 1 + rng() % 4000);
            DigitHash hash(radix);
            for (upL_t at = 0; at < digits.size();) {
                const upL_t n = std::min<upL_t>(digits.size() - at, rng() % (round % 2 == 0 ? 30 : 3000));
                hash.add(digits.data() + at, n);
                at += n;
            }
            EXPECT_EQ(hash.value(), hash_of(radix, "0", digits));
        }
    }
}

TEST(DigitHash, EveryBitOfTheTextCounts) {
    auto rng = testing::make_rng(4);
    for (const u64_t radix : radices) {
        const std::string digits = random_digits(rng, radix, 333);
        const u64_t right = hash_of(radix, "3", digits);
        for (upL_t bit = 0; bit < 8 * digits.size(); ++bit) {
            std::string flipped = digits;
            flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ 1 << bit % 8);
            DigitHash hash(radix);
            hash.add("3", 1);
            hash.end_group();
            hash.add(flipped.data(), flipped.size());
            EXPECT_NE(hash.value(), right) << bit;
        }
    }
}

TEST(DigitHash, NothingButDigits) {
    const char wrong[] = {'.', 'A', 'g', '/', ':', ' ', '\0', '\xb1'};
    for (const u64_t radix : radices) {
        for (const upL_t at : {0u, 5u, 18u, 19u, 2500u, 4999u}) {
            for (const char c : wrong) {
                std::string digits(5000, '1');
                digits[at] = c;
                DigitHash hash(radix);
                hash.add(digits.data(), digits.size());
                EXPECT_FALSE(hash.value()) << radix << ' ' << at;
                hash.end_group();
                EXPECT_FALSE(hash.value()) << radix << ' ' << at;
            }
        }
    }
    DigitHash decimal(10);
    decimal.add("a", 1);
    EXPECT_FALSE(decimal.value());
}

// The errors to which a residue of binary words is blind: of one size at the distance of 61 words.
TEST(DigitHash, SeesErrorsThatRepeatFromWordToWord) {
    const std::string digits(16 * 61, '4');
    std::string wrong = digits;
    for (upL_t word = 0; word < 61; ++word) wrong[16 * word + 7] = '5';
    EXPECT_NE(hash_of(16, "3", digits), hash_of(16, "3", wrong));
}

TEST(DigitHash, OfWordsIsThatOfTheirDigits) {
    auto rng = testing::make_rng(5);
    for (const u64_t radix : radices) {
        const auto& routines = CVN::digit_routines(radix, CVN::DigitForm::str);
        for (upL_t w = 1; w <= 40; ++w) {
            std::vector<cdi> words(w);
            for (cdi& word : words) word = radix == 10 ? rng() % CVN::decimal_base : rng();
            std::string digits(w * group_of(radix), '\0');
            routines.from_words(digits.data(), words.data(), w);
            const u64_t integer = rng();
            char text[32];
            std::snprintf(text, sizeof text, radix == 10 ? "%llu" : "%llx",
                          static_cast<unsigned long long>(integer));
            for (int i = 0; i < 30; ++i) {
                const u64_t count = i == 0 ? digits.size() : rng() % (digits.size() + 1);
                EXPECT_EQ(digit_hash_of_words(radix, integer, words.data(), w, count),
                          expected_hash(radix, text, digits.substr(0, count)))
                    << radix << ' ' << w << ' ' << count;
            }
        }
    }
}

}  // namespace
}  // namespace znp
