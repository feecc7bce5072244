#include "numbers/big_float.hpp"

#include <cfloat>
#include <limits>
#include <string>
#include <type_traits>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/dispatch.hpp"
#include "numbers/float_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::big;
using testing::BigIn;
using testing::caught;
using testing::console_output;
using testing::dying;
using testing::exact;
using ::testing::ExitedWithCode;
using testing::expect_too_small;
using testing::Integer;
using testing::Lengths;
using testing::random_mantissa;
using testing::value;
using testing::Work;

class BigFloats : public ::testing::Test {
  protected:
    static constexpr cdi ones = ~cdi{0};
};

::testing::AssertionResult is_plain_zero(const BigFloat& x) {
    if (x.is_zero() && x.raw_sign() && x.get_exp() == 0 && x.get_sign() == 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "L " << x.get_L() << " exp " << x.get_exp();
}

// ---- Views and values

TEST_F(BigFloats, AreNotVirtual) {
    EXPECT_FALSE(std::is_polymorphic_v<BigFloatR>);
    EXPECT_EQ(sizeof(BigFloat), 5 * sizeof(u64_t));
    EXPECT_EQ(sizeof(BigFloatR), 7 * sizeof(u64_t));
}

TEST_F(BigFloats, WordsAndZero) {
    BigIn a(2);
    a.x.set_uW(7);
    EXPECT_EQ(value(a.x, 0), Integer(7));
    a.x.set_uW(0);
    EXPECT_TRUE(is_plain_zero(a.x));
    a.x.set_u64(0x1234567890abcdef);
    EXPECT_EQ(value(a.x, 0), Integer(0x1234567890abcdef));
    EXPECT_EQ(a.x.get_sign(), 1);
    a.x.negate();
    EXPECT_EQ(a.x.get_sign(), -1);
    EXPECT_FALSE(a.x.raw_sign());
    a.x.set_u64(0);
    EXPECT_TRUE(is_plain_zero(a.x));
    a.x.negate();
    EXPECT_TRUE(is_plain_zero(a.x)) << "there is no negative zero";
    a.x.set_zero();
    EXPECT_TRUE(is_plain_zero(a.x));
}

TEST_F(BigFloats, CopiesOfExactNumbers) {
    auto rng = testing::make_rng(21);
    const auto words = random_mantissa(9, rng);
    BasicInt integer(words.data(), 0, 0);
    integer.set_L(9);
    BigIn a(9);
    a.x.set_bui(integer);
    EXPECT_EQ(value(a.x, 0), Integer(words));
    a.x.set_efp(exact(words, -4));
    EXPECT_EQ(value(a.x, -4), Integer(words));
    EXPECT_TRUE(a.x.raw_sign());
}

TEST_F(BigFloats, WordsOfPositionsAndWindows) {
    auto rng = testing::make_rng(22);
    const auto words = random_mantissa(5, rng);
    const auto a = big(words, -2);
    for (s64_t i = -9; i < 9; i++) {
        const cdi expected = i >= -2 && i < 3 ? words[static_cast<upL_t>(i + 2)] : cdi{0};
        EXPECT_EQ(a.word_at(i), expected);
    }
    for (s64_t position = -9; position < 6; position++) {
        for (upL_t n = 0; n < 14; n++) {
            testing::GuardedWords<cdi> window(n);
            a.read_window(window.data(), position, n);
            for (upL_t i = 0; i < n; i++) {
                EXPECT_EQ(window.data()[i], a.word_at(position + static_cast<s64_t>(i)));
            }
        }
    }
    testing::GuardedWords<cdi> window(3);
    BigFloat().read_window(window.data(), 1, 3);
    EXPECT_EQ(window.words(), (std::vector<cdi>{0, 0, 0}));
}

TEST_F(BigFloats, MagnitudesCompare) {
    auto rng = testing::make_rng(23);
    for (int i = 0; i < 3000; i++) {
        const auto A = random_mantissa(1 + rng() % 4, rng);
        auto B = rng() % 3 == 0 ? A : random_mantissa(1 + rng() % 4, rng);
        if (rng() % 4 == 0) B.back() = A.back();
        const auto a = big(A, static_cast<s64_t>(rng() % 3), rng() % 2 == 0);
        const auto b = big(B, static_cast<s64_t>(rng() % 3), rng() % 2 == 0);
        const Integer x(Integer(A) << static_cast<u64_t>(a.get_exp()) * WordTraits<cdi>::bits);
        const Integer y(Integer(B) << static_cast<u64_t>(b.get_exp()) * WordTraits<cdi>::bits);
        EXPECT_EQ(ucmp(a, b), x == y ? 0 : (x < y ? -1 : 1));
    }
}

TEST_F(BigFloats, EqualMagnitudesOfDifferentLengths) {
    const std::vector<cdi> one{1}, longer{0, 0, 1}, more{1, 0, 1};
    EXPECT_EQ(ucmp(big(longer, -2), big(one, 0)), 0);
    EXPECT_EQ(ucmp(big(one, 0), big(longer, -2)), 0);
    EXPECT_EQ(ucmp(big(more, -2), big(one, 0)), 1);
    EXPECT_EQ(ucmp(big(one, 0), big(more, -2)), -1);
    EXPECT_EQ(ucmp(BigFloat(), big(one, -50)), -1);
    EXPECT_EQ(ucmp(big(one, -50), BigFloat()), 1);
    EXPECT_EQ(ucmp(BigFloat(), BigFloat()), 0);
}

TEST_F(BigFloats, NormaliseTop) {
    const std::vector<cdi> A{1, 2, 0, 0}, zeros{0, 0};
    auto a = big(A, 3, false);
    a.normalise_top();
    EXPECT_EQ(a.get_L(), 2u);
    EXPECT_EQ(a.get_exp(), 3);
    EXPECT_EQ(a.get_sign(), -1);
    auto z = big(zeros, 3, false);
    z.normalise_top();
    EXPECT_TRUE(is_plain_zero(z));
}

TEST_F(BigFloats, TruncateTop) {
    const std::vector<cdi> A{1, 0, 2, 3};  // positions -1 to 2
    for (s64_t position = -4; position < 6; position++) {
        auto a = big(A, -1, false);
        a.truncate_top(position);
        const Integer kept = Integer(A).low_bits(static_cast<u64_t>(std::clamp<s64_t>(position + 1, 0, 4)) *
                                                 WordTraits<cdi>::bits);
        EXPECT_EQ(value(a, -1), Integer(0) - kept);
        if (position <= -1) {
            EXPECT_TRUE(is_plain_zero(a));
        }
        if (position == 1) {
            EXPECT_EQ(a.get_L(), 1u) << "the zero word below goes";
        }
    }
}

TEST_F(BigFloats, StripLowRemovesZeroWordsInFours) {
    for (upL_t zeros = 0; zeros < 14; zeros++) {
        std::vector<cdi> words(zeros + 2);
        words[zeros] = 5;
        words[zeros + 1] = 6;
        BigIn a(zeros + 2);
        a.x.set_gfp(big(words, -1, false), zeros);
        a.x.strip_low();
        EXPECT_EQ(a.x.get_T(), a.x.get_base() + zeros / 4 * 4);
        EXPECT_EQ(a.x.get_L(), zeros % 4 + 2);
        EXPECT_EQ(value(a.x, -1), value(big(words, -1, false), -1));
        expect_too_small("BigFloat::mul_uW()", zeros % 4 + 3, zeros % 4 + 2, [&] { a.x.mul_uW(3); });
        a.x.set_gfp(big(words, -1), zeros);  // the whole buffer again
        EXPECT_EQ(a.x.get_T(), a.x.get_base());
    }
}

TEST_F(BigFloats, StripL1sRemovesAllOnesAndATopOneShort) {
    constexpr cdi m = ones;
    const auto stripped = [](std::vector<cdi> A) {
        auto a = big(A, 0);
        a.strip_l1s();
        return a.get_L();
    };
    EXPECT_EQ(stripped({5, m, m, m - 1}), 1u);
    EXPECT_EQ(stripped({5, m, m, m}), 1u);
    EXPECT_EQ(stripped({5, m, m, m - 2}), 4u);
    EXPECT_EQ(stripped({5, m - 1, m, m}), 2u) << "below the top a word has to be all ones";
    EXPECT_EQ(stripped({5, 0, m}), 1u) << "normalised afterwards";
    EXPECT_EQ(stripped({m, m, m - 1}), 0u);
    auto all = BigFloat();
    all.strip_l1s();
    EXPECT_TRUE(is_plain_zero(all));
    const std::vector<cdi> only{m};
    auto one = big(only, 7, false);
    one.strip_l1s();
    EXPECT_TRUE(is_plain_zero(one));
}

TEST_F(BigFloats, NegateTwosComplement) {
    constexpr cdi m = ones;
    auto rng = testing::make_rng(24);
    for (upL_t L = 1; L < 9; L++) {
        const auto A = random_mantissa(L, rng);
        BigIn a(L);
        a.x.set_gfp(big(A, -7), L);
        a.x.negate_twos_complement();
        EXPECT_EQ(value(a.x, -7), (Integer(1) << L * WordTraits<cdi>::bits) - Integer(A));
    }
    BigIn a(4);
    a.x.set_gfp(big(std::vector<cdi>{5, m, m, m}, -4), 4);
    a.x.negate_twos_complement();
    EXPECT_EQ(a.x.get_L(), 1u) << "normalised";
    a.x.set_gfp(big(std::vector<cdi>{0, 0, m - 1}, -3), 4);
    a.x.negate_twos_complement();
    EXPECT_EQ(value(a.x, -3), Integer(2) << 2 * WordTraits<cdi>::bits);
}

TEST_F(BigFloats, TopWordsAndCopiesKeepTwoMore) {
    auto rng = testing::make_rng(25);
    const auto A = random_mantissa(9, rng);
    for (upL_t p = 0; p < 12; p++) {
        const upL_t kept = std::min<upL_t>(p + 2, 9);
        BigIn a(kept);
        a.x.set_gfp(big(A, -3, false), p);
        EXPECT_EQ(a.x.get_L(), kept);
        EXPECT_EQ(a.x.get_exp(), -3 + static_cast<s64_t>(9 - kept));
        EXPECT_EQ(a.x.get_mag(), 6);
        EXPECT_FALSE(a.x.raw_sign());
        EXPECT_EQ(Integer(a.x.get_T(), kept), Integer(A) >> (9 - kept) * WordTraits<cdi>::bits);
        EXPECT_EQ(big(A, -3).top_words(p).get_T(), A.data() + (9 - kept));
    }
}

// ---- Doubles

TEST_F(BigFloats, DoublesAreTakenExactly) {
    auto rng = testing::make_rng(26);
    constexpr s64_t bits = WordTraits<cdi>::bits;
    std::vector<double> doubles{1,
                                -1,
                                0.5,
                                3,
                                DBL_MAX,
                                DBL_MIN,
                                DBL_TRUE_MIN,
                                -DBL_TRUE_MIN * 5,
                                1.0 / 3,
                                18446744073709551616.0,
                                4294967296.0,
                                0x1p-64,
                                0x1p-65};
    for (int i = 0; i < 2000; i++) {
        doubles.push_back(
            std::ldexp(static_cast<double>(rng() >> 11), static_cast<int>(rng() % 2000) - 1040));
    }
    for (const double d : doubles) {
        BigIn a(2 + (64 - bits) / bits);
        a.x.set_double(d, 4);
        int exponent = 0;
        const double fraction = std::frexp(d, &exponent);  // d = integer * 2^(exponent - 53)
        const Integer integer(static_cast<s64_t>(std::ldexp(fraction, 53)));
        const s64_t word_low = -1300 / bits - 1;
        const Integer got = value(a.x, word_low);
        const s64_t shift = exponent - 53 + 4 * bits - word_low * bits;
        const Integer expected =
            shift >= 0 ? integer << static_cast<u64_t>(shift) : integer >> static_cast<u64_t>(-shift);
        EXPECT_EQ(got, expected) << d;
        EXPECT_EQ(a.x.get_sign(), d > 0 ? 1 : (d < 0 ? -1 : 0));
    }
    BigIn zero(3);
    zero.x.set_double(0.0, 9);
    EXPECT_TRUE(is_plain_zero(zero.x));
    zero.x.set_double(-0.0, 9);
    EXPECT_TRUE(is_plain_zero(zero.x));
}

TEST_F(BigFloats, DoublesComeBack) {
    auto rng = testing::make_rng(27);
    s64_t e = 7;
    EXPECT_EQ(BigFloat().to_double(e), 0);
    EXPECT_EQ(e, 0);
    for (int i = 0; i < 2000; i++) {
        const auto A = random_mantissa(1 + rng() % 6, rng);
        const auto a = big(A, -2, rng() % 2 == 0);
        const double d = a.to_double(e);
        EXPECT_EQ(e, a.get_mag());
        EXPECT_EQ(d < 0, !a.raw_sign());
        const double exact_log = Integer(A).log2() - static_cast<double>(A.size() * WordTraits<cdi>::bits);
        EXPECT_NEAR(std::log2(std::fabs(d)), exact_log, 1e-13);
        BigIn back(4);
        back.x.set_double(d, e);
        s64_t f = 0;
        const double again = back.x.to_double(f);
        constexpr int bits = WordTraits<cdi>::bits;
        EXPECT_EQ(again, std::ldexp(d, static_cast<int>(e - f) * bits));
    }
}

// ---- Products with a word

TEST_F(BigFloats, ProductsWithAWord) {
    auto rng = testing::make_rng(28);
    for (upL_t L = 1; L < 20; L++) {
        for (const cdi x : {cdi{1}, cdi{2}, static_cast<cdi>(rng()), this->ones, cdi{0}}) {
            const auto A = random_mantissa(L, rng);
            BigIn a(L + 1), b(L + 1);
            a.x.set_gfp(big(A, -3, false), L);
            a.x.mul_uW(x);
            b.x.set_mul_uW(big(A, -3, false), x);
            const Integer expected = Integer(0) - Integer(A) * Integer(&x, 1);
            EXPECT_EQ(value(a.x, -3), expected);
            EXPECT_EQ(value(b.x, -3), expected);
            EXPECT_EQ(a.x.get_L(), b.x.get_L());
            if (x == 0) {
                EXPECT_TRUE(is_plain_zero(a.x) && is_plain_zero(b.x));
            }
        }
    }
    BigIn zero(1);
    zero.x.mul_uW(5);
    EXPECT_TRUE(is_plain_zero(zero.x));
}

// ---- Products

TEST_F(BigFloats, ProductsToAPrecision) {
    auto rng = testing::make_rng(29);
    for (const upL_t La : Lengths{1, 3, 9, 10, 19, 28, 50, 70}) {
        for (const upL_t Lb : Lengths{1, 2, 10, 18, 45, 61}) {
            for (const upL_t p : Lengths{0, 1, 5, 17, 40, 200}) {
                const auto A = random_mantissa(La, rng), B = random_mantissa(Lb, rng);
                const upL_t n = La + Lb, kept = std::min(n, p + 2);
                BigIn T(kept), S(std::min(2 * La, p + 2));
                Work work(work_bytes_for<cdi>(std::max(n, 2 * La), 1));
                T.x.set_mul(work.bp(), big(A, -5), big(B, 2, false), p);
                EXPECT_FALSE(T.x.raw_sign());
                // Cut, and without the carry from what was dropped of the operands: up to three units.
                const auto close = [&](const BigFloat& x, const Integer& product, s64_t exp, upL_t length) {
                    const s64_t top = exp + static_cast<s64_t>(length);
                    EXPECT_LE(x.get_mag(), top);
                    EXPECT_GE(x.get_mag(), top - 1);
                    const Integer error = product - value(x, exp);
                    EXPECT_FALSE(error < 0);
                    const upL_t skip = length - std::min(length, p + 2);
                    const Integer units = skip == 0 ? Integer(1) : Integer(3);
                    EXPECT_TRUE(error < units << skip * WordTraits<cdi>::bits) << La << " " << Lb << " " << p;
                };
                BigFloat magnitude = T.x;
                magnitude.negate();
                close(magnitude, Integer(A) * Integer(B), -3, n);
                S.x.set_sqr(work.bp(), big(A, -5, false), p);
                EXPECT_TRUE(S.x.raw_sign());
                close(S.x, Integer(A) * Integer(A), -10, 2 * La);
            }
        }
    }
}

TEST_F(BigFloats, AProductOfNineteenWordsIsWholeAndNeedsNoWorkBuffer) {
    auto rng = testing::make_rng(30);
    const auto A = random_mantissa(10, rng), B = random_mantissa(9, rng);
    BigIn T(19), S(18);
    for (const upL_t p : Lengths{17, 18, 100}) {
        T.x.set_mul(BasicParameters{}, big(A, 0), big(B, 0), p);
        EXPECT_EQ(value(T.x, 0), Integer(A) * Integer(B));
        S.x.set_sqr(BasicParameters{}, big(B, 0), p);
        EXPECT_EQ(value(S.x, 0), Integer(B) * Integer(B));
    }
}

TEST_F(BigFloats, ProductsWithZeroAndSigns) {
    const std::vector<cdi> A{3}, B{5};
    BigIn T(2);
    T.x.set_mul(BasicParameters{}, big(A, 0), BigFloat(), 4);
    EXPECT_TRUE(is_plain_zero(T.x));
    T.x.set_mul(BasicParameters{}, BigFloat(), big(A, 0, false), 4);
    EXPECT_TRUE(is_plain_zero(T.x));
    T.x.set_sqr(BasicParameters{}, BigFloat(), 4);
    EXPECT_TRUE(is_plain_zero(T.x));
    for (const bool a : {false, true}) {
        for (const bool b : {false, true}) {
            T.x.set_mul(BasicParameters{}, big(A, 0, a), big(B, 0, b), 4);
            EXPECT_EQ(value(T.x, 0), Integer(a == b ? 15 : -15));
        }
    }
}

// ---- Transformed operands

class BigTransforms : public ::testing::Test {
  protected:
    using Transform = BigFloat::Transform;
    struct Setting {
        explicit Setting(upL_t L)
            : work(400000),
              bp(work.bp()),
              algorithm(make_transform<c64i>(bp, slot, L)),
              areas(algorithm.work_areas(bp.M)),
              scratch(areas.scratch) {}
        Transform first(const BigFloat& x, upL_t p) { return {x, algorithm, areas.T1, scratch, p}; }
        Transform second(const BigFloat& x, upL_t p) { return {x, algorithm, areas.T2, scratch, p}; }
        upL_t words() const { return algorithm.max_bits / 64; }
        Work work;
        BasicParameters bp;
        TransformSlot slot;
        const transform& algorithm;
        WorkAreas areas;
        TransformScratch* scratch;
    };
    std::mt19937_64 rng = testing::make_rng(31);
};

TEST_F(BigTransforms, ATransformOfALongSourceUsesItsTopWords) {
    const auto A = random_mantissa(100, rng);
    Setting set(60);
    const auto t = set.first(big(A, -70, false), 30);
    EXPECT_EQ(t.L, 32u);
    EXPECT_EQ(t.exp, -70 + 68);
    EXPECT_EQ(t.mag, 30);
    EXPECT_FALSE(t.sign);
    BigIn T(64);
    auto a = set.first(big(A, -70, false), 30);
    const auto b = set.second(big(A, -70), 30);
    T.x.set_inverse_fmul(set.scratch, a, b, a.mag + b.mag, 62);
    const Integer top = Integer(A) >> 68 * 64;
    EXPECT_EQ(value(T.x, -4), Integer(0) - top * top);
    EXPECT_EQ(a.image, nullptr);
    EXPECT_NE(b.image, nullptr);
}

TEST_F(BigTransforms, WindowsOfWholeProducts) {
    for (const upL_t L : Lengths{8, 25, 29, 40, 150}) {
        const auto A = random_mantissa(L, rng), B = random_mantissa(L - 3, rng);
        const upL_t n = 2 * L - 3;
        for (const s64_t te : {static_cast<s64_t>(n), static_cast<s64_t>(n) - 2, static_cast<s64_t>(L)}) {
            for (const upL_t p : Lengths{3, 20, 400}) {
                Setting set(2 * L);
                auto a = set.first(big(A, 5), L);
                const auto b = set.second(big(B, -5), L);
                const upL_t bottom = te - 2 > static_cast<s64_t>(p) ? static_cast<upL_t>(te) - 2 - p : 0;
                const Integer product = (Integer(A) * Integer(B)).low_bits(static_cast<u64_t>(te) * 64);
                BigIn T(static_cast<upL_t>(te) - bottom);
                const auto whole = T.x.set_checked_fmul(set.scratch, a, b, te, p);
                EXPECT_EQ(value(T.x, static_cast<s64_t>(bottom)), product >> bottom * 64);
                ASSERT_TRUE(whole.has_value());
                EXPECT_EQ(*whole, (Integer(A) * Integer(B)).guard_residue());
                // The same without the residue; a short window can lack a carry from below it.
                a = set.first(big(A, 5), L);
                BigIn U(static_cast<upL_t>(te) - bottom);
                U.x.set_inverse_fmul(set.scratch, a, b, te, p);
                Integer error =
                    value(T.x, static_cast<s64_t>(bottom)) - value(U.x, static_cast<s64_t>(bottom));
                // Cut at te, a window of zeros is all ones where that carry lacks.
                if (error < 0) error = error + (Integer(1) << (static_cast<upL_t>(te) - bottom) * 64);
                EXPECT_TRUE(error < (Integer(1) << 64));
            }
        }
    }
}

TEST_F(BigTransforms, WrappedWordsAreLeftOut) {
    // A product of 140 words by a transform of fewer: the words that wrapped fall on the lowest ones.
    const auto A = random_mantissa(80, rng), B = random_mantissa(60, rng);
    Setting set(100);
    const upL_t clen = set.words(), w = 140 - clen;
    ASSERT_GT(w, 0u);
    ASSERT_STREQ(set.algorithm.name(), "FFT");
    auto a = set.first(big(A, 0), 80);
    const auto b = set.second(big(B, 0), 80);
    const s64_t te = static_cast<s64_t>(clen);
    BigIn T(clen - w);
    const auto whole = T.x.set_checked_fmul(set.scratch, a, b, te, 200);
    ASSERT_TRUE(whole.has_value());
    const Integer product = Integer(A) * Integer(B);
    const Integer window = product.low_bits(clen * 64) >> w * 64;
    const Integer error = window - value(T.x, static_cast<s64_t>(w));
    EXPECT_TRUE(error == 0 || error == 1) << "the wrapped words are subtracted from the lowest";
    // The product is R + q M with M = 2^bits + 1.
    const Integer high = product >> clen * 64, lower = product.low_bits(clen * 64);
    const Integer modulus = (Integer(1) << clen * 64) + 1;
    const Integer R = lower < high ? lower - high + modulus : lower - high;
    EXPECT_EQ(*whole, R.guard_residue());
    EXPECT_EQ(set.algorithm.modulus(), modulus.guard_residue());
}

TEST_F(BigTransforms, TheValueOneBelowTheModulusIsHashed) {
    // 2^bits by two powers of two: R = 2^bits has no words, only its top bit.
    Setting set(100);
    const upL_t clen = set.words();
    std::vector<c64i> A(clen / 2 + 1, 0), B(clen - clen / 2 + 1, 0);
    A.back() = 1, B.back() = 1;
    auto a = set.first(big(A, 0), 200);
    const auto b = set.second(big(B, 0), 200);
    BigIn T(clen);
    const auto whole = T.x.set_checked_fmul(set.scratch, a, b, static_cast<s64_t>(clen), 200);
    EXPECT_TRUE(T.x.is_zero());
    EXPECT_EQ(whole, std::optional<u64_t>((Integer(1) << clen * 64).guard_residue()));
}

TEST_F(BigTransforms, SquaresAndTheirRange) {
    const auto A = random_mantissa(50, rng);
    Setting set(100);
    const s64_t end = -40 + static_cast<s64_t>(set.words());
    auto a = set.first(big(A, -20, false), 50);
    BigIn T(100);
    const auto whole = T.x.set_checked_fsqr(set.scratch, a, 60, 200);
    EXPECT_EQ(value(T.x, -40), Integer(A) * Integer(A));
    EXPECT_TRUE(T.x.raw_sign());
    EXPECT_EQ(whole, std::optional<u64_t>((Integer(A) * Integer(A)).guard_residue()));
    EXPECT_EQ(a.image, nullptr);

    // te above the true range.
    a = set.first(big(A, -20), 50);
    std::string text = console_output([&] {
        const auto e = caught<zn_exception>([&] { T.x.set_inverse_fsqr(set.scratch, a, end + 1, 200); });
        EXPECT_STREQ(e.message, "BigFloat::set_inverse_fsqr(): Truncated Range\n\n");
    });
    EXPECT_NE(text.find("ie = "), std::string::npos);
    EXPECT_NE(text.find(std::to_string(end) + "\n"), std::string::npos) << text;
    EXPECT_NE(text.find("te = "), std::string::npos);
    EXPECT_NE(text.find(std::to_string(end + 1) + "\n"), std::string::npos) << text;

    // te at the lowest true position and below: zero.
    for (const s64_t te : {-40, -41, -100}) {
        a = set.first(big(A, -20), 50);
        T.x.set_inverse_fsqr(set.scratch, a, te, 200);
        EXPECT_TRUE(is_plain_zero(T.x)) << te;
        EXPECT_EQ(a.image, nullptr);
        a = set.first(big(A, -20), 50);
        EXPECT_FALSE(T.x.set_checked_fsqr(set.scratch, a, te, 200).has_value());
    }
    a = set.first(big(A, -20), 50);
    BigIn one(1);
    one.x.set_inverse_fsqr(set.scratch, a, -39, 200);
    EXPECT_EQ(value(one.x, -40), (Integer(A) * Integer(A)).low_bits(64));
}

TEST_F(BigTransforms, TheRangeOfAProductIsTestedOnlyWhereWordsWrap) {
    const auto A = random_mantissa(80, rng), B = random_mantissa(60, rng);
    Setting shorter(100), longer(140);
    BigIn T(200);
    auto a = shorter.first(big(A, 0), 80);
    const auto b = shorter.second(big(B, 0), 80);
    const std::string text = console_output([&] {
        const auto e = caught<zn_exception>([&] { T.x.set_inverse_fmul(shorter.scratch, a, b, 140, 200); });
        EXPECT_STREQ(e.message, "BigFloat::set_inverse_fmul(): Truncated Range\n\n");
    });
    EXPECT_NE(text.find("ie = "), std::string::npos);
    EXPECT_NE(text.find("te = "), std::string::npos);
    auto c = longer.first(big(A, 0), 80);
    T.x.set_inverse_fmul(longer.scratch, c, longer.second(big(B, 0), 80), 1000, 1000);
    EXPECT_EQ(value(T.x, 0), Integer(A) * Integer(B));
}

TEST_F(BigTransforms, Mismatch) {
    const auto A = random_mantissa(20, rng);
    BigIn T(50);
    for (const upL_t L : Lengths{41, 200, 2000}) {
        Setting one(40), other(L);
        auto a = one.first(big(A, 0), 20);
        const auto b = other.second(big(A, 0), 20);
        const auto e = caught<zn_exception>([&] { T.x.set_inverse_fmul(one.scratch, a, b, 40, 40); });
        EXPECT_STREQ(e.message, "BigFloat::set_inverse_fmul(): Mismatching Transform Parameters");
    }
}

// ---- Failures

TEST_F(BigFloats, BuffersOneWordTooSmall) {
    auto rng = testing::make_rng(32);
    const auto A = random_mantissa(6, rng), B = random_mantissa(4, rng);
    BasicInt integer(A.data(), 0, 0);
    integer.set_L(6);
    const auto a = big(A, 0), b = big(B, 1);
    constexpr upL_t words_of_u64 = 64 / WordTraits<cdi>::bits, words_of_double = words_of_u64 + 1;
    BigIn none(0), less(words_of_u64 - 1), d(words_of_double - 1), T3(3), T5(5), T6(6), T9(9);
    expect_too_small("BigFloat::set_uW()", 1, 0, [&] { none.x.set_uW(1); });
    expect_too_small("BigFloat::set_u64()", words_of_u64, words_of_u64 - 1, [&] { less.x.set_u64(1); });
    expect_too_small("BigFloat::set_double()", words_of_double, words_of_double - 1,
                     [&] { d.x.set_double(1, 0); });
    expect_too_small("BigFloat::set_bui()", 6, 5, [&] { T5.x.set_bui(integer); });
    expect_too_small("BigFloat::set_efp()", 6, 5, [&] { T5.x.set_efp(exact(A, 0)); });
    expect_too_small("BigFloat::set_gfp()", 6, 5, [&] { T5.x.set_gfp(a, 4); });
    expect_too_small("BigFloat::set_mul_uW()", 7, 6, [&] { T6.x.set_mul_uW(a, 3); });
    T6.x.set_gfp(a, 6);
    expect_too_small("BigFloat::mul_uW()", 7, 6, [&] { T6.x.mul_uW(3); });
    expect_too_small("BigFloat::set_mul()", 10, 9, [&] { T9.x.set_mul(BasicParameters{}, a, b, 8); });
    expect_too_small("BigFloat::set_mul()", 4, 3, [&] { T3.x.set_mul(BasicParameters{}, a, b, 2); });
    expect_too_small("BigFloat::set_sqr()", 10, 9, [&] { T9.x.set_sqr(BasicParameters{}, a, 8); });
    expect_too_small("BigFloat::set_uadd()", 7, 6, [&] { T6.x.set_uadd(a, b, 9); });
    expect_too_small("BigFloat::set_uadd()", 4, 3, [&] { T3.x.set_uadd(a, b, 2); });
    expect_too_small("BigFloat::set_usub()", 6, 5, [&] { T5.x.set_usub(a, b, 9); });
    expect_too_small("BigFloat::set_rsub()", 6, 5, [&] { T5.x.set_rsub(a, b, 4, 5, true); });
    T6.x.set_gfp(a, 6);
    expect_too_small("BigFloat::add_ip()", 7, 6, [&] { T6.x.add_ip(1, 0); });
}

TEST_F(BigTransforms, BuffersOneWordTooSmall) {
    const auto A = random_mantissa(6, rng), B = random_mantissa(4, rng);
    Setting set(12);
    BigIn T9(9), T11(11);
    auto a = set.first(big(A, 0), 9);
    const auto b = set.second(big(B, 0), 9);
    expect_too_small("BigFloat::set_inverse_fmul()", 10, 9,
                     [&] { T9.x.set_inverse_fmul(set.scratch, a, b, 10, 20); });
    expect_too_small("BigFloat::set_inverse_fsqr()", 12, 11,
                     [&] { T11.x.set_inverse_fsqr(set.scratch, a, 12, 20); });
}

TEST_F(BigFloats, AZeroTopWordMayNotSeedAnIteration) {
    const std::vector<cdi> A{1, 0}, B{1, 1};
    const auto e = caught<zn_exception>([&] { big(A, 0).check_normalization(); });
    EXPECT_STREQ(e.message, "BigFloat::check_normalization(): Top word is zero.");
    EXPECT_NO_THROW(big(B, 0).check_normalization());
    EXPECT_NO_THROW(BigFloat().check_normalization());
}

using BigFloatsDeathTest = BigTransforms;

TEST_F(BigFloatsDeathTest, WhatIsLongerThanTheTransformOrNoNumber) {
    const auto A = random_mantissa(40, rng);
    Setting set(30);
    BigIn T(4);
    const std::string text = "Invalid Function Parameters:   ";
    EXPECT_EXIT(dying([&] { set.first(big(A, 0), 40); }), ExitedWithCode(1), text);
    EXPECT_EXIT(dying([&] { T.x.set_double(std::numeric_limits<double>::infinity(), 0); }), ExitedWithCode(1),
                text);
    EXPECT_EXIT(dying([&] { T.x.set_double(std::numeric_limits<double>::quiet_NaN(), 0); }),
                ExitedWithCode(1), text);
}

}  // namespace
}  // namespace znp
