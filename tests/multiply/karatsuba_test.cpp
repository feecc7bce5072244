#include "multiply/bkt/karatsuba.hpp"

#include <gtest/gtest.h>

#include <string>

#include "multiply/basecase_test_support.hpp"
#include "multiply/bkt/karatsuba_combine.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::all_kinds;
using testing::exact_product;
using testing::GuardedWords;
using testing::Kind;
using testing::Lengths;
using testing::make_operand;
using testing::make_rng;

// Sets all four thresholds and puts the old values back.
class Thresholds {
  public:
    Thresholds(upL_t sqr32, upL_t mul32, upL_t sqr64, upL_t mul64) { set(sqr32, mul32, sqr64, mul64); }
    Thresholds(const Thresholds&) = delete;
    Thresholds& operator=(const Thresholds&) = delete;
    ~Thresholds() { set(old_[0], old_[1], old_[2], old_[3]); }

  private:
    static void set(upL_t sqr32, upL_t mul32, upL_t sqr64, upL_t mul64) {
        bkt::kar_sqr_c32i = sqr32;
        bkt::kar_mul_c32i = mul32;
        bkt::kar_sqr_c64i = sqr64;
        bkt::kar_mul_c64i = mul64;
    }
    upL_t old_[4] = {bkt::kar_sqr_c32i, bkt::kar_mul_c32i, bkt::kar_sqr_c64i, bkt::kar_mul_c64i};
};

template <class word>
void check_elm(const std::vector<word>& A, const std::vector<word>& B) {
    const upL_t n = A.size();
    GuardedWords<word> a(A), b(B), T(2 * n), S(bkt::elm_bytes<word>(n) / sizeof(word));
    bkt::elm(a.data(), b.data(), n, T.data(), S.data());
    ASSERT_EQ(T.words(), exact_product(A, B)) << "n = " << n;
    ASSERT_EQ(a.words(), A);
    ASSERT_EQ(b.words(), B);
}

template <class word>
void check_sqr(const std::vector<word>& A) {
    const upL_t n = A.size();
    GuardedWords<word> a(A), T(2 * n), S(bkt::sqr_bytes<word>(n) / sizeof(word));
    bkt::sqr(a.data(), n, T.data(), S.data());
    ASSERT_EQ(T.words(), exact_product(A, A)) << "n = " << n;
    ASSERT_EQ(a.words(), A);
}

template <class word>
void check_mul(const std::vector<word>& A, const std::vector<word>& B) {
    const upL_t La = A.size();
    const upL_t Lb = B.size();
    GuardedWords<word> a(A), b(B), T(La + Lb), S(bkt::mul_bytes<word>(La, Lb) / sizeof(word));
    bkt::mul(a.data(), La, b.data(), Lb, T.data(), S.data());
    ASSERT_EQ(T.words(), exact_product(A, B)) << La << " by " << Lb;
    ASSERT_EQ(a.words(), A);
    ASSERT_EQ(b.words(), B);
}

template <class word>
void check_equal_lengths(upL_t n, std::mt19937_64& rng) {
    for (const Kind kind : all_kinds) {
        const auto A = make_operand<word>(kind, n, rng);
        check_sqr(A);
        for (const Kind other : {kind, Kind::random, Kind::sparse})
            check_elm(A, make_operand<word>(other, n, rng));
    }
}

template <class word>
void check_lengths(upL_t La, upL_t Lb, std::mt19937_64& rng) {
    check_mul(make_operand<word>(Kind::random, La, rng), make_operand<word>(Kind::random, Lb, rng));
    check_mul(make_operand<word>(Kind::all_ones, La, rng), make_operand<word>(Kind::all_ones, Lb, rng));
    check_mul(make_operand<word>(Kind::sparse, La, rng), make_operand<word>(Kind::sparse, Lb, rng));
    const Kind kind = all_kinds[rng() % std::size(all_kinds)];
    check_mul(make_operand<word>(kind, La, rng), make_operand<word>(Kind::sparse, Lb, rng));
}

constexpr upL_t long_lengths[] = {81,  88,  95,  96,  97,  111, 115, 116, 117, 127, 128, 129, 159, 160,
                                  191, 192, 231, 232, 233, 255, 257, 319, 320, 431, 463, 464, 465};

template <class word>
class Karatsuba : public ::testing::Test {};
TYPED_TEST_SUITE(Karatsuba, testing::Words);

TYPED_TEST(Karatsuba, ThresholdsAreTheSettledOnes) {
    EXPECT_EQ(bkt::kar_sqr_c32i, 22u);
    EXPECT_EQ(bkt::kar_mul_c32i, 14u);
    EXPECT_EQ(bkt::kar_sqr_c64i, 13u);
    EXPECT_EQ(bkt::kar_mul_c64i, 10u);
}

TYPED_TEST(Karatsuba, SquaresAndEqualLengths) {
    auto rng = make_rng(5201);
    for (upL_t n = 1; n <= 80; n++) check_equal_lengths<TypeParam>(n, rng);
}

TYPED_TEST(Karatsuba, LongSquaresAndEqualLengths) {
    auto rng = make_rng(5202);
    for (const upL_t n : long_lengths) check_equal_lengths<TypeParam>(n, rng);
}

TYPED_TEST(Karatsuba, AllShortLengthPairs) {
    auto rng = make_rng(5203);
    for (upL_t La = 1; La <= 40; La++) {
        for (upL_t Lb = 1; Lb <= 40; Lb++) check_lengths<TypeParam>(La, Lb, rng);
    }
}

// Around the multiples of the shorter length, where the pieces change: just under and over 2 Lb, tails of
// exactly Lb, tails that are too short to split.
TYPED_TEST(Karatsuba, LengthsAroundMultiplesOfTheShorter) {
    auto rng = make_rng(5204);
    for (const upL_t Lb : Lengths{9, 10, 11, 13, 14, 15, 20, 21, 27, 32, 58}) {
        for (upL_t k = 1; k <= 7; k++) {
            for (upL_t La = k * Lb - 2; La <= k * Lb + 2; La++) check_lengths<TypeParam>(La, Lb, rng);
            check_lengths<TypeParam>(k * Lb + Lb / 2, Lb, rng);
            check_lengths<TypeParam>(Lb, k * Lb + Lb - 3, rng);
        }
    }
}

TYPED_TEST(Karatsuba, TailOfExactlyTheShorterLength) {
    auto rng = make_rng(5205);
    for (const upL_t Lb : Lengths{10, 14, 17, 29}) {
        for (const upL_t pieces : Lengths{2, 3, 4, 5, 6, 7}) check_lengths<TypeParam>(pieces * Lb, Lb, rng);
    }
}

TYPED_TEST(Karatsuba, LongUnequalLengths) {
    auto rng = make_rng(5206);
    for (const upL_t La : long_lengths) {
        for (const upL_t Lb : Lengths{1, 2, 9, 13, 23, 37, 58, 116}) check_lengths<TypeParam>(La, Lb, rng);
        check_lengths<TypeParam>(La, La * 5 / 8, rng);  // the longest chain of ever shorter rests
        check_lengths<TypeParam>(La, La - 1, rng);
    }
}

TYPED_TEST(Karatsuba, OneWord) {
    const TypeParam ones = std::numeric_limits<TypeParam>::max();
    const std::vector<TypeParam> A{ones};
    check_sqr(A);
    check_elm(A, A);
    check_mul(A, A);
    EXPECT_EQ(bkt::elm_bytes<TypeParam>(1), 0u);
    EXPECT_EQ(bkt::sqr_bytes<TypeParam>(1), 0u);
}

// The lower half has a word more than the upper one, and that word alone decides the comparison.
TYPED_TEST(Karatsuba, OddLengthDecidedByTheExtraWord) {
    auto rng = make_rng(5207);
    for (const upL_t n : Lengths{15, 17, 23, 25, 27, 29, 45, 59}) {
        const upL_t h = (n + 1) / 2;
        auto A = make_operand<TypeParam>(Kind::all_ones, n, rng);
        auto B = make_operand<TypeParam>(Kind::all_ones, n, rng);
        for (upL_t i = 0; i + 1 < h; i++) A[i] = B[i] = 0;
        A[h - 1] = 1;
        check_sqr(A);
        check_elm(A, A);
        B[h - 1] = 0;  // and here it decides nothing
        check_sqr(B);
        check_elm(A, B);
        check_elm(B, A);
    }
}

TYPED_TEST(Karatsuba, EqualHalvesMakeTheMiddleProductVanish) {
    auto rng = make_rng(5208);
    for (const upL_t n : Lengths{14, 15, 22, 23, 28, 44, 58, 59}) {
        const auto A = make_operand<TypeParam>(Kind::equal_halves, n, rng);
        check_sqr(A);
        check_elm(A, make_operand<TypeParam>(Kind::random, n, rng));
        check_elm(make_operand<TypeParam>(Kind::random, n, rng), A);
        check_elm(A, make_operand<TypeParam>(Kind::equal_halves, n, rng));
    }
}

// Both signs of both differences.
TYPED_TEST(Karatsuba, EverySignOfTheMiddleProduct) {
    auto rng = make_rng(5209);
    for (const upL_t n : Lengths{14, 15, 22, 29, 58}) {
        for (const Kind a : {Kind::upper_half_zero, Kind::lower_half_zero}) {
            for (const Kind b : {Kind::upper_half_zero, Kind::lower_half_zero}) {
                check_elm(make_operand<TypeParam>(a, n, rng), make_operand<TypeParam>(b, n, rng));
            }
        }
    }
}

TYPED_TEST(Karatsuba, ThresholdsAreReadOnEachCall) {
    auto rng = make_rng(5210);
    for (const upL_t t : Lengths{2, 3, 4, 5, 1000}) {
        for (const upL_t u : Lengths{2, 4, 7, 1000}) {
            const Thresholds set(t, u, t, u);
            for (upL_t n = 1; n <= 36; n++) {
                check_sqr(make_operand<TypeParam>(Kind::random, n, rng));
                check_sqr(make_operand<TypeParam>(Kind::all_ones, n, rng));
                check_elm(make_operand<TypeParam>(Kind::sparse, n, rng),
                          make_operand<TypeParam>(Kind::random, n, rng));
                check_elm(make_operand<TypeParam>(Kind::all_ones, n, rng),
                          make_operand<TypeParam>(Kind::all_ones, n, rng));
            }
            for (upL_t La = 1; La <= 24; La++) {
                for (upL_t Lb = 1; Lb <= La; Lb++) {
                    check_mul(make_operand<TypeParam>(Kind::sparse, La, rng),
                              make_operand<TypeParam>(Kind::random, Lb, rng));
                }
            }
            check_lengths<TypeParam>(131, 81, rng);
        }
    }
}

// The recombination by itself, also on words that no product gives: every carry, and carries that run far.
TYPED_TEST(Karatsuba, RecombinationAgreesWithTheReference) {
    auto rng = make_rng(5211);
    for (upL_t n = 2; n <= 60; n++) {
        const upL_t h = (n + 1) / 2;
        for (const Kind t : all_kinds) {
            for (const Kind m : {Kind::random, Kind::all_ones, Kind::zero, Kind::one, Kind::sparse}) {
                const auto outer = make_operand<TypeParam>(t, 2 * n, rng);
                const auto middle = make_operand<TypeParam>(m, 2 * h, rng);
                for (const bool subtract : {false, true}) {
                    GuardedWords<TypeParam> T(outer), M(middle), R(outer);
                    bkt::combine(T.data(), M.data(), n, subtract);
                    bkt::combine_reference(R.data(), middle.data(), n, subtract);
                    ASSERT_EQ(T.words(), R.words()) << "n = " << n << ", subtract = " << subtract;
                }
            }
        }
    }
}

// A level of x words, x rounded up to even, adds x words, down to the threshold.
TEST(KaratsubaScratch, QueriesSumTheLevels) {
    EXPECT_EQ(bkt::elm_bytes<c32i>(13), 0u);
    EXPECT_EQ(bkt::elm_bytes<c32i>(14), 4u * 14);
    EXPECT_EQ(bkt::elm_bytes<c32i>(116), 4u * (116 + 58 + 30 + 16));  // 116, 58, 29, 15, 8
    EXPECT_EQ(bkt::sqr_bytes<c32i>(21), 0u);
    EXPECT_EQ(bkt::sqr_bytes<c32i>(23), 4u * 24);
    EXPECT_EQ(bkt::sqr_bytes<c32i>(116), 4u * (116 + 58 + 30));
    EXPECT_EQ(bkt::elm_bytes<c64i>(9), 0u);
    EXPECT_EQ(bkt::elm_bytes<c64i>(19), 8u * (20 + 10));
    EXPECT_EQ(bkt::elm_bytes<c64i>(58), 8u * (58 + 30 + 16));
    EXPECT_EQ(bkt::sqr_bytes<c64i>(12), 0u);
    EXPECT_EQ(bkt::sqr_bytes<c64i>(58), 8u * (58 + 30 + 16));
    EXPECT_EQ(bkt::mul_bytes<c32i>(100, 13), 0u);
    EXPECT_EQ(bkt::mul_bytes<c32i>(14, 100), 4u * (14 + 28));
    EXPECT_EQ(bkt::mul_bytes<c64i>(11, 10), 8u * (10 + 20));
}

}  // namespace
}  // namespace znp
