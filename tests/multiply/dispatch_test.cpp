#include "multiply/dispatch.hpp"

#include <gtest/gtest.h>

#include <string>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/guarded_alloc.hpp"
#include "multiply/multiply_test_support.hpp"
#include "multiply/selection.hpp"
#include "multiply/table_holder.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::all_kinds;
using testing::caught;
using testing::console_output;
using testing::exact_product;
using testing::exact_sqr_window;
using testing::exact_window;
using testing::GuardedWords;
using testing::GuardedWork;
using testing::Kind;
using testing::make_operand;

template <class word>
class Dispatch : public ::testing::Test {
  protected:
    static constexpr upL_t row = 3712 / WordTraits<word>::bits;  // longest product that needs no tables

    // Each with a work buffer of exactly the promised bytes for the key.
    static std::vector<word> square(const std::vector<word>& A) {
        GuardedWords<word> T(2 * A.size());
        GuardedWork work(work_bytes_for<word>(2 * A.size(), 1));
        sqr(work.bp(), T.data(), A);
        return T.words();
    }
    static std::vector<word> product(const std::vector<word>& A, const std::vector<word>& B) {
        GuardedWords<word> T(A.size() + B.size());
        GuardedWork work(work_bytes_for<word>(A.size() + B.size(), 1));
        mul(work.bp(), T.data(), A, B);
        return T.words();
    }
    static std::vector<word> square_window(const std::vector<word>& A, upL_t s, upL_t e) {
        GuardedWords<word> T(e - s);
        GuardedWork work(work_bytes_for<word>(2 * bkt::narrow_sqr(s, e, A.size()).n, 1));
        sqr_window(work.bp(), Window{T.data(), s, e}, A);
        return T.words();
    }
    static std::vector<word> product_window(const std::vector<word>& A, const std::vector<word>& B, upL_t s,
                                            upL_t e, bool use_mulp) {
        GuardedWords<word> T(e - s);
        const bkt::NarrowedMul w = bkt::narrow_mul(s, e, A.size(), B.size());
        GuardedWork work(work_bytes_for<word>(w.La + w.Lb, 1, use_mulp));
        const auto operation = use_mulp ? &mulp<word> : &mul_window<word>;
        operation(work.bp(), {T.data(), s, e}, A, B);
        return T.words();
    }
};

TYPED_TEST_SUITE(Dispatch, testing::Words);

TYPED_TEST(Dispatch, SquaresOfAllLengths) {
    auto rng = testing::make_rng(1);
    for (upL_t n = 1; 2 * n <= this->row; n++) {
        for (const Kind kind : all_kinds) {
            const auto A = make_operand<TypeParam>(kind, n, rng);
            ASSERT_EQ(this->square(A), exact_product(A, A)) << n;
        }
    }
}

TYPED_TEST(Dispatch, ProductsOfAllLengths) {
    auto rng = testing::make_rng(2);
    for (upL_t La = 1; La < this->row; La++) {
        for (upL_t Lb = 1; La + Lb <= this->row; Lb++) {
            const auto A = make_operand<TypeParam>(all_kinds[rng() % 9], La, rng);
            const auto B = make_operand<TypeParam>(all_kinds[rng() % 9], Lb, rng);
            ASSERT_EQ(this->product(A, B), exact_product(A, B)) << La << " x " << Lb;
        }
    }
}

TYPED_TEST(Dispatch, OneWordByOneWord) {
    const TypeParam ones = ~TypeParam{0};
    EXPECT_EQ(this->product({ones}, {ones}), (std::vector<TypeParam>{1, ones - 1}));
    EXPECT_EQ(this->square({ones}), (std::vector<TypeParam>{1, ones - 1}));
}

TYPED_TEST(Dispatch, ZeroLengthOperandsGiveZeros) {
    using Words = std::vector<TypeParam>;
    EXPECT_EQ(this->product({1, 2, 3}, {}), Words(3));
    EXPECT_EQ(this->product({}, {1, 2, 3}), Words(3));
    EXPECT_EQ(this->product({}, {}), Words());
    EXPECT_EQ(this->square({}), Words());
    EXPECT_EQ(this->product_window({1, 2, 3}, {}, 1, 3, false), Words(2));
    EXPECT_EQ(this->product_window({}, {1, 2, 3}, 0, 2, true), Words(2));
}

TYPED_TEST(Dispatch, WindowsOfShortProducts) {
    auto rng = testing::make_rng(3);
    for (int round = 0; round < 2000; round++) {
        const upL_t La = 1 + rng() % (this->row - 1);
        const upL_t Lb = 1 + rng() % (this->row - La);
        const upL_t s = rng() % (La + Lb);
        const upL_t e = s + rng() % (La + Lb - s + 1);
        const auto A = make_operand<TypeParam>(all_kinds[rng() % 9], La, rng);
        const auto B = make_operand<TypeParam>(all_kinds[rng() % 9], Lb, rng);
        const bool use_mulp = (rng() & 1) != 0;
        if (s == e) {
            ASSERT_TRUE(this->product_window(A, B, s, e, use_mulp).empty());
            continue;
        }
        ASSERT_EQ(this->product_window(A, B, s, e, use_mulp), exact_window(A, B, s, e))
            << La << " x " << Lb << " [" << s << ", " << e << ")";
    }
}

TYPED_TEST(Dispatch, WindowsOfShortSquares) {
    auto rng = testing::make_rng(4);
    for (int round = 0; round < 2000; round++) {
        const upL_t n = 1 + rng() % (this->row / 2);
        const upL_t s = rng() % (2 * n);
        const upL_t e = s + 1 + rng() % (2 * n - s);
        const auto A = make_operand<TypeParam>(all_kinds[rng() % 9], n, rng);
        ASSERT_EQ(this->square_window(A, s, e), exact_sqr_window(A, s, e))
            << n << " [" << s << ", " << e << ")";
    }
}

TYPED_TEST(Dispatch, TheWholeProductIsAWindowToo) {
    auto rng = testing::make_rng(5);
    const auto A = make_operand<TypeParam>(Kind::random, this->row / 2, rng);
    const auto B = make_operand<TypeParam>(Kind::random, this->row / 2, rng);
    EXPECT_EQ(this->product_window(A, B, 0, this->row, false), exact_product(A, B));
    EXPECT_EQ(this->square_window(A, 0, this->row), exact_product(A, A));
}

// Operands far beyond the row: the window alone decides, since only the words that can reach it count.
TYPED_TEST(Dispatch, ShortWindowsOfLongOperands) {
    auto rng = testing::make_rng(6);
    const upL_t n = 10 * this->row;
    const auto A = make_operand<TypeParam>(Kind::random, n, rng);
    const auto B = make_operand<TypeParam>(Kind::random, n / 2, rng);
    const upL_t half = this->row / 2;
    const upL_t top = n + n / 2;
    EXPECT_EQ(this->product_window(A, B, 0, half, false), exact_window(A, B, 0, half));
    EXPECT_EQ(this->product_window(A, B, top - half, top, true), exact_window(A, B, top - half, top));
    EXPECT_EQ(this->square_window(A, 0, half), exact_sqr_window(A, 0, half));
    EXPECT_EQ(this->square_window(A, 2 * n - half, 2 * n), exact_sqr_window(A, 2 * n - half, 2 * n));
}

TYPED_TEST(Dispatch, TheKeyOfAWindowIsTheNarrowedProduct) {
    const upL_t n = 10 * this->row;
    const upL_t half = this->row / 2;
    std::vector<TypeParam> A(n, 1), T(this->row);
    GuardedWork work(work_bytes_for<TypeParam>(this->row, 1));
    const auto bp = work.bp();
    EXPECT_NO_THROW(mul_window(bp, Window{T.data(), 0, half}, {A.data(), n}, {A.data(), n}));
    EXPECT_NO_THROW(sqr_window(bp, Window{T.data(), 0, half}, {A.data(), n}));
    // Without work space the transform of the next row complains, not the kernels of this one.
    BasicParameters no_work = bp;
    no_work.ML = 0;
    const auto next_row = [](auto action) {
        bool in_transform = false;
        console_output([&] {
            const auto e = caught<zn_exception>(action);
            in_transform = e.code == error_code::work_space_too_small &&
                           std::string(e.location).find("transform::") != std::string::npos;
        });
        return in_transform;
    };
    EXPECT_TRUE(next_row([&] {
        mul_window(no_work, Window{T.data(), 0, half + 1}, {A.data(), n}, {A.data(), n});
    }));
    EXPECT_TRUE(next_row([&] {
        mulp(no_work, Window{T.data(), 0, half + 1}, {A.data(), n}, {A.data(), n});
    }));
    EXPECT_TRUE(next_row([&] { sqr_window(no_work, Window{T.data(), 0, half + 1}, {A.data(), n}); }));
}

// ---- Products that need tables

// Tables for every product below the large transform, built once for all tests.
struct FFTTablesOfTheRow {
    TableHolder holder;
    GuardedArray<std::byte> memory;

    FFTTablesOfTheRow() {
        const multiplier<c64i>& fft = *find_multiplier<c64i>("FFT");
        const upL_t bytes = fft.table_bytes(vst_threshold_bits);
        memory = make_guarded_array<std::byte>(nullptr, bytes);
        EXPECT_EQ(fft.build_tables(holder, vst_threshold_bits, memory.get()), memory.get() + bytes);
    }
};

const TableHolder& tables() {
    static const FFTTablesOfTheRow built;
    return built.holder;
}

TYPED_TEST(Dispatch, ProductsAroundTheRowBoundariesAndBetween) {
    auto rng = testing::make_rng(7);
    const upL_t last = 655424 / WordTraits<TypeParam>::bits;
    std::vector<upL_t> lengths{this->row - 1, this->row, this->row + 1, this->row + 2, last - 1, last};
    for (int i = 0; i < 40; i++) lengths.push_back(this->row + rng() % (this->row << (i % 7)));
    for (const upL_t L : lengths) {
        for (const Kind kind : {Kind::random, Kind::all_ones}) {
            const upL_t La = kind == Kind::all_ones ? L / 2 : 1 + rng() % (L - 1);
            const auto A = make_operand<TypeParam>(kind, La, rng);
            const auto B = make_operand<TypeParam>(kind, L - La, rng);
            GuardedWords<TypeParam> T(L);
            GuardedWork work(work_bytes_for<TypeParam>(L, 1));
            BasicParameters bp = work.bp();
            bp.holder = &tables();
            mul(bp, T.data(), {A.data(), La}, {B.data(), L - La});
            ASSERT_EQ(T.words(), exact_product(A, B)) << La << " of " << L;
        }
        const auto A = make_operand<TypeParam>(Kind::random, L / 2, rng);
        GuardedWords<TypeParam> T(2 * A.size());
        GuardedWork work(work_bytes_for<TypeParam>(2 * A.size(), 1));
        BasicParameters bp = work.bp();
        bp.holder = &tables();
        sqr(bp, T.data(), A);
        ASSERT_EQ(T.words(), exact_product(A, A)) << A.size();
    }
}

// The work buffer is that of the narrowed product, on either side of the boundary.
TYPED_TEST(Dispatch, WindowsAroundTheRowBoundary) {
    auto rng = testing::make_rng(8);
    const upL_t half = this->row / 2;
    for (int round = 0; round < 300; round++) {
        const upL_t La = 1 + rng() % (2 * this->row);
        const upL_t Lb = 1 + rng() % (2 * this->row);
        const upL_t s = rng() % (La + Lb);
        const upL_t e = std::min(La + Lb, round % 2 == 0 ? s + 1 + rng() % this->row : half - 1 + s % half);
        if (s >= e) continue;
        const auto A = make_operand<TypeParam>(all_kinds[rng() % 9], La, rng);
        const auto B = make_operand<TypeParam>(all_kinds[rng() % 9], Lb, rng);
        {
            const bkt::NarrowedMul w = bkt::narrow_mul(s, e, La, Lb);
            GuardedWords<TypeParam> T(e - s);
            GuardedWork work(work_bytes_for<TypeParam>(w.La + w.Lb, 1));
            BasicParameters bp = work.bp();
            bp.holder = &tables();
            mul_window(bp, Window{T.data(), s, e}, {A.data(), La}, {B.data(), Lb});
            ASSERT_EQ(T.words(), exact_window(A, B, s, e))
                << La << " x " << Lb << " [" << s << ", " << e << ")";
        }
        if (e > 2 * La) continue;
        GuardedWords<TypeParam> T(e - s);
        GuardedWork work(work_bytes_for<TypeParam>(2 * bkt::narrow_sqr(s, e, La).n, 1));
        BasicParameters bp = work.bp();
        bp.holder = &tables();
        sqr_window(bp, Window{T.data(), s, e}, {A.data(), La});
        ASSERT_EQ(T.words(), exact_sqr_window(A, s, e)) << La << " [" << s << ", " << e << ")";
    }
}

TYPED_TEST(Dispatch, ZeroLengthOperandsOfLongProductsGiveZeros) {
    const std::vector<TypeParam> A(2 * this->row, 3);
    GuardedWords<TypeParam> T(A.size());
    GuardedWork work(work_bytes_for<TypeParam>(A.size(), 1));
    BasicParameters bp = work.bp();
    bp.holder = &tables();
    mul(bp, T.data(), A, {A.data(), 0});
    EXPECT_EQ(T.words(), std::vector<TypeParam>(A.size()));
}

// Two operands kept transformed, the second of them for two products.
TYPED_TEST(Dispatch, TransformedOperandsServeSeveralProducts) {
    auto rng = testing::make_rng(9);
    const upL_t n = 3 * this->row;
    const auto A = make_operand<TypeParam>(Kind::random, n, rng);
    const auto B = make_operand<TypeParam>(Kind::random, n, rng);
    const auto C = make_operand<TypeParam>(Kind::random, n, rng);
    TransformSlot slot, other;
    BasicParameters bp;
    bp.holder = &tables();
    const transform& t = make_transform<TypeParam>(bp, slot, 2 * n);
    EXPECT_TRUE(t.equals(make_transform<TypeParam>(bp, other, 2 * n)));
    GuardedWork image1(t.transform_bytes), image2(t.transform_bytes), scratch(t.work_bytes);
    Image* const T1 = image_at(image1.bp().M);
    Image* const T2 = image_at(image2.bp().M);
    TransformScratch* const S = scratch_at(scratch.bp().M);
    t.forward(T2, C, S);
    for (const auto* operand : {&A, &B}) {
        GuardedWords<TypeParam> T(2 * n);
        t.forward(T1, *operand, S);
        t.inverse_fmul({T.data(), 0, 2 * n}, T1, T2, S);
        EXPECT_EQ(T.words(), exact_product(*operand, C));
    }
}

// The keys alone: the operands of the longest products are never read.
TYPED_TEST(Dispatch, KeysChooseTheRow) {
    constexpr unsigned bits = WordTraits<TypeParam>::bits;
    const upL_t last_FFT = 655424 / bits;
    const upL_t last_VST = 0x2400000000000 / bits;
    const BasicParameters bp;
    TypeParam* const none = nullptr;
    TransformSlot slot;
    EXPECT_STREQ(make_transform<TypeParam>(bp, slot, this->row + 1).name(), "FFT");
    EXPECT_STREQ(make_transform<TypeParam>(bp, slot, last_FFT).name(), "FFT");
    EXPECT_STREQ(make_transform<TypeParam>(bp, slot, last_FFT + 1).name(), "VST");
    EXPECT_STREQ(make_transform<TypeParam>(bp, slot, last_VST).name(), "VST");

    const auto code = [](auto action) {
        s32_t found = 0;
        console_output([&] { found = caught<zn_exception>(action).code; });
        return found;
    };
    EXPECT_EQ(code([&] { make_transform<TypeParam>(bp, slot, last_VST + 1); }), -4);
    EXPECT_EQ(code([&] { mul(bp, none, {none, 1}, {none, last_VST}); }), -4);
    EXPECT_EQ(code([&] { sqr(bp, none, {none, last_VST / 2 + 1}); }), -4);
    EXPECT_EQ(code([&] { sqr_window(bp, Window{none, 0, last_VST / 2 + 1}, {none, last_VST}); }), -4);
    EXPECT_EQ(code([&] { mul_window(bp, Window{none, 0, 1 + last_VST}, {none, 1}, {none, last_VST}); }), -4);
    EXPECT_EQ(code([&] { mulp(bp, Window{none, 0, 1 + last_VST}, {none, 1}, {none, last_VST}); }), -4);
    EXPECT_EQ(code([&] { (void)work_bytes_for<TypeParam>(last_VST + 1, 1); }), -4);
}

TYPED_TEST(Dispatch, MakeTransformReplacesTheOneInTheSlot) {
    TransformSlot slot;
    const BasicParameters bp;
    const upL_t per_64 = 64 / WordTraits<TypeParam>::bits;
    EXPECT_EQ(make_transform<TypeParam>(bp, slot, 10).max_bits, 64 * (10 / per_64));
    transform& t = make_transform<TypeParam>(bp, slot, this->row);
    EXPECT_EQ(&t, &*slot);
    EXPECT_STREQ(t.name(), "BKT");
    EXPECT_EQ(t.max_bits, 3712u);
}

TYPED_TEST(Dispatch, WorkBytesCoverEveryShorterProduct) {
    upL_t before = 0;
    for (upL_t L = 0; L <= this->row; L++) {
        const upL_t bytes = work_bytes_for<TypeParam>(L, 1);
        EXPECT_EQ(bytes, find_multiplier<TypeParam>("BKT")->work_bytes(L, 1));
        EXPECT_EQ(bytes, work_bytes_for<TypeParam>(L, 8, true));
        EXPECT_GE(bytes, before) << L;
        before = bytes;
    }
}

// Just over the boundary the query asks the shorter rows at their own longest product, and then the row of
// the length.
TYPED_TEST(Dispatch, WorkBytesOverARowBoundaryCoverTheRowsBelow) {
    const upL_t bytes = work_bytes_for<TypeParam>(this->row + 1, 1);
    EXPECT_GE(bytes, work_bytes_for<TypeParam>(this->row, 1));
    EXPECT_GE(bytes, find_multiplier<TypeParam>("FFT")->work_bytes(this->row + 1, 1));
    const upL_t last_FFT = 655424 / WordTraits<TypeParam>::bits;
    const upL_t beyond = work_bytes_for<TypeParam>(last_FFT + 1, 1);
    EXPECT_GE(beyond, work_bytes_for<TypeParam>(last_FFT, 1));
    EXPECT_GE(beyond, find_multiplier<TypeParam>("VST")->work_bytes(last_FFT + 1, 1));
}

}  // namespace
}  // namespace znp
