#include "multiply/bkt/window.hpp"

#include <gtest/gtest.h>

#include "multiply/basecase_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::exact_product;
using testing::GuardedWords;
using testing::Kind;
using testing::Lengths;
using testing::make_operand;
using testing::make_rng;

template <class word>
using Numbers = std::vector<word>;

// An operand under narrowing: a range of words that loses its ends one at a time.
template <class word>
std::vector<word> drop(std::vector<word> A, upL_t bottom, upL_t top) {
    A.erase(A.begin(), A.begin() + static_cast<std::ptrdiff_t>(bottom));
    A.erase(A.end() - static_cast<std::ptrdiff_t>(top), A.end());
    return A;
}

template <class word>
std::vector<word> slice(const std::vector<word>& T, upL_t s, upL_t e) {
    return {T.begin() + static_cast<std::ptrdiff_t>(s), T.begin() + static_cast<std::ptrdiff_t>(e)};
}

// The rule in the words of its definition, on copies of the operands.
template <class word>
std::vector<word> model_sqr_window(upL_t s, upL_t e, std::vector<word> A) {
    const upL_t n = A.size();
    if (s > n) {
        A = drop(A, s - n, 0);
        e -= 2 * (s - n);
        s = 2 * n - s;
    }
    if (A.size() > e) A = drop(A, 0, A.size() - e);
    return slice(exact_product(A, A), s, e);
}

template <class word>
std::vector<word> model_mul_window(upL_t s, upL_t e, std::vector<word> A, std::vector<word> B) {
    auto& shorter = A.size() < B.size() ? A : B;
    auto& longer = A.size() < B.size() ? B : A;
    upL_t p = shorter.size();
    upL_t q = longer.size();
    const upL_t from_longer = s > p ? s - p : 0;
    const upL_t from_shorter = s > q ? s - q : 0;
    longer = drop(longer, from_longer, 0);
    shorter = drop(shorter, from_shorter, 0);
    s -= from_longer + from_shorter;
    e -= from_longer + from_shorter;
    p = shorter.size();
    q = longer.size();
    const upL_t x = p + q - e;
    if (x > p) longer = drop(longer, 0, x - p);
    if (x > q) shorter = drop(shorter, 0, x - q);
    return slice(exact_product(A, B), s, e);
}

// window + k for a small k, modulo the window's size.
template <class word>
std::vector<word> plus(std::vector<word> window, word k) {
    for (word& w : window) {
        w += k;
        k = w < k ? 1 : 0;
    }
    return window;
}

// What the dropped words would have carried into the window is 0, 1 or 2.
template <class word>
::testing::AssertionResult short_of_truth_by_a_carry(const std::vector<word>& window,
                                                     const std::vector<word>& truth) {
    for (word k = 0; k <= 2; k++) {
        if (plus(window, k) == truth) return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "the window is off by more than a carry";
}

template <class word>
void check_sqr_window(upL_t s, upL_t e, const std::vector<word>& A) {
    const upL_t n = A.size();
    GuardedWords<word> a(A), T(e - s), S(bkt::sqr_window_bytes<word>(s, e, n) / sizeof(word));
    bkt::sqr_window(Window{T.data(), s, e}, {a.data(), n}, S.data());
    ASSERT_EQ(T.words(), model_sqr_window(s, e, A))
        << "[" << s << ", " << e << ") of " << n << " words squared";
    ASSERT_TRUE(short_of_truth_by_a_carry(T.words(), slice(exact_product(A, A), s, e)));
    ASSERT_EQ(a.words(), A);
}

template <class word>
void check_mul_window(upL_t s, upL_t e, const std::vector<word>& A, const std::vector<word>& B) {
    const upL_t La = A.size();
    const upL_t Lb = B.size();
    GuardedWords<word> a(A), b(B), T(e - s);
    GuardedWords<word> S(bkt::mul_window_bytes<word>(s, e, La, Lb) / sizeof(word));
    bkt::mul_window(Window{T.data(), s, e}, {a.data(), La}, {b.data(), Lb}, S.data());
    ASSERT_EQ(T.words(), model_mul_window(s, e, A, B))
        << "[" << s << ", " << e << ") of " << La << " by " << Lb << " words";
    ASSERT_TRUE(short_of_truth_by_a_carry(T.words(), slice(exact_product(A, B), s, e)));
    ASSERT_EQ(a.words(), A);
    ASSERT_EQ(b.words(), B);
}

template <class word>
class Windows : public ::testing::Test {};
TYPED_TEST_SUITE(Windows, testing::Words);

TYPED_TEST(Windows, EverySquareWindowOfShortOperands) {
    auto rng = make_rng(5301);
    for (upL_t n = 1; n <= 11; n++) {
        for (const Kind kind : {Kind::random, Kind::all_ones}) {
            const auto A = make_operand<TypeParam>(kind, n, rng);
            for (upL_t s = 0; s < 2 * n; s++) {
                for (upL_t e = s + 1; e <= 2 * n; e++) check_sqr_window(s, e, A);
            }
        }
    }
}

TYPED_TEST(Windows, EveryProductWindowOfShortOperands) {
    auto rng = make_rng(5302);
    for (upL_t La = 1; La <= 8; La++) {
        for (upL_t Lb = 1; Lb <= 8; Lb++) {
            const Kind kind = (rng() & 1) != 0 ? Kind::all_ones : Kind::sparse;
            const auto A = make_operand<TypeParam>(kind, La, rng);
            const auto B = make_operand<TypeParam>(kind, Lb, rng);
            for (upL_t s = 0; s < La + Lb; s++) {
                for (upL_t e = s + 1; e <= La + Lb; e++) check_mul_window(s, e, A, B);
            }
        }
    }
}

TYPED_TEST(Windows, LongOperands) {
    auto rng = make_rng(5303);
    for (int round = 0; round < 400; round++) {
        const upL_t La = 1 + rng() % 130;
        const upL_t Lb = 1 + rng() % 130;
        const Kind kind = testing::all_kinds[rng() % std::size(testing::all_kinds)];
        const auto A = make_operand<TypeParam>(kind, La, rng);
        const auto B = make_operand<TypeParam>(Kind::random, Lb, rng);
        upL_t s = rng() % (La + Lb);
        upL_t e = s + 1 + rng() % (La + Lb - s);
        check_mul_window(s, e, A, B);
        s = rng() % (2 * La);
        e = s + 1 + rng() % (2 * La - s);
        check_sqr_window(s, e, A);
    }
}

TYPED_TEST(Windows, StartPastTheShorterOperand) {
    auto rng = make_rng(5304);
    const auto A = make_operand<TypeParam>(Kind::all_ones, 40, rng);
    const auto B = make_operand<TypeParam>(Kind::all_ones, 17, rng);
    for (const upL_t s : Lengths{17, 18, 30, 40, 41, 56}) {
        check_mul_window(s, 57, A, B);
        check_mul_window(s, s + 1, A, B);
        check_mul_window(s, 57, B, A);
    }
    // Words 18 and up: word 0 of the longer operand cannot reach them.
    const bkt::NarrowedMul w = bkt::narrow_mul(18, 57, 40, 17);
    EXPECT_EQ(w.A_offset, 1u);
    EXPECT_EQ(w.La, 39u);
    EXPECT_EQ(w.B_offset, 0u);
    EXPECT_EQ(w.Lb, 17u);
    EXPECT_EQ(w.s, 17u);
    EXPECT_EQ(w.e, 56u);
}

TYPED_TEST(Windows, WholeProduct) {
    auto rng = make_rng(5305);
    for (const upL_t La : Lengths{1, 2, 9, 14, 29, 58}) {
        for (const upL_t Lb : Lengths{1, 3, 14, 29, 58}) {
            const auto A = make_operand<TypeParam>(Kind::random, La, rng);
            const auto B = make_operand<TypeParam>(Kind::random, Lb, rng);
            check_mul_window(0, La + Lb, A, B);
            check_sqr_window(0, 2 * La, A);
        }
    }
}

TYPED_TEST(Windows, EmptyWindowWritesNothing) {
    auto rng = make_rng(5306);
    auto A = make_operand<TypeParam>(Kind::random, 5, rng);
    GuardedWords<TypeParam> T(0);
    GuardedWords<TypeParam> S(0);
    for (const upL_t s : Lengths{0, 3, 10}) {
        bkt::sqr_window(Window{T.data(), s, s}, {A.data(), 5}, S.data());
        bkt::mul_window(Window{T.data(), s, s}, {A.data(), 5}, {A.data(), 5}, S.data());
    }
}

TEST(WindowNarrowing, Square) {
    const bkt::NarrowedSqr upper = bkt::narrow_sqr(12, 20, 10);
    EXPECT_EQ(upper.A_offset, 2u);
    EXPECT_EQ(upper.n, 8u);
    EXPECT_EQ(upper.s, 8u);
    EXPECT_EQ(upper.e, 16u);
    const bkt::NarrowedSqr lower = bkt::narrow_sqr(0, 3, 10);
    EXPECT_EQ(lower.A_offset, 0u);
    EXPECT_EQ(lower.n, 3u);
    EXPECT_EQ(lower.e, 3u);
}

TEST(WindowNarrowing, ProductIsSymmetric) {
    for (upL_t La = 1; La <= 9; La++) {
        for (upL_t Lb = 1; Lb <= 9; Lb++) {
            for (upL_t s = 0; s < La + Lb; s++) {
                for (upL_t e = s + 1; e <= La + Lb; e++) {
                    const bkt::NarrowedMul x = bkt::narrow_mul(s, e, La, Lb);
                    const bkt::NarrowedMul y = bkt::narrow_mul(s, e, Lb, La);
                    if (La != Lb) {
                        EXPECT_EQ(x.A_offset, y.B_offset);
                    }
                    EXPECT_EQ(x.La + x.Lb, y.La + y.Lb);
                    EXPECT_EQ(x.s, y.s);
                    EXPECT_EQ(x.e - x.s, e - s);
                    EXPECT_LE(x.e, x.La + x.Lb);
                    EXPECT_GE(x.La, 1u);
                    EXPECT_GE(x.Lb, 1u);
                }
            }
        }
    }
}

TEST(WindowScratch, QueriesFollowTheNarrowedLengths) {
    EXPECT_EQ(bkt::sqr_window_bytes<c32i>(0, 42, 21), 8u * 21);
    EXPECT_EQ(bkt::sqr_window_bytes<c32i>(0, 44, 22), 4u * (22 + 44));
    EXPECT_EQ(bkt::sqr_window_bytes<c64i>(0, 24, 12), 16u * 12);
    EXPECT_EQ(bkt::sqr_window_bytes<c64i>(0, 26, 13), 8u * 14 + 16 * 13);
    EXPECT_EQ(bkt::sqr_window_bytes<c32i>(0, 5, 100), 8u * 5);
    EXPECT_EQ(bkt::elm_window_bytes<c32i>(13), 8u * 13);
    EXPECT_EQ(bkt::elm_window_bytes<c32i>(14), 4u * (14 + 28));
    EXPECT_EQ(bkt::elm_window_bytes<c64i>(10), 8u * (10 + 20));
    EXPECT_EQ(bkt::mul_window_bytes<c32i>(0, 33, 20, 13), 4u * 33);
    EXPECT_EQ(bkt::mul_window_bytes<c32i>(0, 34, 20, 14), 4u * (14 + 28 + 34));
    EXPECT_EQ(bkt::mul_window_bytes<c64i>(0, 29, 20, 9), 8u * 29);
    EXPECT_EQ(bkt::mul_window_bytes<c64i>(0, 30, 20, 10), 8u * (10 + 20 + 30));
}

TYPED_TEST(Windows, ScratchBytesCoverEveryWindow) {
    for (upL_t m = 1; m <= 120; m++) {
        const upL_t enough = bkt::scratch_bytes<TypeParam>(m);
        for (upL_t k = 1; k <= m; k++) {
            EXPECT_GE(enough, bkt::mul_window_bytes<TypeParam>(0, m + k, m, k));
            EXPECT_GE(enough, bkt::mul_window_bytes<TypeParam>(0, m + k, k, m));
        }
        EXPECT_GE(enough, bkt::sqr_window_bytes<TypeParam>(0, 2 * m, m));
        EXPECT_GE(enough, bkt::elm_window_bytes<TypeParam>(m));
    }
}

}  // namespace
}  // namespace znp
