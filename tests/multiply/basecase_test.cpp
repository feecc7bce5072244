#include "multiply/bkt/basecase.hpp"

#include <gtest/gtest.h>

#include "multiply/basecase_test_support.hpp"
#include "multiply/bkt/basecase_reference.hpp"
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

template <class word>
void check_mulB(const std::vector<word>& A, const std::vector<word>& B) {
    GuardedWords<word> a(A), b(B), T(A.size() + B.size()), R(A.size() + B.size());
    bkt::mulB(T.data(), a.data(), A.size(), b.data(), B.size());
    ASSERT_EQ(T.words(), exact_product(A, B)) << A.size() << " by " << B.size();
    bkt::mulB_reference(R.data(), a.data(), A.size(), b.data(), B.size());
    ASSERT_EQ(T.words(), R.words());
    ASSERT_EQ(a.words(), A);
    ASSERT_EQ(b.words(), B);
}

template <class word>
void check_equal_lengths(const std::vector<word>& A, const std::vector<word>& B) {
    const upL_t n = A.size();
    GuardedWords<word> a(A), b(B), T(2 * n), Q(2 * n), R(2 * n);
    bkt::elmB(T.data(), a.data(), b.data(), n);
    ASSERT_EQ(T.words(), exact_product(A, B)) << "n = " << n;
    bkt::sqrB(Q.data(), a.data(), n);
    ASSERT_EQ(Q.words(), exact_product(A, A)) << "n = " << n;
    bkt::sqrB_reference(R.data(), a.data(), n);
    ASSERT_EQ(R.words(), Q.words()) << "n = " << n;
    ASSERT_EQ(a.words(), A);
    ASSERT_EQ(b.words(), B);
}

template <class word>
class Basecase : public ::testing::Test {};
TYPED_TEST_SUITE(Basecase, testing::Words);

TYPED_TEST(Basecase, SquaresAndEqualLengths) {
    auto rng = make_rng(5101);
    for (upL_t n = 1; n <= 64; n++) {
        for (const Kind a : all_kinds) {
            for (const Kind b : {a, Kind::random, Kind::sparse}) {
                check_equal_lengths(make_operand<TypeParam>(a, n, rng), make_operand<TypeParam>(b, n, rng));
            }
        }
    }
}

TYPED_TEST(Basecase, AllShortLengthPairs) {
    auto rng = make_rng(5102);
    for (upL_t La = 1; La <= 40; La++) {
        for (upL_t Lb = 1; Lb <= 40; Lb++) {
            for (const Kind kind : {Kind::random, Kind::all_ones, Kind::sparse}) {
                check_mulB(make_operand<TypeParam>(kind, La, rng), make_operand<TypeParam>(kind, Lb, rng));
            }
        }
    }
}

TYPED_TEST(Basecase, LongOperands) {
    auto rng = make_rng(5103);
    for (const upL_t La : Lengths{41, 64, 99, 127, 200, 463, 464, 465}) {
        for (const upL_t Lb : Lengths{1, 2, 3, 4, 5, 6, 7, 8, 9, 40, 113, 464}) {
            check_mulB(make_operand<TypeParam>(Kind::random, La, rng),
                       make_operand<TypeParam>(Kind::sparse, Lb, rng));
            check_mulB(make_operand<TypeParam>(Kind::all_ones, La, rng),
                       make_operand<TypeParam>(Kind::all_ones, Lb, rng));
        }
    }
}

TYPED_TEST(Basecase, OneWordGivesTwo) {
    const TypeParam ones = std::numeric_limits<TypeParam>::max();
    check_equal_lengths<TypeParam>({ones}, {ones});
    check_equal_lengths<TypeParam>({0}, {ones});
    check_mulB<TypeParam>({ones}, {ones});
    GuardedWords<TypeParam> T(2);
    bkt::sqrB(T.data(), &ones, 1);
    EXPECT_EQ(T.words(), (std::vector<TypeParam>{1, static_cast<TypeParam>(ones - 1)}));
}

// Both operands may be the same array.
TYPED_TEST(Basecase, AnOperandByItself) {
    auto rng = make_rng(5104);
    for (const upL_t n : Lengths{1, 2, 5, 8, 13, 22, 30}) {
        const auto A = make_operand<TypeParam>(Kind::random, n, rng);
        GuardedWords<TypeParam> a(A), T(2 * n);
        bkt::elmB(T.data(), a.data(), a.data(), n);
        EXPECT_EQ(T.words(), exact_product(A, A));
        bkt::mulB(T.data(), a.data(), n, a.data(), n);
        EXPECT_EQ(T.words(), exact_product(A, A));
    }
}

}  // namespace
}  // namespace znp
