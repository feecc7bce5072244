#include "foundation/byte_size.hpp"

#include <gtest/gtest.h>

namespace znp {
namespace {

void expect_size(std::string_view text, u64_t whole, double fraction) {
    const ByteSize size = scan_byte_size(text);
    EXPECT_EQ(size.whole, whole) << text;
    EXPECT_EQ(size.fraction, fraction) << text;
}

TEST(ByteSizeScan, TheUnitScalesBothParts) {
    expect_size("2.5G", u64_t{2} << 30, 536870912.0);
    expect_size("2.5 gb", u64_t{2} << 30, 536870912.0);
    expect_size(".5K", 0, 512.0);
    expect_size("1e", u64_t{1} << 60, 0.0);
    expect_size("3.K", 3072, 0.0);
}

TEST(ByteSizeScan, WithoutAUnitTheFractionIsDropped) {
    expect_size("768", 768, 0.0);
    expect_size("2.9", 2, 0.0);
    expect_size("2.9 bytes", 2, 0.0);
    expect_size("1.5.5K", 1, 0.0);
}

TEST(ByteSizeScan, NothingIsAnError) {
    expect_size("", 0, 0.0);
    expect_size("   ", 0, 0.0);
    expect_size(".", 0, 0.0);
    expect_size("-1K", 0, 0.0);
    expect_size("16E", 0, 0.0);  // wraps
}

TEST(ByteSizeScan, TheFractionIsNoIntegerYet) {
    const double fraction = scan_byte_size("7.001K").fraction;
    EXPECT_NEAR(fraction, 1.024, 1e-12);
}

}  // namespace
}  // namespace znp
