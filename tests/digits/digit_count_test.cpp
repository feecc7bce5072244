#include "digits/digit_count.hpp"

#include <gtest/gtest.h>

#include <string>

#include "test_seed.hpp"

namespace znp {
namespace {

TEST(DigitCount, AgreesWithCountingOneByOne) {
    auto rng = testing::make_rng(1);
    for (const upL_t length : {0u, 1u, 7u, 8u, 9u, 15u, 16u, 63u, 10007u}) {
        std::string digits(length, '\0');
        std::array<u64_t, 16> expected{};
        for (char& digit : digits) {
            digit = static_cast<char>(rng() % 16);
            ++expected[static_cast<upL_t>(digit)];
        }
        std::array<u64_t, 16> counts{};
        count_digits(counts, digits.data(), length);
        EXPECT_EQ(counts, expected) << length;
    }
}

TEST(DigitCount, AddsToWhatIsThere) {
    std::array<u64_t, 16> counts{};
    counts[7] = 100;
    const std::string digits(9, '\7');
    count_digits(counts, digits.data(), 9);
    EXPECT_EQ(counts[7], 109u);
}

}  // namespace
}  // namespace znp
