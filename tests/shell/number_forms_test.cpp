#include "shell/number_forms.hpp"

#include <gtest/gtest.h>

#include <string>

#include "foundation/strings.hpp"

namespace znp {
namespace {

TEST(DecimalForm, ReadsUpToTheFirstNonDigit) {
    EXPECT_EQ(parse_u64(""), 0u);
    EXPECT_EQ(parse_u64("x12"), 0u);
    EXPECT_EQ(parse_u64("-5"), 0u);
    EXPECT_EQ(parse_u64("12x34"), 12u);
    EXPECT_EQ(parse_u64("18446744073709551615"), 18446744073709551615u);
    EXPECT_EQ(parse_u64("18446744073709551616"), 0u);  // wraps
}

TEST(DigitsWithSuffix, EveryLetterInEitherCase) {
    EXPECT_EQ(parse_digit_count("7"), 7u);
    EXPECT_EQ(parse_digit_count("7k"), 7'000u);
    EXPECT_EQ(parse_digit_count("7K"), 7'000u);
    EXPECT_EQ(parse_digit_count("7m"), 7'000'000u);
    EXPECT_EQ(parse_digit_count("7M"), 7'000'000u);
    EXPECT_EQ(parse_digit_count("7b"), 7'000'000'000u);
    EXPECT_EQ(parse_digit_count("7B"), 7'000'000'000u);
    EXPECT_EQ(parse_digit_count("7t"), 7'000'000'000'000u);
    EXPECT_EQ(parse_digit_count("7T"), 7'000'000'000'000u);
}

TEST(DigitsWithSuffix, OtherCharactersLeaveTheNumber) {
    EXPECT_EQ(parse_digit_count(""), 0u);
    EXPECT_EQ(parse_digit_count("m"), 0u);
    EXPECT_EQ(parse_digit_count("25g"), 25u);
    EXPECT_EQ(parse_digit_count("25 m"), 25u);
    EXPECT_EQ(parse_digit_count("25mb"), 25'000'000u);
    EXPECT_EQ(parse_digit_count("-25m"), 0u);
}

TEST(DigitsWithSuffix, ThereIsNoFraction) {
    EXPECT_EQ(parse_digit_count("2.5b"), 2u);
}

TEST(DigitsWithSuffix, OverflowWraps) {
    EXPECT_EQ(parse_digit_count("99999999999999999999t"),
              static_cast<u64_t>(static_cast<u128_t>(7766279631452241919u) * 1'000'000'000'000u));
}

TEST(ByteSize, EveryUnitInEitherCase) {
    const std::string units = "kmgtpe";
    for (upL_t i = 0; i < units.size(); i++) {
        const u64_t expected = u64_t{3} << (10 * (i + 1));
        EXPECT_EQ(parse_byte_size(std::string("3") + units[i]), expected);
        EXPECT_EQ(parse_byte_size(std::string("3") + static_cast<char>(units[i] - 'a' + 'A')), expected);
    }
}

TEST(ByteSize, FractionsNeedALetter) {
    EXPECT_EQ(parse_byte_size("768"), 768u);
    EXPECT_EQ(parse_byte_size("768MB"), 805'306'368u);
    EXPECT_EQ(parse_byte_size("2.5G"), 2'684'354'560u);
    EXPECT_EQ(parse_byte_size("2.5GB"), 2'684'354'560u);
    EXPECT_EQ(parse_byte_size("2.5 G"), 2'684'354'560u);
    EXPECT_EQ(parse_byte_size("2.5   g"), 2'684'354'560u);
    EXPECT_EQ(parse_byte_size(".5K"), 512u);
    EXPECT_EQ(parse_byte_size("2.K"), 2'048u);
    EXPECT_EQ(parse_byte_size("2.9"), 2u);
    EXPECT_EQ(parse_byte_size("2.9x"), 2u);
    EXPECT_EQ(parse_byte_size(""), 0u);
    EXPECT_EQ(parse_byte_size("K"), 0u);
    EXPECT_EQ(parse_byte_size("-1K"), 0u);
}

TEST(ByteSize, TheScaledFractionIsTruncated) {
    EXPECT_EQ(parse_byte_size("0.001K"), 1u);   // 1.024
    EXPECT_EQ(parse_byte_size("0.0019K"), 1u);  // 1.9456
    EXPECT_EQ(parse_byte_size("1.9999K"), 1024u + 1023u);
}

TEST(ByteSize, OverflowWrapsAndLongFractionsStayDefined) {
    EXPECT_EQ(parse_byte_size("16E"), 0u);
    EXPECT_EQ(parse_byte_size("17E"), u64_t{1} << 60);
    const u64_t nearly_2e = parse_byte_size("1." + std::string(5000, '9') + "E");
    EXPECT_GE(nearly_2e, (u64_t{2} << 60) - 1024);
    EXPECT_LE(nearly_2e, (u64_t{2} << 60) + 1024);
}

}  // namespace
}  // namespace znp
