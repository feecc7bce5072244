#include "multiply/bkt/bkt_transform.hpp"

#include <gtest/gtest.h>

#include <string>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/kernels/guard_residue.hpp"
#include "multiply/multiply_test_support.hpp"
#include "multiply/selection.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::all_kinds;
using testing::caught;
using testing::console_output;
using testing::dying;
using testing::exact_product;
using testing::exact_sqr_window;
using testing::exact_window;
using ::testing::ExitedWithCode;
using testing::GuardedWords;
using testing::GuardedWork;
using testing::Kind;
using testing::make_operand;
using Words = std::vector<c64i>;

// Two images and the scratch of a transform, each of exactly its size.
struct Areas {
    explicit Areas(const transform& t) : T1(t.transform_bytes), T2(t.transform_bytes), S(t.work_bytes) {}
    Image* image1() { return image_at(T1.bp().M); }
    Image* image2() { return image_at(T2.bp().M); }
    TransformScratch* scratch() { return scratch_at(S.bp().M); }
    GuardedWork T1, T2, S;
};

Words steps_mul(const transform& t, const Words& A, const Words& B, upL_t s, upL_t e) {
    Areas areas(t);
    GuardedWords<c64i> R(e - s);
    t.forward(areas.image1(), A, areas.scratch());
    t.forward(areas.image2(), B, areas.scratch());
    t.inverse_fmul({R.data(), s, e}, areas.image1(), areas.image2(), areas.scratch());
    return R.words();
}

Words steps_sqr(const transform& t, const Words& A, upL_t s, upL_t e) {
    Areas areas(t);
    GuardedWords<c64i> R(e - s);
    t.forward(areas.image1(), A, areas.scratch());
    t.inverse_fsqr({R.data(), s, e}, areas.image1(), areas.scratch());
    return R.words();
}

TEST(BKTTransform, Fields) {
    const BKTTransform t(58);
    EXPECT_STREQ(t.name(), "BKT");
    EXPECT_EQ(t.max_bits, 3712u);
    EXPECT_EQ(t.holder, nullptr);
    EXPECT_EQ(t.transform_bytes, 480u);  // 59 words, rounded up to 32 bytes
    EXPECT_EQ(BKTTransform(59).transform_bytes, 480u);
    EXPECT_EQ(BKTTransform(60).transform_bytes, 512u);
    EXPECT_EQ(t.product_bytes(), 2 * t.transform_bytes + t.work_bytes);
}

TEST(BKTTransform, ForwardCopiesLengthAndWords) {
    const BKTTransform t(8);
    Areas areas(t);
    const Words A{7, 0, 9};
    t.forward(areas.image1(), A, areas.scratch());
    const auto* image = reinterpret_cast<const u64_t*>(areas.image1());
    EXPECT_EQ((Words{image, image + 4}), (Words{3, 7, 0, 9}));
}

TEST(BKTTransform, WholeProductsAndSquares) {
    auto rng = testing::make_rng(11);
    for (upL_t L = 2; L <= 58; L++) {
        const BKTTransform t(L);
        for (upL_t La = 1; La < L; La++) {
            const Words A = make_operand<c64i>(all_kinds[rng() % 9], La, rng);
            const Words B = make_operand<c64i>(all_kinds[rng() % 9], L - La, rng);
            ASSERT_EQ(steps_mul(t, A, B, 0, L), exact_product(A, B)) << La << " of " << L;
        }
        const Words A = make_operand<c64i>(Kind::random, L / 2, rng);
        ASSERT_EQ(steps_sqr(t, A, 0, 2 * (L / 2)), exact_product(A, A)) << L;
    }
}

TEST(BKTTransform, Windows) {
    auto rng = testing::make_rng(12);
    const BKTTransform t(58);
    for (int round = 0; round < 2000; round++) {
        const upL_t La = 1 + rng() % 57;
        const upL_t Lb = 1 + rng() % (58 - La);
        const Words A = make_operand<c64i>(all_kinds[rng() % 9], La, rng);
        const Words B = make_operand<c64i>(all_kinds[rng() % 9], Lb, rng);
        upL_t s = rng() % (La + Lb);
        upL_t e = s + 1 + rng() % (La + Lb - s);
        ASSERT_EQ(steps_mul(t, A, B, s, e), exact_window(A, B, s, e));
        const upL_t n = std::min<upL_t>(La, 29);
        const Words C(A.begin(), A.begin() + static_cast<std::ptrdiff_t>(n));
        s = rng() % (2 * n);
        e = s + 1 + rng() % (2 * n - s);
        ASSERT_EQ(steps_sqr(t, C, s, e), exact_sqr_window(C, s, e));
    }
}

// A product longer than the transform, as the Newton iterations ask for it: each operand fits, and so does
// the window.
TEST(BKTTransform, WindowsOfProductsLongerThanTheTransform) {
    auto rng = testing::make_rng(13);
    for (int round = 0; round < 500; round++) {
        const upL_t L = 2 + rng() % 57;
        const BKTTransform t(L);
        const Words A = make_operand<c64i>(Kind::random, L - rng() % (L / 2), rng);
        const Words B = make_operand<c64i>(Kind::random, L - rng() % (L / 2), rng);
        const upL_t s = rng() % L;
        const upL_t e = s + 1 + rng() % (L - s);
        ASSERT_EQ(steps_mul(t, A, B, s, e), exact_window(A, B, s, e));
        ASSERT_EQ(steps_sqr(t, A, s, e), exact_sqr_window(A, s, e));
    }
}

TEST(BKTTransform, WordsAboveTheProductAreZero) {
    const BKTTransform t(20);
    const Words A{3}, B{5, 7};
    Words expected(20);
    expected[0] = 15, expected[1] = 21;
    EXPECT_EQ(steps_mul(t, A, B, 0, 20), expected);
    EXPECT_EQ(steps_mul(t, A, B, 1, 5), (Words{21, 0, 0, 0}));
    EXPECT_EQ(steps_mul(t, A, B, 3, 7), Words(4));
    EXPECT_EQ(steps_mul(t, A, B, 9, 12), Words(3));
    EXPECT_EQ(steps_sqr(t, A, 0, 6), (Words{9, 0, 0, 0, 0, 0}));
    EXPECT_EQ(steps_sqr(t, A, 4, 6), Words(2));
}

// The residue is that of the whole product, wherever the window lies.
TEST(BKTTransform, CheckedWindowsBelowAcrossAndAboveTheProduct) {
    const BKTTransform t(20);
    Areas areas(t);
    const Words A{3, 4}, B{5, 7}, none;
    const Words product = exact_product(A, B);
    for (const Words* second : {&B, &none}) {
        const u64_t whole = second->empty() ? 0 : guard::hash_words(product.data(), product.size());
        for (const auto& [s, e] : {std::pair<upL_t, upL_t>{0, 4}, {1, 3}, {2, 9}, {4, 6}, {11, 20}, {7, 7}}) {
            GuardedWords<c64i> R(e - s);
            t.forward(areas.image1(), A, areas.scratch());
            t.forward(areas.image2(), *second, areas.scratch());
            const CheckedResult checked =
                t.checked_fmul({R.data(), s, e}, areas.image1(), areas.image2(), areas.scratch());
            EXPECT_EQ(checked.whole, whole);
            EXPECT_EQ(checked.window, guard::hash_words(R.data(), e - s));
            for (upL_t i = s; i < e; i++)
                EXPECT_EQ(R.words()[i - s], i < 4 && !second->empty() ? product[i] : 0) << s << " " << e;
        }
    }
}

TEST(BKTTransform, ZeroLengthOperandGivesZeros) {
    const BKTTransform t(20);
    const Words A{1, 2, 3}, none;
    EXPECT_EQ(steps_mul(t, A, none, 0, 3), Words(3));
    EXPECT_EQ(steps_mul(t, none, A, 0, 3), Words(3));
    EXPECT_EQ(steps_mul(t, none, none, 0, 20), Words(20));
    EXPECT_EQ(steps_mul(t, none, A, 1, 2), Words(1));
    EXPECT_EQ(steps_sqr(t, none, 0, 4), Words(4));
    EXPECT_EQ(steps_mul(t, A, none, 2, 2), Words());
}

// The second image may serve another product.
TEST(BKTTransform, InverseLeavesTheSecondImage) {
    auto rng = testing::make_rng(14);
    const BKTTransform t(40);
    Areas areas(t);
    const Words A = make_operand<c64i>(Kind::random, 20, rng);
    const Words B = make_operand<c64i>(Kind::random, 20, rng);
    const Words C = make_operand<c64i>(Kind::random, 20, rng);
    Words R(40);
    t.forward(areas.image2(), {C.data(), 20}, areas.scratch());
    for (const Words& operand : {A, B}) {
        t.forward(areas.image1(), {operand.data(), 20}, areas.scratch());
        t.inverse_fmul({R.data(), 0, 40}, areas.image1(), areas.image2(), areas.scratch());
        EXPECT_EQ(R, exact_product(operand, C));
    }
}

TEST(BKTTransform, EqualsMeansSameLength) {
    const BKTTransform a(20), b(20), c(21);
    EXPECT_TRUE(a.equals(a));
    EXPECT_TRUE(a.equals(b));
    EXPECT_FALSE(a.equals(c));
}

TEST(BKTTransform, ThirtyTwoBitStepsThrow) {
    const BKTTransform t(20);
    Areas areas(t);
    std::vector<c32i> A(4, 1), R(8, 5);
    const auto refuses = [](auto action) {
        std::string output = console_output([&] {
            const auto e = caught<zn_exception>(action);
            EXPECT_STREQ(e.message, "32-bit transform not supported in x64.");
        });
        EXPECT_NE(output.find("32-bit transform not supported in x64."), std::string::npos);
    };
    refuses([&] { t.forward(areas.image1(), {A.data(), 4}, areas.scratch()); });
    refuses([&] { t.inverse_fsqr({R.data(), 0, 8}, areas.image1(), areas.scratch()); });
    refuses([&] { t.inverse_fmul({R.data(), 0, 8}, areas.image1(), areas.image2(), areas.scratch()); });
    GuardedWork work(t.product_bytes());
    refuses([&] { t.mul(work.bp(), R.data(), {A.data(), 4}, {A.data(), 4}); });
    EXPECT_EQ(R, std::vector<c32i>(8, 5));
}

TEST(BKTTransform, SharedProductsWithAnExactWorkBuffer) {
    auto rng = testing::make_rng(15);
    for (upL_t L = 2; L <= 58; L++) {
        const BKTTransform t(L);
        const Words A = make_operand<c64i>(Kind::random, L - 1 - rng() % (L - 1), rng);
        const Words B = make_operand<c64i>(Kind::random, L - A.size(), rng);
        {
            GuardedWork work(t.product_bytes());
            GuardedWords<c64i> T(L);
            t.mul(work.bp(), T.data(), A, B);
            ASSERT_EQ(T.words(), exact_product(A, B));
        }
        const Words C = make_operand<c64i>(Kind::random, L / 2, rng);
        GuardedWork work(t.product_bytes());
        GuardedWords<c64i> T(2 * C.size());
        t.sqr(work.bp(), T.data(), C);
        ASSERT_EQ(T.words(), exact_product(C, C));
    }
}

TEST(BKTTransform, SharedWindowsWithAnExactWorkBuffer) {
    auto rng = testing::make_rng(16);
    const BKTTransform t(58);
    const Words A = make_operand<c64i>(Kind::random, 29, rng);
    const Words B = make_operand<c64i>(Kind::random, 20, rng);
    for (upL_t s = 0; s < 49; s += 3) {
        GuardedWork work(t.product_bytes());
        GuardedWords<c64i> T(49 - s);
        t.mul_window(work.bp(), Window{T.data(), s, 49}, {A.data(), 29}, {B.data(), 20});
        EXPECT_EQ(T.words(), exact_window(A, B, s, 49));
        GuardedWords<c64i> Q(58 - s);
        t.sqr_window(work.bp(), Window{Q.data(), s, 58}, {A.data(), 29});
        EXPECT_EQ(Q.words(), exact_sqr_window(A, s, 58));
    }
}

TEST(BKTTransform, SharedProductsOfZeroLength) {
    const BKTTransform t(20);
    GuardedWork work(t.product_bytes());
    const Words A{1, 2, 3};
    Words T(3, 9);
    t.mul(work.bp(), T.data(), {A.data(), 3}, {A.data(), 0});
    EXPECT_EQ(T, Words(3));
    t.sqr(work.bp(), T.data(), {A.data(), 0});
    EXPECT_EQ(T, Words(3));
}

TEST(BKTTransform, WorkBufferOneByteTooSmallThrowsBeforeAnythingIsWritten) {
    const BKTTransform t(20);
    GuardedWork work(t.product_bytes() - 1);
    const Words A(10, 3);
    Words T(20, 9);
    console_output([&] {
        const auto code = [](auto action) { return caught<zn_exception>(action).code; };
        EXPECT_EQ(code([&] { t.mul(work.bp(), T.data(), {A.data(), 10}, {A.data(), 10}); }), 0x10000000);
        EXPECT_EQ(code([&] { t.sqr(work.bp(), T.data(), {A.data(), 10}); }), 0x10000000);
        EXPECT_EQ(code([&] {
                      t.mul_window(work.bp(), Window{T.data(), 1, 4}, {A.data(), 10}, {A.data(), 10});
                  }),
                  0x10000000);
        EXPECT_EQ(code([&] { t.sqr_window(work.bp(), Window{T.data(), 1, 4}, {A.data(), 10}); }), 0x10000000);
    });
    EXPECT_TRUE(work.untouched());
    EXPECT_EQ(T, Words(20, 9));
}

// Ends the program with the report: the algorithm, then the two lengths in bits.
TEST(BKTTransformDeathTest, LongerThanTheTransform) {
    const BKTTransform t(20);
    Areas areas(t);
    GuardedWork work(t.product_bytes());
    Words A(21, 3), T(42);
    const std::string report = "Convolution length is too small.*BKT.*1344.*1280";
    EXPECT_EXIT(dying([&] {
                    t.forward(areas.image1(), {A.data(), 21}, areas.scratch());
                }),
                ExitedWithCode(1), report);
    EXPECT_EXIT(dying([&] {
                    t.mul(work.bp(), T.data(), {A.data(), 11}, {A.data(), 10});
                }),
                ExitedWithCode(1), report);
    EXPECT_EXIT(dying([&] {
                    t.sqr(work.bp(), T.data(), {A.data(), 11});
                }),
                ExitedWithCode(1), "Convolution length is too small.*BKT.*1408.*1280");
    t.forward(areas.image1(), {A.data(), 20}, areas.scratch());
    EXPECT_EXIT(dying([&] {
                    t.inverse_fsqr({T.data(), 0, 21}, areas.image1(), areas.scratch());
                }),
                ExitedWithCode(1), report);
}

}  // namespace
}  // namespace znp
