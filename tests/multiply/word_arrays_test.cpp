#include "multiply/kernels/word_arrays.hpp"

#include <gmp.h>
#include <gtest/gtest.h>

#include "multiply/basecase_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::all_kinds;
using testing::GuardedWords;
using testing::Kind;
using testing::make_operand;

// (a + sign b + sign carry) as L words and what leaves the top.
template <class word>
std::pair<std::vector<word>, bool> expected(const std::vector<word>& A, const std::vector<word>& B,
                                            bool carry, int sign) {
    mpz_t a, b;
    mpz_inits(a, b, nullptr);
    mpz_import(a, A.size(), -1, sizeof(word), 0, 0, A.data());
    mpz_import(b, B.size(), -1, sizeof(word), 0, 0, B.data());
    mpz_add_ui(b, b, carry ? 1 : 0);
    (sign > 0 ? mpz_add : mpz_sub)(a, a, b);
    std::vector<word> T(A.size());
    mpz_fdiv_r_2exp(b, a, 8 * sizeof(word) * A.size());
    const bool out = mpz_cmp(a, b) != 0;
    mpz_export(T.data(), nullptr, -1, sizeof(word), 0, 0, b);
    mpz_clears(a, b, nullptr);
    return {T, out};
}

template <class word>
class WordArrays : public ::testing::Test {
  protected:
    // calls(length, first operand, second operand, carry) for lengths about the unrolled loop's, and longer.
    template <class Call>
    void for_operands(Call call) {
        auto rng = testing::make_rng(41);
        for (const upL_t L : testing::Lengths{1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 100}) {
            for (const Kind a : all_kinds) {
                for (const Kind b : all_kinds) {
                    const auto A = make_operand<word>(a, L, rng);
                    const auto B = make_operand<word>(b, L, rng);
                    call(A, B, false);
                    call(A, B, true);
                }
            }
        }
    }
};
TYPED_TEST_SUITE(WordArrays, testing::Words);

TYPED_TEST(WordArrays, AddAndSubtractApartAndInPlace) {
    using word = TypeParam;
    this->for_operands([](const std::vector<word>& A, const std::vector<word>& B, bool carry) {
        const upL_t L = A.size();
        for (const int sign : {1, -1}) {
            const auto [T, out] = expected(A, B, carry, sign);
            const auto chain = [sign, carry, L](word* t, const word* a, const word* b) {
                return sign > 0 ? add_words(t, a, b, L, carry) : sub_words(t, a, b, L, carry);
            };
            GuardedWords<word> apart(L), first(A), second(B);
            EXPECT_EQ(chain(apart.data(), A.data(), B.data()), out);
            EXPECT_EQ(apart.words(), T);
            EXPECT_EQ(chain(first.data(), first.data(), B.data()), out);
            EXPECT_EQ(first.words(), T);
            EXPECT_EQ(chain(second.data(), A.data(), second.data()), out);
            EXPECT_EQ(second.words(), T);
        }
    });
}

TYPED_TEST(WordArrays, CarryAndBorrowRipple) {
    using word = TypeParam;
    this->for_operands([](const std::vector<word>& A, const std::vector<word>&, bool carry) {
        const upL_t L = A.size();
        const std::vector<word> zero(L, 0);
        for (const int sign : {1, -1}) {
            const auto [T, out] = expected(A, zero, carry, sign);
            GuardedWords<word> apart(L), in_place(A);
            const auto ripple = [sign, carry, L](word* t, const word* a) {
                return sign > 0 ? copy_add_carry(t, a, L, carry) : copy_sub_borrow(t, a, L, carry);
            };
            EXPECT_EQ(ripple(apart.data(), A.data()), out);
            EXPECT_EQ(apart.words(), T);
            EXPECT_EQ(ripple(in_place.data(), in_place.data()), out);
            EXPECT_EQ(in_place.words(), T);
        }
    });
}

TYPED_TEST(WordArrays, Negation) {
    using word = TypeParam;
    this->for_operands([](const std::vector<word>& A, const std::vector<word>&, bool borrow) {
        const std::vector<word> zero(A.size(), 0);
        const auto [T, out] = expected(zero, A, borrow, -1);
        GuardedWords<word> apart(A.size()), in_place(A);
        EXPECT_EQ(negate_words(apart.data(), A.data(), A.size(), borrow), out);
        EXPECT_EQ(apart.words(), T);
        EXPECT_EQ(negate_words(in_place.data(), in_place.data(), A.size(), borrow), out);
        EXPECT_EQ(in_place.words(), T);
    });
}

TYPED_TEST(WordArrays, NothingToDoGivesTheCarryBack) {
    using word = TypeParam;
    GuardedWords<word> none(0);
    word* const T = none.data();
    for (const bool carry : {false, true}) {
        EXPECT_EQ(add_words(T, T, T, 0, carry), carry);
        EXPECT_EQ(sub_words(T, T, T, 0, carry), carry);
        EXPECT_EQ(copy_add_carry(T, T, 0, carry), carry);
        EXPECT_EQ(copy_sub_borrow(T, T, 0, carry), carry);
        EXPECT_EQ(negate_words(T, T, 0, carry), carry);
    }
}

TYPED_TEST(WordArrays, NormalisedLength) {
    using word = TypeParam;
    const std::vector<word> A{0, 5, 0, 0, 7, 0, 0};
    EXPECT_EQ(normalised_length(A.data(), 7), 5u);
    EXPECT_EQ(normalised_length(A.data(), 5), 5u);
    EXPECT_EQ(normalised_length(A.data(), 4), 2u);
    EXPECT_EQ(normalised_length(A.data(), 1), 0u);
    EXPECT_EQ(normalised_length(A.data(), 0), 0u);
}

}  // namespace
}  // namespace znp
