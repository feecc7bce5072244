// Sums and differences of BigFloat against exact integers.
#include <string>

#include "foundation/exceptions.hpp"
#include "numbers/big_float.hpp"
#include "numbers/float_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::big;
using testing::BigIn;
using testing::Integer;
using testing::Lengths;
using testing::random_mantissa;
using testing::value;

constexpr s64_t low = -400;

template <class word>
class BigFloatSums : public ::testing::Test {
  protected:
    static constexpr word ones = static_cast<word>(~word{0});

    // Pairs of every alignment and sign, with precisions that cut nothing, something, and everything of one.
    template <class Call>
    void for_pairs(u64_t stream, Call call) {
        auto rng = testing::make_rng(stream);
        for (upL_t La = 1; La <= 5; La++) {
            for (upL_t Lb = 1; Lb <= 5; Lb++) {
                for (s64_t shift = -8; shift <= 8; shift++) {
                    for (const upL_t p : Lengths{1, 2, 4, 20}) {
                        const auto A = random_mantissa<word>(La, rng), B = random_mantissa<word>(Lb, rng);
                        call(big(A, 1, rng() % 2 == 0), big(B, 1 + shift, rng() % 2 == 0), p);
                    }
                }
            }
        }
    }

    // The words of |a| and |b| from the result's lowest position on, in units of that position.
    static s64_t bottom(const BigFloat<word>& a, const BigFloat<word>& b, upL_t p) {
        return std::max(std::max(a.get_mag(), b.get_mag()) - static_cast<s64_t>(p) - 1,
                        std::min(a.get_exp(), b.get_exp()));
    }
    static upL_t length(const BigFloat<word>& a, const BigFloat<word>& b, upL_t p) {
        return static_cast<upL_t>(std::max(a.get_mag(), b.get_mag()) - bottom(a, b, p));
    }
    static Integer cut(BigFloat<word> x, s64_t position) {
        if (!x.raw_sign()) x.negate();
        return value(x, low) >> static_cast<u64_t>(position - low) * WordTraits<word>::bits;
    }
};
TYPED_TEST_SUITE(BigFloatSums, testing::Words);

template <class word>
bool is_plain_zero(const BigFloat<word>& x) {
    return x.is_zero() && x.raw_sign() && x.get_exp() == 0;
}

TYPED_TEST(BigFloatSums, MagnitudesAdd) {
    using word = TypeParam;
    this->for_pairs(51, [this](const BigFloat<word>& a, const BigFloat<word>& b, upL_t p) {
        const s64_t bottom = this->bottom(a, b, p);
        BigIn<word> T(this->length(a, b, p) + 1);
        T.x.set_uadd(a, b, p);
        EXPECT_EQ(value(T.x, bottom), this->cut(a, bottom) + this->cut(b, bottom));
        EXPECT_EQ(T.x.get_exp(), bottom);
        EXPECT_TRUE(T.x.raw_sign());
        EXPECT_NE(T.x.get_T()[T.x.get_L() - 1], 0u);
    });
}

TYPED_TEST(BigFloatSums, MagnitudesSubtract) {
    using word = TypeParam;
    this->for_pairs(52, [this](const BigFloat<word>& x, const BigFloat<word>& y, upL_t p) {
        const BigFloat<word>& a = ucmp(x, y) >= 0 ? x : y;
        const BigFloat<word>& b = ucmp(x, y) >= 0 ? y : x;
        const s64_t bottom = this->bottom(a, b, p);
        BigIn<word> T(this->length(a, b, p));
        T.x.set_usub(a, b, p);
        EXPECT_EQ(value(T.x, T.x.is_zero() ? 0 : bottom), this->cut(a, bottom) - this->cut(b, bottom));
        EXPECT_TRUE(T.x.raw_sign());
    });
}

TYPED_TEST(BigFloatSums, SignedSumsAndDifferences) {
    using word = TypeParam;
    this->for_pairs(53, [this](const BigFloat<word>& a, const BigFloat<word>& b, upL_t) {
        constexpr upL_t all = 40;  // nothing is cut
        const upL_t L = this->length(a, b, all) + 1;
        BigIn<word> sum(L), difference(L);
        sum.x.set_add(a, b, all);
        difference.x.set_sub(a, b, all);
        EXPECT_EQ(value(sum.x, low), value(a, low) + value(b, low));
        EXPECT_EQ(value(difference.x, low), value(a, low) - value(b, low));
    });
}

TYPED_TEST(BigFloatSums, SignedSumsToAPrecision) {
    using word = TypeParam;
    this->for_pairs(54, [this](const BigFloat<word>& a, const BigFloat<word>& b, upL_t p) {
        const s64_t bottom = this->bottom(a, b, p);
        BigIn<word> T(this->length(a, b, p) + 1);
        T.x.set_add(a, b, p);
        const Integer error = value(T.x, low) - value(a, low) - value(b, low);
        const Integer unit = Integer(1) << static_cast<u64_t>(bottom - low) * WordTraits<word>::bits;
        EXPECT_TRUE(error < unit + unit && Integer(0) - error < unit + unit);
    });
}

TYPED_TEST(BigFloatSums, ANumberAndItsNegativeGivePlainZero) {
    using word = TypeParam;
    auto rng = testing::make_rng(55);
    const auto A = random_mantissa<word>(7, rng);
    BigIn<word> T(8);
    for (const bool positive : {true, false}) {
        T.x.set_add(big(A, -3, positive), big(A, -3, !positive), 9);
        EXPECT_TRUE(is_plain_zero(T.x));
        T.x.set_sub(big(A, -3, positive), big(A, -3, positive), 9);
        EXPECT_TRUE(is_plain_zero(T.x));
    }
    std::vector<word> longer(9, 0);
    std::copy(A.begin(), A.end(), longer.begin() + 2);
    T.x.set_sub(big(A, -3), big(longer, -5), 9);
    EXPECT_TRUE(is_plain_zero(T.x)) << "trailing zero words";
    T.x.set_usub(big(A, -3), big(A, -3), 9);
    EXPECT_TRUE(is_plain_zero(T.x));
}

TYPED_TEST(BigFloatSums, WithZeroTheTopWordsAreCopied) {
    using word = TypeParam;
    auto rng = testing::make_rng(56);
    const auto A = random_mantissa<word>(9, rng);
    const BigFloat<word> zero;
    for (const upL_t p : Lengths{0, 3, 7, 20}) {
        const upL_t kept = std::min<upL_t>(p + 2, 9);
        const Integer top = Integer(A) >> (9 - kept) * WordTraits<word>::bits;
        const s64_t exp = -4 + static_cast<s64_t>(9 - kept);
        const Integer minus = Integer(0) - top;
        for (const bool positive : {true, false}) {
            const auto a = big(A, -4, positive);
            const Integer& signed_top = positive ? top : minus;
            BigIn<word> T(kept);
            const auto gives = [&](const Integer& expected) {
                EXPECT_EQ(T.x.get_L(), kept);
                EXPECT_EQ(value(T.x, exp), expected);
            };
            T.x.set_uadd(a, zero, p), gives(top);
            T.x.set_uadd(zero, a, p), gives(top);
            T.x.set_usub(a, zero, p), gives(top);
            T.x.set_usub(zero, a, p), gives(minus);
            T.x.set_add(a, zero, p), gives(signed_top);
            T.x.set_add(zero, a, p), gives(signed_top);
            T.x.set_sub(a, zero, p), gives(signed_top);
            T.x.set_sub(zero, a, p), gives(Integer(0) - signed_top);
        }
    }
    BigIn<word> T(1);
    T.x.set_add(zero, zero, 3);
    EXPECT_TRUE(is_plain_zero(T.x));
    T.x.set_sub(zero, zero, 3);
    EXPECT_TRUE(is_plain_zero(T.x));
}

TYPED_TEST(BigFloatSums, LongOperandsCrossTheWindows) {
    using word = TypeParam;
    auto rng = testing::make_rng(57);
    for (const upL_t L : Lengths{127, 128, 129, 255, 256, 257, 600}) {
        for (const s64_t shift : {0, 1, -1, 77, -128, 130}) {
            const auto A = random_mantissa<word>(L, rng), B = random_mantissa<word>(L - 3, rng);
            const auto a = big(A, 0), b = big(B, shift);
            const upL_t need = this->length(a, b, 2000) + 1;
            BigIn<word> sum(need), difference(need);
            sum.x.set_add(a, b, 2000);
            difference.x.set_sub(a, b, 2000);
            EXPECT_EQ(value(sum.x, low), value(a, low) + value(b, low));
            EXPECT_EQ(value(difference.x, low), value(a, low) - value(b, low));
        }
    }
}

TYPED_TEST(BigFloatSums, CarryAndBorrowRunThroughAllWindows) {
    using word = TypeParam;
    const std::vector<word> A(300, this->ones), one{1};
    std::vector<word> power(301, 0);
    power.back() = 1;
    BigIn<word> T(301);
    T.x.set_uadd(big(A, 0), big(one, 0), 400);
    EXPECT_EQ(value(T.x, 0), Integer(power));
    EXPECT_EQ(T.x.get_L(), 301u);
    T.x.set_usub(big(power, 0), big(one, 0), 400);
    EXPECT_EQ(value(T.x, 0), Integer(A));
    EXPECT_EQ(T.x.get_L(), 300u);
}

TYPED_TEST(BigFloatSums, RestrictedDifference) {
    using word = TypeParam;
    constexpr s64_t bits = WordTraits<word>::bits;
    this->for_pairs(58, [](const BigFloat<word>& a, const BigFloat<word>& b, upL_t p) {
        for (const s64_t mag : {a.get_mag(), s64_t{-2}, s64_t{4}, s64_t{15}}) {
            const s64_t bottom = mag - static_cast<s64_t>(p) - 1;
            const u64_t down = static_cast<u64_t>((bottom - low) * bits);
            const auto window = [down, p](BigFloat<word> x) {
                if (!x.raw_sign()) x.negate();
                return (value(x, low) >> down).low_bits((p + 1) * WordTraits<word>::bits);
            };
            BigIn<word> T(p + 1);
            T.x.set_rsub(a, b, mag, p, false);
            BigFloat<word> magnitude = T.x;
            if (!T.x.is_zero()) {
                EXPECT_FALSE(T.x.raw_sign());
                magnitude.negate();
            }
            EXPECT_EQ(value(magnitude, magnitude.is_zero() ? 0 : bottom),
                      (window(a) - window(b)).low_bits((p + 1) * WordTraits<word>::bits));
        }
    });
}

TYPED_TEST(BigFloatSums, AddInPlaceAtEveryPosition) {
    using word = TypeParam;
    using wide = typename WordTraits<word>::wide;
    constexpr unsigned bits = WordTraits<word>::bits;
    auto rng = testing::make_rng(59);
    for (upL_t L = 1; L < 6; L++) {
        for (s64_t at = 0; at <= static_cast<s64_t>(L); at++) {
            for (int i = 0; i < 20; i++) {
                const auto A = random_mantissa<word>(L, rng);
                const word parts[2] = {
                    i % 3 == 0 ? this->ones : static_cast<word>(rng()),
                    i % 2 == 0 ? word{0} : (i % 5 == 0 ? this->ones : static_cast<word>(rng()))};
                const wide x = static_cast<wide>(parts[1]) << bits | parts[0];
                const upL_t count = parts[1] != 0 ? 2 : 1;
                BigIn<word> T(std::max(L, static_cast<upL_t>(at) + count) + 1);
                T.x.set_gfp(big(A, -2), L);
                T.x.add_ip(x, at - 2);
                EXPECT_EQ(value(T.x, -2), Integer(A) + (Integer(parts, 2) << static_cast<u64_t>(at) * bits));
                EXPECT_NE(T.x.get_T()[T.x.get_L() - 1], 0u);
            }
        }
    }
    BigIn<word> T(4);
    T.x.set_gfp(big(std::vector<word>(3, this->ones), 0), 3);
    T.x.add_ip(1, 0);
    EXPECT_EQ(T.x.get_L(), 4u) << "the carry takes the word above the top";
}

TYPED_TEST(BigFloatSums, AddInPlaceOutOfRange) {
    using word = TypeParam;
    BigIn<word> T(9);
    T.x.set_gfp(big(std::vector<word>{1, 2, 3}, -1), 3);
    for (const s64_t position : {-2, 3}) {
        const auto e = testing::caught<zn_error>([&] { T.x.add_ip(1, position); });
        EXPECT_STREQ(e.what(), "BigFloat::add_ip(): Magnitude is out of range.");
        EXPECT_EQ(e.exception.code, error_code::out_of_range);
    }
    EXPECT_NO_THROW(T.x.add_ip(1, -1));
    EXPECT_NO_THROW(T.x.add_ip(1, 2));
}

}  // namespace
}  // namespace znp
