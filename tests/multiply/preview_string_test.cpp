#include "multiply/kernels/preview_string.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace znp::CVN {
namespace {

constexpr u64_t all_ones = std::numeric_limits<u64_t>::max();

// The fraction of Pi, least significant word first.
const std::vector<cdi> pi_dec = {899862803482534211u, 9445923078164062862u, 7169399375105820974u,
                                 6264338327950288419u, 1415926535897932384u};
const std::vector<cdi> pi_hex = {0x452821e638d01377u, 0x082efa98ec4e6c89u, 0xa4093822299f31d0u,
                                 0x13198a2e03707344u, 0x243f6a8885a308d3u};
constexpr char pi_dec_50[] = "3.14159265358979323846264338327950288419716939937510";
constexpr char pi_hex_50[] = "3.243f6a8885a308d313198a2e03707344a4093822299f31d008";

std::string dec(upL_t n, const std::vector<cdi>& T, u64_t integer) {
    return preview_string_dec(n, T.data() + T.size(), T.size(), integer);
}

std::string hex(upL_t n, const std::vector<cdi>& T, u64_t integer) {
    return preview_string_hex(n, T.data() + T.size(), T.size(), integer);
}

TEST(PreviewString, OfAZeroIntegerWordBeginsWithZeroAndAPoint) {
    EXPECT_EQ(dec(5, pi_dec, 0), "0.14159");
    EXPECT_EQ(hex(5, pi_hex, 0), "0.243f6");
}

TEST(PreviewString, HasAtMost50Digits) {
    for (const upL_t n : {upL_t{50}, upL_t{51}, upL_t{57}, upL_t{64}, upL_t{1000}, all_ones}) {
        EXPECT_EQ(dec(n, pi_dec, 3), pi_dec_50);
        EXPECT_EQ(hex(n, pi_hex, 3), pi_hex_50);
    }
}

TEST(PreviewString, IsCutAfterTheDigitsAskedFor) {
    for (upL_t n = 0; n <= 50; n++) {
        EXPECT_EQ(dec(n, pi_dec, 3), std::string(pi_dec_50).substr(0, 2 + n));
        EXPECT_EQ(hex(n, pi_hex, 3), std::string(pi_hex_50).substr(0, 2 + n));
    }
}

TEST(PreviewString, OfFewerWordsThanNeededEndsWithTheirDigits) {
    EXPECT_EQ(preview_string_dec(50, nullptr, 0, 0), "0.");
    EXPECT_EQ(preview_string_hex(50, nullptr, 0, 7), "7.");
    for (upL_t L = 1; L <= pi_dec.size(); L++) {
        const std::vector<cdi> top_dec(pi_dec.end() - static_cast<std::ptrdiff_t>(L), pi_dec.end());
        const std::vector<cdi> top_hex(pi_hex.end() - static_cast<std::ptrdiff_t>(L), pi_hex.end());
        EXPECT_EQ(dec(50, top_dec, 3), std::string(pi_dec_50).substr(0, 2 + 19 * L));
        EXPECT_EQ(hex(50, top_hex, 3), std::string(pi_hex_50).substr(0, 2 + 16 * L));
    }
}

TEST(PreviewString, KeepsZerosOfTheFractionButNoneBeforeTheIntegerWord) {
    EXPECT_EQ(dec(8, {0}, 10), "10.00000000");
    EXPECT_EQ(hex(8, {0}, 16), "10.00000000");
    EXPECT_EQ(hex(3, {0x00a0000000000000u}, 0xdeadbeef), "deadbeef.00a");
    EXPECT_EQ(dec(4, {1}, 9'999'999'999'999'999'999u), "9999999999999999999.0000");
}

TEST(PreviewString, OfTheLargestIntegerWord) {
    EXPECT_EQ(dec(1, {0}, all_ones), "18446744073709551615.0");
    EXPECT_EQ(hex(1, {0}, all_ones), "ffffffffffffffff.0");
}

}  // namespace
}  // namespace znp::CVN
