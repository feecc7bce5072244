#include "multiply/kernels/word_multiply.hpp"

#include <gtest/gtest.h>

#include "multiply/basecase_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::all_kinds;
using testing::exact_product;
using testing::GuardedWords;
using testing::Kind;
using testing::make_operand;
using testing::make_rng;

template <class word>
class WordMultiply : public ::testing::Test {
  public:
    static constexpr word ones = std::numeric_limits<word>::max();
};
TYPED_TEST_SUITE(WordMultiply, testing::Words);

TYPED_TEST(WordMultiply, Mul1WritesOneWordMore) {
    auto rng = make_rng(5111);
    for (upL_t L = 1; L <= 70; L++) {
        for (const Kind kind : all_kinds) {
            const auto A = make_operand<TypeParam>(kind, L, rng);
            for (const TypeParam w :
                 {TypeParam{0}, TypeParam{1}, this->ones, static_cast<TypeParam>(rng())}) {
                GuardedWords<TypeParam> a(A), T(L + 1), R(L + 1);
                Mul1(T.data(), a.data(), L, w);
                ASSERT_EQ(T.words(), exact_product(A, std::vector<TypeParam>{w})) << "L = " << L;
                Mul1_reference(R.data(), a.data(), L, w);
                ASSERT_EQ(R.words(), T.words());
                ASSERT_EQ(a.words(), A);
            }
        }
    }
}

TYPED_TEST(WordMultiply, Mul1OfOneWordWritesTwo) {
    GuardedWords<TypeParam> T(2);
    Mul1(T.data(), &this->ones, 1, this->ones);
    EXPECT_EQ(T.words(), (std::vector<TypeParam>{1, static_cast<TypeParam>(this->ones - 1)}));
    const TypeParam two = 2;
    Mul1(T.data(), &two, 1, TypeParam{3});
    EXPECT_EQ(T.words(), (std::vector<TypeParam>{6, 0}));
}

TYPED_TEST(WordMultiply, Mul1OfNothingWritesZero) {
    GuardedWords<TypeParam> T(1);
    const TypeParam none = 5;
    Mul1(T.data(), &none, 0, this->ones);
    EXPECT_EQ(T.words(), std::vector<TypeParam>{0});
}

TYPED_TEST(WordMultiply, Mul1InPlace) {
    auto rng = make_rng(5112);
    for (upL_t L = 1; L <= 20; L++) {
        const auto A = make_operand<TypeParam>(Kind::random, L, rng);
        const auto w = static_cast<TypeParam>(rng());
        GuardedWords<TypeParam> T(L + 1);
        std::copy(A.begin(), A.end(), T.data());
        Mul1(T.data(), T.data(), L, w);
        EXPECT_EQ(T.words(), exact_product(A, std::vector<TypeParam>{w}));
    }
}

// T w + carry has one word more than T, which is what MulW returns.
TYPED_TEST(WordMultiply, MulWAddsTheCarryAndReturnsTheLastOne) {
    auto rng = make_rng(5113);
    for (upL_t L = 1; L <= 70; L++) {
        for (const Kind kind : all_kinds) {
            const auto A = make_operand<TypeParam>(kind, L, rng);
            const auto w = (rng() & 1) != 0 ? this->ones : static_cast<TypeParam>(rng());
            const auto carry = (rng() & 1) != 0 ? this->ones : static_cast<TypeParam>(rng());
            auto expected = exact_product(A, std::vector<TypeParam>{w});
            TypeParam c = carry;
            for (TypeParam& x : expected) {
                x += c;
                c = x < c ? 1 : 0;
            }
            GuardedWords<TypeParam> T(A), R(A);
            const TypeParam top = MulW(T.data(), L, w, carry);
            auto result = T.words();
            result.push_back(top);
            ASSERT_EQ(result, expected) << "L = " << L;
            ASSERT_EQ(MulW_reference(R.data(), L, w, carry), top);
            ASSERT_EQ(R.words(), T.words());
        }
    }
}

TYPED_TEST(WordMultiply, MulWOfNothingReturnsTheCarry) {
    EXPECT_EQ(MulW(static_cast<TypeParam*>(nullptr), 0, this->ones, TypeParam{7}), TypeParam{7});
}

TEST(WordMultiplySingle, Products) {
    EXPECT_EQ(Mul32(0xffffffffu, 0xffffffffu), 0xfffffffe00000001u);
    const u64_t ones = ~u64_t{0};
    EXPECT_EQ(static_cast<u64_t>(Mul64(ones, ones)), 1u);
    EXPECT_EQ(static_cast<u64_t>(Mul64(ones, ones) >> 64), ones - 1);
}

}  // namespace
}  // namespace znp
