// Sums and differences of BigFloat against exact integers.
#include <limits>
#include <string>
#include <vector>

#include "foundation/exceptions.hpp"
#include "numbers/big_float.hpp"
#include "numbers/float_sum.hpp"
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

class BigFloatSums : public ::testing::Test {
  protected:
    static constexpr cdi ones = ~cdi{0};

    // Pairs of every alignment and sign, with precisions that cut nothing, something, and everything of one.
    template <class Call>
    void for_pairs(u64_t stream, Call call) {
        auto rng = testing::make_rng(stream);
        for (upL_t La = 1; La <= 5; La++) {
            for (upL_t Lb = 1; Lb <= 5; Lb++) {
                for (s64_t shift = -8; shift <= 8; shift++) {
                    for (const upL_t p : Lengths{1, 2, 4, 20}) {
                        const auto A = random_mantissa(La, rng), B = random_mantissa(Lb, rng);
                        call(big(A, 1, rng() % 2 == 0), big(B, 1 + shift, rng() % 2 == 0), p);
                    }
                }
            }
        }
    }

    // The words of |a| and |b| from the result's lowest position on, in units of that position.
    static s64_t bottom(const BigFloat& a, const BigFloat& b, upL_t p) {
        return std::max(std::max(a.get_mag(), b.get_mag()) - static_cast<s64_t>(p) - 1,
                        std::min(a.get_exp(), b.get_exp()));
    }
    static upL_t length(const BigFloat& a, const BigFloat& b, upL_t p) {
        return static_cast<upL_t>(std::max(a.get_mag(), b.get_mag()) - bottom(a, b, p));
    }
    static Integer cut(BigFloat x, s64_t position) {
        if (!x.raw_sign()) x.negate();
        return value(x, low) >> static_cast<u64_t>(position - low) * WordTraits<cdi>::bits;
    }
};

bool is_plain_zero(const BigFloat& x) {
    return x.is_zero() && x.raw_sign() && x.get_exp() == 0;
}

TEST_F(BigFloatSums, MagnitudesAdd) {
    this->for_pairs(51, [this](const BigFloat& a, const BigFloat& b, upL_t p) {
        const s64_t bottom = this->bottom(a, b, p);
        BigIn T(this->length(a, b, p) + 1);
        T.x.set_uadd(a, b, p);
        EXPECT_EQ(value(T.x, bottom), this->cut(a, bottom) + this->cut(b, bottom));
        EXPECT_EQ(T.x.get_exp(), bottom);
        EXPECT_TRUE(T.x.raw_sign());
        EXPECT_NE(T.x.get_T()[T.x.get_L() - 1], 0u);
    });
}

TEST_F(BigFloatSums, MagnitudesSubtract) {
    this->for_pairs(52, [this](const BigFloat& x, const BigFloat& y, upL_t p) {
        const BigFloat& a = ucmp(x, y) >= 0 ? x : y;
        const BigFloat& b = ucmp(x, y) >= 0 ? y : x;
        const s64_t bottom = this->bottom(a, b, p);
        BigIn T(this->length(a, b, p));
        T.x.set_usub(a, b, p);
        EXPECT_EQ(value(T.x, T.x.is_zero() ? 0 : bottom), this->cut(a, bottom) - this->cut(b, bottom));
        EXPECT_TRUE(T.x.raw_sign());
    });
}

TEST_F(BigFloatSums, SignedSumsAndDifferences) {
    this->for_pairs(53, [this](const BigFloat& a, const BigFloat& b, upL_t) {
        constexpr upL_t all = 40;  // nothing is cut
        const upL_t L = this->length(a, b, all) + 1;
        BigIn sum(L), difference(L);
        sum.x.set_add(a, b, all);
        difference.x.set_sub(a, b, all);
        EXPECT_EQ(value(sum.x, low), value(a, low) + value(b, low));
        EXPECT_EQ(value(difference.x, low), value(a, low) - value(b, low));
    });
}

TEST_F(BigFloatSums, SignedSumsToAPrecision) {
    this->for_pairs(54, [this](const BigFloat& a, const BigFloat& b, upL_t p) {
        const s64_t bottom = this->bottom(a, b, p);
        BigIn T(this->length(a, b, p) + 1);
        T.x.set_add(a, b, p);
        const Integer error = value(T.x, low) - value(a, low) - value(b, low);
        const Integer unit = Integer(1) << static_cast<u64_t>(bottom - low) * WordTraits<cdi>::bits;
        EXPECT_TRUE(error < unit + unit && Integer(0) - error < unit + unit);
    });
}

TEST_F(BigFloatSums, ANumberAndItsNegativeGivePlainZero) {
    auto rng = testing::make_rng(55);
    const auto A = random_mantissa(7, rng);
    BigIn T(8);
    for (const bool positive : {true, false}) {
        T.x.set_add(big(A, -3, positive), big(A, -3, !positive), 9);
        EXPECT_TRUE(is_plain_zero(T.x));
        T.x.set_sub(big(A, -3, positive), big(A, -3, positive), 9);
        EXPECT_TRUE(is_plain_zero(T.x));
    }
    std::vector<cdi> longer(9, 0);
    std::copy(A.begin(), A.end(), longer.begin() + 2);
    T.x.set_sub(big(A, -3), big(longer, -5), 9);
    EXPECT_TRUE(is_plain_zero(T.x)) << "trailing zero words";
    T.x.set_usub(big(A, -3), big(A, -3), 9);
    EXPECT_TRUE(is_plain_zero(T.x));
}

TEST_F(BigFloatSums, WithZeroTheTopWordsAreCopied) {
    auto rng = testing::make_rng(56);
    const auto A = random_mantissa(9, rng);
    const BigFloat zero;
    for (const upL_t p : Lengths{0, 3, 7, 20}) {
        const upL_t kept = std::min<upL_t>(p + 2, 9);
        const Integer top = Integer(A) >> (9 - kept) * WordTraits<cdi>::bits;
        const s64_t exp = -4 + static_cast<s64_t>(9 - kept);
        const Integer minus = Integer(0) - top;
        for (const bool positive : {true, false}) {
            const auto a = big(A, -4, positive);
            const Integer& signed_top = positive ? top : minus;
            BigIn T(kept);
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
    BigIn T(1);
    T.x.set_add(zero, zero, 3);
    EXPECT_TRUE(is_plain_zero(T.x));
    T.x.set_sub(zero, zero, 3);
    EXPECT_TRUE(is_plain_zero(T.x));
}

TEST_F(BigFloatSums, LongOperandsCrossTheWindows) {
    auto rng = testing::make_rng(57);
    for (const upL_t L : Lengths{127, 128, 129, 255, 256, 257, 600}) {
        for (const s64_t shift : {0, 1, -1, 77, -128, 130}) {
            const auto A = random_mantissa(L, rng), B = random_mantissa(L - 3, rng);
            const auto a = big(A, 0), b = big(B, shift);
            const upL_t need = this->length(a, b, 2000) + 1;
            BigIn sum(need), difference(need);
            sum.x.set_add(a, b, 2000);
            difference.x.set_sub(a, b, 2000);
            EXPECT_EQ(value(sum.x, low), value(a, low) + value(b, low));
            EXPECT_EQ(value(difference.x, low), value(a, low) - value(b, low));
        }
    }
}

TEST_F(BigFloatSums, CarryAndBorrowRunThroughAllWindows) {
    const std::vector<cdi> A(300, this->ones), one{1};
    std::vector<cdi> power(301, 0);
    power.back() = 1;
    BigIn T(301);
    T.x.set_uadd(big(A, 0), big(one, 0), 400);
    EXPECT_EQ(value(T.x, 0), Integer(power));
    EXPECT_EQ(T.x.get_L(), 301u);
    T.x.set_usub(big(power, 0), big(one, 0), 400);
    EXPECT_EQ(value(T.x, 0), Integer(A));
    EXPECT_EQ(T.x.get_L(), 300u);
}

TEST_F(BigFloatSums, RestrictedDifference) {
    constexpr s64_t bits = WordTraits<cdi>::bits;
    this->for_pairs(58, [](const BigFloat& a, const BigFloat& b, upL_t p) {
        for (const s64_t mag : {a.get_mag(), s64_t{-2}, s64_t{4}, s64_t{15}}) {
            const s64_t bottom = mag - static_cast<s64_t>(p) - 1;
            const u64_t down = static_cast<u64_t>((bottom - low) * bits);
            const auto window = [down, p](BigFloat x) {
                if (!x.raw_sign()) x.negate();
                return (value(x, low) >> down).low_bits((p + 1) * WordTraits<cdi>::bits);
            };
            BigIn T(p + 1);
            T.x.set_rsub(a, b, mag, p, false);
            BigFloat magnitude = T.x;
            if (!T.x.is_zero()) {
                EXPECT_FALSE(T.x.raw_sign());
                magnitude.negate();
            }
            EXPECT_EQ(value(magnitude, magnitude.is_zero() ? 0 : bottom),
                      (window(a) - window(b)).low_bits((p + 1) * WordTraits<cdi>::bits));
        }
    });
}

TEST_F(BigFloatSums, AddInPlaceAtEveryPosition) {
    using wide = typename WordTraits<cdi>::wide;
    constexpr unsigned bits = WordTraits<cdi>::bits;
    auto rng = testing::make_rng(59);
    for (upL_t L = 1; L < 6; L++) {
        for (s64_t at = 0; at <= static_cast<s64_t>(L); at++) {
            for (int i = 0; i < 20; i++) {
                const auto A = random_mantissa(L, rng);
                const cdi parts[2] = {
                    i % 3 == 0 ? this->ones : static_cast<cdi>(rng()),
                    i % 2 == 0 ? cdi{0} : (i % 5 == 0 ? this->ones : static_cast<cdi>(rng()))};
                const wide x = static_cast<wide>(parts[1]) << bits | parts[0];
                const upL_t count = parts[1] != 0 ? 2 : 1;
                BigIn T(std::max(L, static_cast<upL_t>(at) + count) + 1);
                T.x.set_gfp(big(A, -2), L);
                T.x.add_ip(x, at - 2);
                EXPECT_EQ(value(T.x, -2), Integer(A) + (Integer(parts, 2) << static_cast<u64_t>(at) * bits));
                EXPECT_NE(T.x.get_T()[T.x.get_L() - 1], 0u);
            }
        }
    }
    BigIn T(4);
    T.x.set_gfp(big(std::vector<cdi>(3, this->ones), 0), 3);
    T.x.add_ip(1, 0);
    EXPECT_EQ(T.x.get_L(), 4u) << "the carry takes the word above the top";
}

TEST_F(BigFloatSums, AddInPlaceOutOfRange) {
    BigIn T(9);
    T.x.set_gfp(big(std::vector<cdi>{1, 2, 3}, -1), 3);
    for (const s64_t position : {-2, 3}) {
        const auto e = testing::caught<zn_error>([&] { T.x.add_ip(1, position); });
        EXPECT_STREQ(e.what(), "BigFloat::add_ip(): Magnitude is out of range.");
        EXPECT_EQ(e.exception.code, error_code::out_of_range);
    }
    EXPECT_NO_THROW(T.x.add_ip(1, -1));
    EXPECT_NO_THROW(T.x.add_ip(1, 2));
}

// ---- Sums of floats of another storage

// A float that can only be read in windows.
class StoredFloat {
  public:
    explicit StoredFloat(const BigFloat& x) : x_(x) {}
    s64_t get_exp() const { return x_.get_exp(); }
    s64_t get_mag() const { return x_.get_mag(); }
    void read_window(cdi* out, s64_t position, upL_t n) const {
        EXPECT_GE(position, read_to_) << "read twice";
        read_to_ = position + static_cast<s64_t>(n);
        x_.read_window(out, position, n);
    }

  private:
    BigFloat x_;
    mutable s64_t read_to_ = std::numeric_limits<s64_t>::min();
};

TEST_F(BigFloatSums, WindowsOfAnyLengthGiveTheSameWords) {
    auto rng = testing::make_rng(57);
    for (const upL_t window : Lengths{1, 2, 7, 128, 1000}) {
        for (int i = 0; i < 60; i++) {
            const auto A = random_mantissa(1 + rng() % 300, rng), B = random_mantissa(1 + rng() % 300, rng);
            const BigFloat a = big(A, 1), b = big(B, static_cast<s64_t>(rng() % 400) - 200);
            const upL_t p = 1 + rng() % 400;
            const SumRange range(StoredFloat(a), b, p);
            EXPECT_EQ(range.bottom, this->bottom(a, b, p));
            EXPECT_EQ(range.L, this->length(a, b, p));

            std::vector<cdi> first(window), second(window), words;
            const SumWindows windows{first.data(), second.data(), window};
            const auto sink = [&](upL_t done, upL_t n, auto make) {
                EXPECT_EQ(done, words.size());
                make(first.data());
                words.insert(words.end(), first.begin(), first.begin() + static_cast<std::ptrdiff_t>(n));
            };
            const bool carry =
                combine(StoredFloat(a), StoredFloat(b), range.bottom, range.L, windows, add_chain, sink);
            if (carry) words.push_back(1);
            BigIn T(range.L + 1);
            T.x.set_uadd(a, b, p);
            EXPECT_EQ(Integer(words), Integer(T.x.get_T(), T.x.get_L()));

            words.clear();
            const bool borrow = combine(StoredFloat(a), b, range.bottom, range.L, windows, sub_chain, sink);
            EXPECT_EQ(borrow, this->cut(a, range.bottom) < this->cut(b, range.bottom));
            T.x.set_rsub(a, b, range.bottom + static_cast<s64_t>(range.L), range.L - 1, true);
            EXPECT_EQ(Integer(words), value(T.x, T.x.is_zero() ? 0 : range.bottom));
        }
    }
}

}  // namespace
}  // namespace znp
