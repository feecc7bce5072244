#include "multiply/kernels/word_primitives.hpp"

#include <gmp.h>
#include <gtest/gtest.h>

#include <limits>

#include "test_seed.hpp"

namespace znp {
namespace {

TEST(WordPrimitives, Mul32HoldsTheWholeProduct) {
    EXPECT_EQ(Mul32(0xffffffff, 0xffffffff), 0xfffffffe00000001u);
    EXPECT_EQ(Mul32(0, 0xffffffff), 0u);
    EXPECT_EQ(Mul32(0x80000000, 2), u64_t{1} << 32);
}

TEST(WordPrimitives, Mul64HoldsTheWholeProduct) {
    const u64_t top = std::numeric_limits<u64_t>::max();
    EXPECT_EQ(static_cast<u64_t>(Mul64(top, top)), 1u);
    EXPECT_EQ(static_cast<u64_t>(Mul64(top, top) >> 64), top - 1);
    EXPECT_EQ(static_cast<u64_t>(Mul64(u64_t{1} << 63, 2) >> 64), 1u);
}

TEST(WordPrimitives, Mul64AgainstGmp) {
    auto rng = testing::make_rng(20);
    for (int i = 0; i < 1000; i++) {
        const mp_limb_t a = rng();
        const mp_limb_t b = rng();
        mp_limb_t product[2];
        product[1] = mpn_mul_1(product, &a, 1, b);
        ASSERT_EQ(static_cast<u64_t>(Mul64(a, b)), product[0]);
        ASSERT_EQ(static_cast<u64_t>(Mul64(a, b) >> 64), product[1]);
    }
}

TEST(WordPrimitives, ZeroBitsOfEveryPowerOfTwo) {
    for (unsigned bit = 0; bit < 64; bit++) {
        const u64_t x = u64_t{1} << bit;
        EXPECT_EQ(LeadingZeros(x), 63 - bit);
        EXPECT_EQ(LeadingZeros(x | 1), 63 - bit);
        EXPECT_EQ(TrailingZeros(x), bit);
        EXPECT_EQ(TrailingZeros(x | u64_t{1} << 63), bit);
    }
}

TEST(WordPrimitives, AZeroHas64ZeroBits) {
    EXPECT_EQ(LeadingZeros(0), 64u);
    EXPECT_EQ(TrailingZeros(0), 64u);
}

}  // namespace
}  // namespace znp
