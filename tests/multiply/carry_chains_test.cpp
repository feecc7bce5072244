#include "multiply/kernels/carry_chains.hpp"

#include <gtest/gtest.h>

#include "multiply/basecase_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::all_kinds;
using testing::GuardedWords;
using testing::Kind;
using testing::make_operand;
using testing::make_rng;

// An exact integer for the checks.
class Integer {
  public:
    Integer() { mpz_init(z_); }
    template <class word>
    Integer(const word* A, upL_t L) : Integer() {
        mpz_import(z_, L, -1, sizeof(word), 0, 0, A);
    }
    Integer(const Integer&) = delete;
    Integer& operator=(const Integer&) = delete;
    ~Integer() { mpz_clear(z_); }
    mpz_ptr get() { return z_; }

  private:
    mpz_t z_;
};

template <class word>
class CarryChains : public ::testing::Test {
  public:
    static constexpr word ones = std::numeric_limits<word>::max();

    static bool expected_ge(const std::vector<word>& A) {
        const upL_t h = (A.size() + 1) / 2;
        Integer lower(A.data(), h), upper(A.data() + h, A.size() - h);
        return mpz_cmp(lower.get(), upper.get()) >= 0;
    }
    static std::vector<word> expected_difference(const std::vector<word>& A) {
        const upL_t h = (A.size() + 1) / 2;
        Integer lower(A.data(), h), upper(A.data() + h, A.size() - h);
        mpz_sub(lower.get(), lower.get(), upper.get());
        std::vector<word> D(h);
        mpz_export(D.data(), nullptr, -1, sizeof(word), 0, 0, lower.get());  // the absolute value
        return D;
    }
    static bool ge(const word* A, upL_t n) {
        const upL_t h = (n + 1) / 2;
        return ADDv2::cmp_halves(A, h, A + h, n - h);
    }
};
TYPED_TEST_SUITE(CarryChains, testing::Words);

TYPED_TEST(CarryChains, CompareAndSubtractHalves) {
    auto rng = make_rng(5121);
    for (upL_t n = 2; n <= 80; n++) {
        for (const Kind kind : all_kinds) {
            const auto A = make_operand<TypeParam>(kind, n, rng);
            const auto B = make_operand<TypeParam>(Kind::sparse, n, rng);
            const upL_t h = (n + 1) / 2;
            const bool A_ge = this->ge(A.data(), n);
            const bool B_ge = this->ge(B.data(), n);
            ASSERT_EQ(A_ge, this->expected_ge(A)) << "n = " << n;
            ASSERT_EQ(B_ge, this->expected_ge(B)) << "n = " << n;
            ASSERT_EQ(ADDv2::cmp_halves_reference(A.data(), h, A.data() + h, n - h), A_ge);

            GuardedWords<TypeParam> a(A), b(B), D(h), D2(h), E2(h), R(h);
            ADDv2::sub_halves(D.data(), a.data(), n, A_ge);
            ASSERT_EQ(D.words(), this->expected_difference(A)) << "n = " << n;
            ADDv2::sub_halves2(D2.data(), a.data(), A_ge, E2.data(), b.data(), B_ge, n);
            ASSERT_EQ(D2.words(), D.words()) << "n = " << n;
            ASSERT_EQ(E2.words(), this->expected_difference(B)) << "n = " << n;
            ADDv2::sub_halves_reference(R.data(), a.data(), n, A_ge);
            ASSERT_EQ(R.words(), D.words());
        }
    }
}

// The top word of a longer first operand is zero: only the common words count.
TYPED_TEST(CarryChains, CompareWithAZeroTopWord) {
    const TypeParam longer[] = {5, 7, 0};
    const TypeParam smaller[] = {9, 6};
    const TypeParam equal[] = {5, 7};
    const TypeParam larger[] = {6, 7};
    EXPECT_TRUE(ADDv2::cmp_halves(longer, 3, smaller, 2));
    EXPECT_TRUE(ADDv2::cmp_halves(longer, 3, equal, 2));
    EXPECT_FALSE(ADDv2::cmp_halves(longer, 3, larger, 2));
}

TYPED_TEST(CarryChains, CompareDecidedByTheLongerTopWordAlone) {
    const TypeParam longer[] = {0, 0, 1};
    const TypeParam shorter[] = {this->ones, this->ones};
    EXPECT_TRUE(ADDv2::cmp_halves(longer, 3, shorter, 2));
}

TYPED_TEST(CarryChains, CompareDecidedByTheLowestWord) {
    const TypeParam A[] = {4, 7, 7, 7};
    const TypeParam B[] = {5, 7, 7, 7};
    EXPECT_FALSE(ADDv2::cmp_halves(A, 4, B, 4));
    EXPECT_TRUE(ADDv2::cmp_halves(B, 4, A, 4));
    EXPECT_TRUE(ADDv2::cmp_halves(A, 1, A, 1));
}

// The borrow of the common words is taken from the longer half's top word.
TYPED_TEST(CarryChains, DifferenceCompletedFromTheLongerHalf) {
    const std::vector<TypeParam> A{0, 0, 1, 1, 0};  // lower: 1 at word 2; upper: 1 at word 0
    GuardedWords<TypeParam> D(3);
    ADDv2::sub_halves(D.data(), A.data(), 5, true);
    EXPECT_EQ(D.words(), (std::vector<TypeParam>{this->ones, this->ones, 0}));
}

TYPED_TEST(CarryChains, RippleStopsWhereTheCarryDies) {
    for (upL_t L = 1; L <= 20; L++) {
        for (upL_t stop = 0; stop < L; stop++) {
            for (const s64_t carry : {s64_t{1}, s64_t{2}, s64_t{3}}) {
                GuardedWords<TypeParam> T(std::vector<TypeParam>(L, this->ones));
                T.data()[stop] = 5;
                const s64_t out = ADDv2::add_ripple(T.data(), L, carry);
                EXPECT_EQ(out, 0);
                // Back again, by a borrow.
                EXPECT_EQ(T.data()[stop], stop == 0 ? 5 + carry : 6);
                EXPECT_EQ(ADDv2::add_ripple(T.data(), L, -carry), 0);
                std::vector<TypeParam> before(L, this->ones);
                before[stop] = 5;
                EXPECT_EQ(T.words(), before);
            }
        }
    }
}

TYPED_TEST(CarryChains, RippleReturnsWhatLeavesTheTop) {
    GuardedWords<TypeParam> T(std::vector<TypeParam>(3, this->ones));
    EXPECT_EQ(ADDv2::add_ripple(T.data(), 3, 2), 1);
    EXPECT_EQ(T.words(), (std::vector<TypeParam>{1, 0, 0}));
    EXPECT_EQ(ADDv2::add_ripple(T.data(), 3, -2), -1);
    EXPECT_EQ(T.words(), std::vector<TypeParam>(3, this->ones));
    EXPECT_EQ(ADDv2::add_ripple(T.data(), 0, -1), -1);
}

TYPED_TEST(CarryChains, RippleAgreesWithTheReference) {
    auto rng = make_rng(5122);
    for (int round = 0; round < 500; round++) {
        const upL_t L = 1 + rng() % 30;
        const auto A = make_operand<TypeParam>(all_kinds[rng() % std::size(all_kinds)], L, rng);
        const s64_t carry = static_cast<s64_t>(rng() % 9) - 4;
        GuardedWords<TypeParam> T(A), R(A);
        EXPECT_EQ(ADDv2::add_ripple(T.data(), L, carry), ADDv2::add_ripple_reference(R.data(), L, carry));
        EXPECT_EQ(T.words(), R.words());
    }
}

}  // namespace
}  // namespace znp
