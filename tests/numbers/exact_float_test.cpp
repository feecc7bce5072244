#include "numbers/exact_float.hpp"

#include <memory>
#include <string>
#include <type_traits>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/dispatch.hpp"
#include "numbers/float_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::caught;
using testing::consistent;
using testing::dying;
using testing::exact;
using testing::ExactIn;
using ::testing::ExitedWithCode;
using testing::expect_too_small;
using testing::GuardedWords;
using testing::Integer;
using testing::random_mantissa;
using testing::value;
using testing::Work;

constexpr s64_t low = -200;  // all exponents of these tests are above

class ExactFloats : public ::testing::Test {
  protected:
    static constexpr cdi ones = ~cdi{0};
};

// ---- Storage and values

TEST_F(ExactFloats, AreNotVirtual) {
    EXPECT_FALSE(std::is_polymorphic_v<ExactFloatO>);
    EXPECT_EQ(sizeof(ExactFloat), 5 * sizeof(u64_t));
    EXPECT_EQ(sizeof(ExactFloatR), 7 * sizeof(u64_t));
}

TEST_F(ExactFloats, SettersAndResidue) {
    ExactIn a(2);
    a.x.set_uW(7, -3);
    EXPECT_EQ(value(a.x, low), Integer(7) << static_cast<u64_t>(-3 - low) * WordTraits<cdi>::bits);
    EXPECT_TRUE(consistent(a.x));
    EXPECT_EQ(a.x.get_mag(), -2);
    a.x.set_u64(0x1234567890abcdef);
    EXPECT_EQ(a.x.get_L(), 64u / WordTraits<cdi>::bits);
    EXPECT_EQ(value(a.x, 0), Integer(0x1234567890abcdef));
    EXPECT_TRUE(consistent(a.x));
    a.x.set_u64(9);
    EXPECT_EQ(a.x.get_L(), 1u);
    EXPECT_TRUE(consistent(a.x));
}

TEST_F(ExactFloats, CopiesOfIntegersAndFloats) {
    auto rng = testing::make_rng(1);
    const auto words = random_mantissa(9, rng);
    BasicInt integer(words.data(), 0, 0);
    integer.set_L(9);
    ExactIn a(9);
    a.x.set_bui(integer);
    EXPECT_EQ(value(a.x, 0), Integer(words));
    EXPECT_TRUE(consistent(a.x));
    const auto source = exact(words, -5);
    a.x.set_efp(source);
    EXPECT_EQ(value(a.x, low), value(source, low));
    EXPECT_TRUE(consistent(a.x));
}

TEST_F(ExactFloats, GivenLengths) {
    ExactIn a(5);
    for (upL_t i = 0; i < 5; i++) *a.x.word_ptr(i) = i < 3 ? static_cast<cdi>(i + 1) : cdi{0};
    a.x.set_LN(5, 2);
    EXPECT_EQ(a.x.get_L(), 3u);
    EXPECT_TRUE(consistent(a.x));
    const u64_t hash = a.x.get_hash();
    a.x.set_LN(5, 2, hash + 1);
    EXPECT_EQ(a.x.get_L(), 3u);
    EXPECT_EQ(a.x.hash_error(), 1u);
    a.x.rehash();
    EXPECT_EQ(a.x.get_hash(), hash);
    a.x.set_L(2, 2);
    EXPECT_EQ(a.x.get_L(), 2u);
    EXPECT_TRUE(consistent(a.x));
}

TEST_F(ExactFloats, EveryWrongBitOfAWordShowsInTheResidue) {
    auto rng = testing::make_rng(2);
    ExactIn a(12);
    a.x.set_efp(exact(random_mantissa(12, rng), 3));
    for (upL_t i = 0; i < 12; i++) {
        for (unsigned bit = 0; bit < WordTraits<cdi>::bits; bit++) {
            *a.x.word_ptr(i) ^= static_cast<cdi>(cdi{1} << bit);
            EXPECT_NE(a.x.hash_error(), 0u);
            *a.x.word_ptr(i) ^= static_cast<cdi>(cdi{1} << bit);
        }
    }
}

TEST_F(ExactFloats, BuffersAndTheRestOfABuffer) {
    GuardedWords<cdi> buffer(20);
    ExactFloatR a(buffer.data(), 20), b, c;
    b.set_base(buffer.data(), 4, 20);
    EXPECT_EQ(b.get_base(), buffer.data() + 4);
    EXPECT_EQ(b.get_size(), 16u);
    std::fill_n(buffer.data(), 8, cdi{0});
    buffer.data()[8] = 3;
    a.set_L(9, 0);
    a.strip_low();
    c.set_rest_of(1, a);  // T lies 8 words above the base
    EXPECT_EQ(c.get_base(), buffer.data() + 9);
    EXPECT_EQ(c.get_T(), buffer.data() + 9);
    EXPECT_EQ(c.get_size(), 11u);
    a.reset_T();
    EXPECT_EQ(a.get_T(), buffer.data());
}

// ---- Powers

TEST_F(ExactFloats, StripLowOfFiveZeroWordsRemovesFour) {
    for (upL_t zeros = 0; zeros < 14; zeros++) {
        ExactIn a(zeros + 2);
        std::fill_n(a.x.word_ptr(0), zeros, cdi{0});
        *a.x.word_ptr(zeros) = 5;
        *a.x.word_ptr(zeros + 1) = 6;
        a.x.set_L(zeros + 2, -1);
        const Integer before = value(a.x, low);
        const u64_t hash = a.x.get_hash();
        a.x.strip_low();
        EXPECT_EQ(a.x.get_T(), a.x.get_base() + zeros / 4 * 4);
        EXPECT_EQ(a.x.get_L(), zeros % 4 + 2);
        EXPECT_EQ(a.x.get_exp(), -1 + static_cast<s64_t>(zeros / 4 * 4));
        EXPECT_EQ(value(a.x, low), before);
        EXPECT_EQ(a.x.get_hash(), hash);
        EXPECT_TRUE(consistent(a.x));
    }
}

TEST_F(ExactFloats, Mp2OfEveryShift) {
    constexpr s64_t bits = WordTraits<cdi>::bits;
    auto rng = testing::make_rng(3);
    for (s64_t n = -2 * bits - 3; n <= 2 * bits + 3; n++) {
        const auto words = random_mantissa(1 + rng() % 5, rng);
        ExactIn a(words.size() + 1);
        a.x.set_efp(exact(words, 1));
        const u64_t base = static_cast<u64_t>(1 - low) * static_cast<u64_t>(bits);
        a.x.mp2(n);
        EXPECT_EQ(value(a.x, low), Integer(words) << base + static_cast<u64_t>(n)) << n;
        EXPECT_TRUE(consistent(a.x)) << n;
    }
}

TEST_F(ExactFloats, Mp2ByWholeWordsChangesExponentAndResidueOnly) {
    auto rng = testing::make_rng(4);
    const auto words = random_mantissa(6, rng);
    ExactIn a(6);  // no word for a carry
    a.x.set_efp(exact(words, 0));
    for (const s64_t k : {s64_t{5}, s64_t{-9}, s64_t{0}}) {
        const s64_t exp = a.x.get_exp();
        a.x.mp2(k * WordTraits<cdi>::bits);
        EXPECT_EQ(a.x.get_exp(), exp + k);
        EXPECT_EQ(a.x.get_L(), 6u);
        EXPECT_EQ(Integer(a.x.get_T(), 6), Integer(words));
        EXPECT_TRUE(consistent(a.x));
    }
}

TEST_F(ExactFloats, MulPowWord) {
    auto rng = testing::make_rng(5);
    ExactIn a(4);
    a.x.set_efp(exact(random_mantissa(4, rng), 0));
    a.x.mul_pow_word(3, residue::word_power64(3));
    EXPECT_EQ(a.x.get_exp(), 3);
    EXPECT_TRUE(consistent(a.x));
}

// ---- Products

TEST_F(ExactFloats, ProductsOfEveryLengthAboutTheBasecase) {
    auto rng = testing::make_rng(6);
    const upL_t longest = WordTraits<cdi>::bits == 64 ? 40 : 58;
    for (upL_t La = 1; La <= longest; La += 1 + La / 12) {
        for (upL_t Lb = 1; Lb <= longest; Lb += 1 + Lb / 12) {
            const auto A = random_mantissa(La, rng), B = random_mantissa(Lb, rng);
            ExactIn T(La + Lb);
            Work work(La + Lb < basecase_clen ? 0 : work_bytes_for<cdi>(La + Lb, 1));
            T.x.set_mul(work.bp(), exact(A, -4), exact(B, 9));
            EXPECT_EQ(value(T.x, 5), Integer(A) * Integer(B));
            EXPECT_TRUE(consistent(T.x));
        }
    }
}

TEST_F(ExactFloats, ProductsOfThousandsOfWords) {
    auto rng = testing::make_rng(7);
    const auto A = random_mantissa(1500, rng), B = random_mantissa(901, rng);
    ExactIn T(2401);
    Work work(work_bytes_for<cdi>(2401, 1));
    T.x.set_mul(work.bp(), exact(A, 0), exact(B, -1));
    EXPECT_EQ(value(T.x, -1), Integer(A) * Integer(B));
    EXPECT_TRUE(consistent(T.x));
}

// ---- Sums and differences

// Every alignment of two short numbers: overlap, touch, gap, inside.
template <class Call>
void for_alignments(u64_t stream, Call call) {
    auto rng = testing::make_rng(stream);
    for (upL_t La = 1; La <= 6; La++) {
        for (upL_t Lb = 1; Lb <= 6; Lb++) {
            for (s64_t shift = -9; shift <= 9; shift++) {
                for (int repeat = 0; repeat < 3; repeat++) {
                    const auto A = random_mantissa(La, rng), B = random_mantissa(Lb, rng);
                    call(exact(A, 2), exact(B, 2 + shift));
                }
            }
        }
    }
}

upL_t span_of(const ExactFloat& a, const ExactFloat& b) {
    return static_cast<upL_t>(std::max(a.get_mag(), b.get_mag()) - std::min(a.get_exp(), b.get_exp()));
}

TEST_F(ExactFloats, SumsOfEveryAlignment) {
    for_alignments(8, [](const ExactFloat& a, const ExactFloat& b) {
        const upL_t need = span_of(a, b) + 1;
        ExactIn T(need), short_one(need - 1);
        T.x.set_add(a, b);
        EXPECT_EQ(value(T.x, low), value(a, low) + value(b, low));
        EXPECT_TRUE(consistent(T.x));
    });
}

TEST_F(ExactFloats, DifferencesOfEveryAlignment) {
    for_alignments(9, [](const ExactFloat& x, const ExactFloat& y) {
        const bool swapped = value(x, low) < value(y, low);
        const ExactFloat& a = swapped ? y : x;
        const ExactFloat& b = swapped ? x : y;
        if (value(a, low) == value(b, low)) return;
        ExactIn T(span_of(a, b) + 1);
        T.x.set_sub(a, b);
        EXPECT_EQ(value(T.x, low), value(a, low) - value(b, low));
        EXPECT_TRUE(consistent(T.x));
    });
}

TEST_F(ExactFloats, ACarryThroughAllOnesGrowsTheSum) {
    const std::vector<cdi> A(5, this->ones), B{1};
    ExactIn T(6);
    T.x.set_add(exact(A, -2), exact(B, -2));
    EXPECT_EQ(T.x.get_L(), 6u);
    EXPECT_EQ(value(T.x, -2), Integer(A) + 1);
    EXPECT_TRUE(consistent(T.x));
}

TEST_F(ExactFloats, SumAndDifferenceInPlace) {
    for_alignments(10, [](const ExactFloat& x, const ExactFloat& y) {
        const ExactFloat &a = x, &b = y;
        if (b.get_exp() < a.get_exp() || b.get_mag() > a.get_mag()) return;
        ExactIn T(a.get_L() + 1);
        T.x.set_efp(a);
        T.x += b;
        EXPECT_EQ(value(T.x, low), value(a, low) + value(b, low));
        EXPECT_TRUE(consistent(T.x));
        if (!(value(b, low) < value(a, low))) return;
        T.x.set_efp(a);
        T.x -= b;
        EXPECT_EQ(value(T.x, low), value(a, low) - value(b, low));
        EXPECT_TRUE(consistent(T.x));
    });
}

TEST_F(ExactFloats, InPlaceSumOfAStrippedNumber) {
    std::vector<cdi> A(12, 0), B{5, 6};
    A[10] = this->ones, A[11] = this->ones;
    ExactIn T(13);
    T.x.set_efp(exact(A, 0));
    T.x.strip_low();
    const auto b = exact(B, 10);
    T.x += b;
    EXPECT_EQ(value(T.x, 0), Integer(A) + value(b, 0));
    EXPECT_TRUE(consistent(T.x));
}

TEST_F(ExactFloats, TheOwnerAddsAndSubtractsItself) {
    auto rng = testing::make_rng(11);
    const auto A = random_mantissa(7, rng), B = random_mantissa(4, rng);
    const auto a = exact(A, 3), b = exact(B, -2);
    ExactFloatO T;
    T.add(a, b);
    EXPECT_EQ(T.get_size(), 7u + 3 + 2 + 2);  // highest magnitude, lowest exponent, and two words
    EXPECT_EQ(value(T, low), value(a, low) + value(b, low));
    T.add(T, a);
    EXPECT_EQ(value(T, low), value(a, low) + value(a, low) + value(b, low));
    EXPECT_TRUE(consistent(T));
    T.sub(T, a);
    EXPECT_EQ(value(T, low), value(a, low) + value(b, low));
    EXPECT_TRUE(consistent(T));
    ExactFloatO U = std::move(T);
    EXPECT_EQ(T.get_size(), 0u);  // NOLINT: the moved-from state is specified
    EXPECT_EQ(value(U, low), value(a, low) + value(b, low));
}

// ---- Transformed operands

class ExactTransforms : public ::testing::Test {
  protected:
    using Transform = ExactFloat::Transform;

    // The product of two numbers by a transform made for `L` words.
    struct Setting {
        Setting(upL_t L)
            : work(3000000),
              bp(work.bp()),
              algorithm(make_transform<c64i>(bp, slot, L)),
              areas(algorithm.work_areas(bp.M)),
              scratch(areas.scratch) {}
        Transform first(const ExactFloat& x) { return {x, algorithm, areas.T1, scratch}; }
        Transform second(const ExactFloat& x) { return {x, algorithm, areas.T2, scratch}; }
        Work work;
        BasicParameters bp;
        TransformSlot slot;
        const transform& algorithm;
        WorkAreas areas;
        TransformScratch* scratch;
    };
    std::mt19937_64 rng = testing::make_rng(12);
};

TEST_F(ExactTransforms, ProductAndSquareConsumeTheFirstOperand) {
    for (const upL_t La : testing::Lengths{1, 5, 30, 47, 100, 700}) {
        for (const upL_t Lb : testing::Lengths{1, 8, 28, 120, 601}) {
            const auto A = random_mantissa(La, rng), B = random_mantissa(Lb, rng);
            const auto a = exact(A, 4), b = exact(B, -6);
            Setting set(std::max(La + Lb, 2 * La));
            ExactIn T(La + Lb), S(2 * La);
            auto TA = set.first(a);
            const auto TB = set.second(b);
            T.x.set_inverse_fmul(set.scratch, TA, TB);
            EXPECT_EQ(TA.image, nullptr);
            EXPECT_NE(TB.image, nullptr);
            EXPECT_EQ(value(T.x, -2), Integer(A) * Integer(B));
            EXPECT_TRUE(consistent(T.x));
            TA = set.first(a);
            S.x.set_inverse_fsqr(set.scratch, TA);
            EXPECT_EQ(TA.image, nullptr);
            EXPECT_EQ(value(S.x, 8), Integer(A) * Integer(A));
            EXPECT_TRUE(consistent(S.x));
        }
    }
}

TEST_F(ExactTransforms, ExponentLimitFillsWithZeros) {
    const auto A = random_mantissa(40, rng), B = random_mantissa(30, rng);
    for (const s64_t e : {-9, -2, -1, 0, 7}) {
        Setting set(70);
        const upL_t zeros = e < -2 ? 7 : 0;
        ExactIn T(70 + zeros);
        auto TA = set.first(exact(A, 4));
        T.x.set_inverse_fmul(set.scratch, TA, set.second(exact(B, -6)), e);
        EXPECT_EQ(TA.image, nullptr);
        EXPECT_EQ(T.x.get_exp(), std::min<s64_t>(e, -2));
        EXPECT_EQ(value(T.x, low), Integer(A) * Integer(B) << static_cast<u64_t>(-2 - low) * 64);
        EXPECT_TRUE(consistent(T.x));
    }
}

TEST_F(ExactTransforms, TruncatedRange) {
    const auto A = random_mantissa(60, rng);
    const auto a = exact(A, 0);
    Setting set(64);  // 64 words of an operand fit, a product of 120 does not
    ASSERT_LT(set.algorithm.max_bits, 120u * 64);
    ExactIn T(130);
    const auto message = [](auto action) { return std::string(caught<zn_exception>(action).message); };
    auto TA = set.first(a);
    const auto TB = set.second(a);
    EXPECT_EQ(message([&] { T.x.set_inverse_fmul(set.scratch, TA, TB); }),
              "ExactFloat::set_inverse_fmul(): Truncated Range\n\n");
    EXPECT_EQ(message([&] { T.x.set_inverse_fmul(set.scratch, TA, TB, -3); }),
              "ExactFloatR::set_inverse_fmul(exp): Truncated Range\n\n");
    EXPECT_EQ(message([&] { T.x.set_inverse_fsqr(set.scratch, TA); }),
              "ExactFloat::set_inverse_fsqr(): Truncated Range\n\n");
}

TEST_F(ExactTransforms, MismatchingTransforms) {
    const auto A = random_mantissa(20, rng);
    const auto a = exact(A, 0);
    ExactIn T(50);
    const auto check = [&](upL_t L1, upL_t L2) {
        Setting one(L1), other(L2);
        auto TA = one.first(a);
        const auto TB = other.second(a);
        const auto e = caught<zn_exception>([&] { T.x.set_inverse_fmul(one.scratch, TA, TB); });
        EXPECT_STREQ(e.message, "ExactFloat::set_inverse_fmul(): Mismatching Transform Parameters");
        EXPECT_EQ(e.code, 0);
        const auto limited = caught<zn_exception>([&] { T.x.set_inverse_fmul(one.scratch, TA, TB, 0); });
        EXPECT_STREQ(limited.message, "ExactFloatR::set_inverse_fmul(exp): Mismatching Transform Parameters");
    };
    check(40, 200);    // two classes
    check(100, 2000);  // two sizes of one class
    check(40, 41);
}

TEST_F(ExactTransforms, EqualTransformsThatAreTwoObjects) {
    const auto A = random_mantissa(100, rng);
    const auto a = exact(A, 0);
    Setting one(200), other(200);
    ExactIn T(200);
    auto TA = one.first(a);
    T.x.set_inverse_fmul(one.scratch, TA, other.second(a));
    EXPECT_EQ(value(T.x, 0), Integer(A) * Integer(A));
}

// ---- Failures

TEST_F(ExactFloats, BuffersOneWordTooSmall) {
    auto rng = testing::make_rng(13);
    const auto A = random_mantissa(6, rng), B = random_mantissa(4, rng);
    BasicInt integer(A.data(), 0, 0);
    integer.set_L(6);
    const auto a = exact(A, 0), b = exact(B, 1);
    ExactIn none(0), T5(5), T6(6), T9(9);
    constexpr upL_t words_of_u64 = 64 / WordTraits<cdi>::bits;
    ExactIn less(words_of_u64 - 1);
    expect_too_small("ExactFloat::set_uW()", 1, 0, [&] { none.x.set_uW(1); });
    expect_too_small("ExactFloat::set_u64()", words_of_u64, words_of_u64 - 1, [&] { less.x.set_u64(1); });
    expect_too_small("ExactFloat::set_bui()", 6, 5, [&] { T5.x.set_bui(integer); });
    expect_too_small("ExactFloat::set_efp", 6, 5, [&] { T5.x.set_efp(a); });
    expect_too_small("ExactFloat::set_mul()", 10, 9, [&] { T9.x.set_mul(BasicParameters{}, a, b); });
    expect_too_small("ExactFloat::set_add()", 7, 6, [&] { T6.x.set_add(a, b); });
    expect_too_small("ExactFloat::set_add()", 8, 6, [&] { T6.x.set_add(exact(B, -1), a); });
    expect_too_small("ExactFloat::set_add()", 7, 6, [&] { T6.x.set_sub(a, b); });
    ExactIn T8(8);
    expect_too_small("ExactFloat::set_sub()", 9, 8, [&] { T8.x.set_sub(a, exact(B, -2)); });
    T6.x.set_efp(a);
    expect_too_small("ExactFloat::mp2()", 7, 6, [&] { T6.x.mp2(1); });
    expect_too_small("ExactFloat::mp2()", 7, 6, [&] { T6.x.mp2(-1); });
}

TEST_F(ExactTransforms, BuffersOneWordTooSmall) {
    const auto A = random_mantissa(6, rng), B = random_mantissa(4, rng);
    Setting set(12);
    ExactIn T9(9), T11(11), T12(12);
    auto TA = set.first(exact(A, 0));
    const auto TB = set.second(exact(B, 2));
    expect_too_small("ExactFloat::set_inverse_fmul()", 10, 9,
                     [&] { T9.x.set_inverse_fmul(set.scratch, TA, TB); });
    expect_too_small("ExactFloat::set_inverse_fsqr()", 12, 11,
                     [&] { T11.x.set_inverse_fsqr(set.scratch, TA); });
    expect_too_small("ExactFloat::set_inverse_fmul(exp)", 13, 12,
                     [&] { T12.x.set_inverse_fmul(set.scratch, TA, TB, -1); });
}

TEST_F(ExactFloats, BuffersAreMeasuredFromWhereTheMantissaStarts) {
    std::vector<cdi> A(6, 0);
    A[4] = 1, A[5] = this->ones;
    ExactIn T(6);
    T.x.set_efp(exact(A, 0));
    T.x.strip_low();
    expect_too_small("ExactFloat::mp2()", 3, 2, [&] { T.x.mp2(1); });
}

using ExactFloatsDeathTest = ExactTransforms;

TEST_F(ExactFloatsDeathTest, NegativeAndZeroDifferences) {
    const std::vector<c64i> small{1, 2}, large{2, 2}, shorter{9};
    ExactIn T(8);
    const std::string negative = "Value is unsupported(.|\n)*A negative value was encountered\\.";
    const std::string zero = "Value is unsupported(.|\n)*Zero was encountered\\.";
    const auto dies = [](const std::string& text, auto action) {
        EXPECT_EXIT(dying(action), ExitedWithCode(1), text);
    };
    dies(negative, [&] { T.x.set_sub(exact(small, 0), exact(large, 0)); });
    dies(negative, [&] { T.x.set_sub(exact(shorter, 0), exact(large, 0)); });  // by the magnitude
    dies(negative, [&] { T.x.set_sub(exact(small, 0), exact(std::vector<c64i>{1, 1, 2}, -1)); });
    dies(zero, [&] { T.x.set_sub(exact(small, 0), exact(small, 0)); });
    dies(negative, [&] {
        T.x.set_efp(exact(small, 0));
        T.x -= exact(large, 0);
    });
    dies(negative, [&] {
        T.x.set_efp(exact(shorter, 0));
        T.x -= exact(large, 0);
    });
    dies(zero, [&] {
        T.x.set_efp(exact(small, 0));
        T.x -= exact(small, 0);
    });
    dies(negative, [&] {
        ExactFloatO o;
        o.sub(exact(shorter, 0), exact(large, 0));
    });
}

TEST_F(ExactFloatsDeathTest, LocationsOfNegativeDifferences) {
    const std::vector<c64i> small{1}, large{2, 2};
    ExactIn T(8);
    EXPECT_EXIT(dying([&] { T.x.set_sub(exact(small, 0), exact(large, 0)); }), ExitedWithCode(1),
                "ExactFloat::set_sub\\(\\)");
    EXPECT_EXIT(dying([&] {
                    T.x.set_efp(exact(small, 0));
                    T.x -= exact(large, 0);
                }),
                ExitedWithCode(1), "ExactFloatR::operator-=\\(\\)");
    EXPECT_EXIT(dying([&] { ExactFloatO().sub(exact(small, 0), exact(large, 0)); }), ExitedWithCode(1),
                "ExactFloatO::sub\\(\\)");
}

TEST_F(ExactFloatsDeathTest, AnAccumulatorMustCoverTheOperand) {
    const std::vector<c64i> A{1, 2, 3}, B{7, 7};
    ExactIn T(4), full(3);
    const std::string text = "Invalid Function Parameters:   ";
    const auto dies = [&](auto action) { EXPECT_EXIT(dying(action), ExitedWithCode(1), text); };
    dies([&] { T.x.set_efp(exact(A, 0)), T.x += exact(B, -1); });
    dies([&] { T.x.set_efp(exact(A, 0)), T.x += exact(B, 2); });
    dies([&] { full.x.set_efp(exact(A, 0)), full.x += exact(B, 0); });  // no word above the top
    dies([&] { T.x.set_efp(exact(A, 0)), T.x -= exact(B, -1); });
    dies([&] { full.x.set_efp(exact(A, 0)), full.x -= exact(B, 0); });
}

}  // namespace
}  // namespace znp
