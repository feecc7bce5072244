#include "multiply/multiplier.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/bkt/bkt_multiplier.hpp"
#include "multiply/bkt/karatsuba.hpp"
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

// ---- The shared products of multiplier and transform, by an algorithm that has 32-bit steps only

// Multiplies by the textbook, in the form of a transform: the image is the length and the words.
class PlainTransform final : public transform {
  public:
    using transform::forward;
    using transform::inverse_fmul;
    using transform::inverse_fsqr;

    PlainTransform(const TableHolder* holder_, upL_t L) : transform(holder_, 32 * L, 32 * (L + 1), 32) {
        live++;
    }
    ~PlainTransform() override { live--; }
    const char* name() const override { return "Plain"; }
    void forward(Image* image, WordSpan<c32i> A, TransformScratch*) const override {
        auto* words = reinterpret_cast<c32i*>(image);
        words[0] = static_cast<c32i>(A.size());
        for (upL_t i = 0; i < A.size(); i++) std::memcpy(words + 1 + i, A.data() + i, sizeof(c32i));
    }
    void inverse_fsqr(Window<c32i> R, Image* T, TransformScratch* scratch) const override {
        inverse_fmul(R, T, T, scratch);
    }
    void inverse_fmul(Window<c32i> R, Image* T1, const Image* T2, TransformScratch*) const override {
        const auto product = exact_product(words(T1), words(T2));
        for (upL_t i = R.s; i < R.e; i++) {
            const c32i w = i < product.size() ? product[i] : 0;
            std::memcpy(R.T + i - R.s, &w, sizeof w);
        }
    }
    bool equals(const transform& other) const override { return other.max_bits == max_bits; }

    static int live;

  private:
    static std::vector<c32i> words(const Image* image) {
        const auto* words = reinterpret_cast<const c32i*>(image);
        return {words + 1, words + 1 + words[0]};
    }
};
int PlainTransform::live = 0;

template <class word>
class PlainMultiplier final : public multiplier<word> {
  public:
    constexpr PlainMultiplier() : multiplier<word>(1000000, "Plain", "By the textbook") {}
    upL_t table_bytes(u64_t) const override { return 0; }
    std::byte* build_tables(TableHolder&, u64_t, std::byte* memory) const override { return memory; }
    upL_t work_bytes(upL_t L, u64_t) const override { return transform_for(nullptr, L).product_bytes(); }
    transform* make_transform(const BasicParameters& bp, void* place, upL_t L) const override {
        return place == nullptr ? nullptr : new (place) PlainTransform(transform_for(bp.holder, L));
    }

  private:
    static PlainTransform transform_for(const TableHolder* holder, upL_t L) {
        return PlainTransform(holder, L * WordTraits<word>::bits / 32);
    }
};

template <class word>
std::vector<word> plain_window(const std::vector<word>& A, const std::vector<word>& B, upL_t s, upL_t e) {
    const auto product = exact_product(A, B);
    const auto window = std::span<const word>(product).subspan(s, e - s);
    return {window.begin(), window.end()};
}

template <class word>
class SharedProducts : public ::testing::Test {};
TYPED_TEST_SUITE(SharedProducts, testing::Words);

TYPED_TEST(SharedProducts, GoThroughATransformOfTheProductsLength) {
    auto rng = testing::make_rng(21);
    const PlainMultiplier<TypeParam> plain;
    for (int round = 0; round < 200; round++) {
        const upL_t La = 1 + rng() % 40;
        const upL_t Lb = 1 + rng() % 40;
        const upL_t L = La + Lb;
        const auto A = make_operand<TypeParam>(Kind::random, La, rng);
        const auto B = make_operand<TypeParam>(Kind::random, Lb, rng);
        const upL_t s = rng() % L;
        const upL_t e = s + rng() % (L - s + 1);
        GuardedWork work(plain.work_bytes(L, 1));
        {
            GuardedWords<TypeParam> T(L);
            plain.mul(work.bp(), T.data(), {A.data(), La}, {B.data(), Lb});
            ASSERT_EQ(T.words(), exact_product(A, B));
        }
        {
            GuardedWords<TypeParam> T(e - s);
            plain.mul_window(work.bp(), Window{T.data(), s, e}, {A.data(), La}, {B.data(), Lb});
            ASSERT_EQ(T.words(), plain_window(A, B, s, e));
        }
        {
            GuardedWords<TypeParam> T(e - s);
            plain.mulp(work.bp(), Window{T.data(), s, e}, {A.data(), La}, {B.data(), Lb});
            ASSERT_EQ(T.words(), plain_window(A, B, s, e));
        }
        GuardedWork square_work(plain.work_bytes(2 * La, 1));
        GuardedWords<TypeParam> T(2 * La);
        plain.sqr(square_work.bp(), T.data(), {A.data(), La});
        ASSERT_EQ(T.words(), exact_product(A, A));
        GuardedWords<TypeParam> W(La);
        plain.sqr_window(square_work.bp(), Window{W.data(), La / 2, La / 2 + La}, {A.data(), La});
        ASSERT_EQ(W.words(), plain_window(A, A, La / 2, La / 2 + La));
    }
    EXPECT_EQ(PlainTransform::live, 0);
}

TYPED_TEST(SharedProducts, ATransformIsDestroyedWhenAProductThrows) {
    const PlainMultiplier<TypeParam> plain;
    GuardedWork work(plain.work_bytes(8, 1) - 1);
    std::vector<TypeParam> A(4, 1), T(8);
    console_output([&] {
        EXPECT_EQ(caught<zn_exception>([&] {
                      plain.sqr(work.bp(), T.data(), {A.data(), 4});
                  }).code,
                  error_code::work_space_too_small);
    });
    EXPECT_TRUE(work.untouched());
    EXPECT_EQ(PlainTransform::live, 0);
}

TYPED_TEST(SharedProducts, MulpBytesAreWorkBytesByDefault) {
    const PlainMultiplier<TypeParam> plain;
    EXPECT_EQ(plain.mulp_bytes(100, 3), plain.work_bytes(100, 3));
}

TEST(TransformSlot, DestroysWhatItHolds) {
    const PlainMultiplier<c64i> plain;
    TableHolder holder;
    BasicParameters bp;
    bp.holder = &holder;
    {
        TransformSlot slot;
        slot.adopt(plain.make_transform(bp, slot.place(), 10));
        EXPECT_EQ(PlainTransform::live, 1);
        EXPECT_EQ(slot->holder, &holder);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(slot.place()) % 64, 0u);
        slot.reset();
        EXPECT_EQ(PlainTransform::live, 0);
        slot.adopt(plain.make_transform(bp, slot.place(), 20));
        EXPECT_EQ((*slot).max_bits, 1280u);
    }
    EXPECT_EQ(PlainTransform::live, 0);
}

TEST(TableHolder, StartsEmpty) {
    const TableHolder holder;
    EXPECT_EQ(holder.limit_bits, 0u);
    EXPECT_EQ(holder.reserved, 0x100000u);
    EXPECT_EQ(holder.fft, nullptr);
    EXPECT_EQ(holder.vst, nullptr);
}

// ---- BKT

template <class word>
class BKT : public ::testing::Test {
  protected:
    const multiplier<word>& bkt = *find_multiplier<word>("BKT");
};
TYPED_TEST_SUITE(BKT, testing::Words);

TYPED_TEST(BKT, NeedsNoTables) {
    TableHolder holder;
    std::byte memory{};
    EXPECT_EQ(this->bkt.table_bytes(1000), 0u);
    EXPECT_EQ(this->bkt.build_tables(holder, 1000, &memory), &memory);
    EXPECT_EQ(holder.fft, nullptr);
}

TYPED_TEST(BKT, WorkBytesDoNotDependOnThreads) {
    EXPECT_EQ(this->bkt.work_bytes(58, 1), this->bkt.work_bytes(58, 64));
    EXPECT_EQ(this->bkt.mulp_bytes(58, 1), this->bkt.work_bytes(58, 1));
}

// Up to the object's own limit, far beyond its row of the tables: the stress tester goes there.
TYPED_TEST(BKT, ProductsUpToItsLimitWithAnExactWorkBuffer) {
    auto rng = testing::make_rng(22);
    const upL_t limit = this->bkt.max_bits / WordTraits<TypeParam>::bits;
    EXPECT_EQ(limit, 464u);
    for (int round = 0; round < 300; round++) {
        const upL_t L = round == 0 ? limit : 2 + rng() % (limit - 1);
        const upL_t La = 1 + rng() % (L - 1);
        const auto A = make_operand<TypeParam>(all_kinds[rng() % 9], La, rng);
        const auto B = make_operand<TypeParam>(all_kinds[rng() % 9], L - La, rng);
        GuardedWork work(this->bkt.work_bytes(L, 1));
        {
            GuardedWords<TypeParam> T(L);
            this->bkt.mul(work.bp(), T.data(), {A.data(), La}, {B.data(), L - La});
            ASSERT_EQ(T.words(), exact_product(A, B)) << La << " of " << L;
        }
        const upL_t s = rng() % L;
        const upL_t e = s + 1 + rng() % (L - s);
        {
            GuardedWords<TypeParam> T(e - s);
            this->bkt.mul_window(work.bp(), Window{T.data(), s, e}, {A.data(), La}, {B.data(), L - La});
            ASSERT_EQ(T.words(), exact_window(A, B, s, e));
        }
        const upL_t n = L / 2;
        const auto C = make_operand<TypeParam>(all_kinds[rng() % 9], n, rng);
        GuardedWork square_work(this->bkt.work_bytes(2 * n, 1));
        {
            GuardedWords<TypeParam> T(2 * n);
            this->bkt.sqr(square_work.bp(), T.data(), {C.data(), n});
            ASSERT_EQ(T.words(), exact_product(C, C));
        }
        const upL_t end = 2 * n - rng() % n;
        GuardedWords<TypeParam> T(end - end / 2);
        this->bkt.sqr_window(square_work.bp(), Window{T.data(), end / 2, end}, {C.data(), n});
        ASSERT_EQ(T.words(), exact_sqr_window(C, end / 2, end));
    }
}

TYPED_TEST(BKT, ZeroLengthOperandsAndEmptyWindows) {
    GuardedWork work(this->bkt.work_bytes(8, 1));
    const std::vector<TypeParam> A{1, 2, 3};
    GuardedWords<TypeParam> T(3);
    this->bkt.mul(work.bp(), T.data(), {A.data(), 3}, {A.data(), 0});
    EXPECT_EQ(T.words(), std::vector<TypeParam>(3));
    T.data()[0] = 7;
    this->bkt.mul_window(work.bp(), Window{T.data(), 1, 1}, {A.data(), 3}, {A.data(), 3});
    this->bkt.sqr_window(work.bp(), Window{T.data(), 2, 2}, {A.data(), 3});
    this->bkt.sqr(work.bp(), T.data(), {A.data(), 0});
    EXPECT_EQ(T.words(), (std::vector<TypeParam>{7, 0, 0}));
    this->bkt.mul_window(work.bp(), Window{T.data(), 0, 2}, {A.data(), 0}, {A.data(), 3});
    EXPECT_EQ(T.words(), std::vector<TypeParam>(3));
}

TYPED_TEST(BKT, WorkBufferBelowTheKernelsScratchThrowsBeforeAnythingIsWritten) {
    const upL_t n = 100;
    const std::vector<TypeParam> A(n, 3);
    std::vector<TypeParam> T(2 * n, 9);
    console_output([&] {
        const auto refuses = [&](upL_t bytes, auto action) {
            GuardedWork work(bytes - 1);
            const auto e = caught<zn_exception>([&] { action(work.bp()); });
            EXPECT_EQ(e.code, error_code::work_space_too_small);
            EXPECT_TRUE(work.untouched());
        };
        refuses(bkt::mul_bytes<TypeParam>(n, n), [&](const BasicParameters& bp) {
            this->bkt.mul(bp, T.data(), {A.data(), n}, {A.data(), n});
        });
        refuses(bkt::sqr_bytes<TypeParam>(n), [&](const BasicParameters& bp) {
            this->bkt.sqr(bp, T.data(), {A.data(), n});
        });
        refuses(bkt::mul_window_bytes<TypeParam>(5, n, n, n), [&](const BasicParameters& bp) {
            this->bkt.mul_window(bp, Window{T.data(), 5, n}, {A.data(), n}, {A.data(), n});
        });
        refuses(bkt::sqr_window_bytes<TypeParam>(5, n, n), [&](const BasicParameters& bp) {
            this->bkt.sqr_window(bp, Window{T.data(), 5, n}, {A.data(), n});
        });
    });
    EXPECT_EQ(T, std::vector<TypeParam>(2 * n, 9));
}

TYPED_TEST(BKT, ANullPlaceMakesNoTransform) {
    EXPECT_EQ(this->bkt.make_transform(BasicParameters{}, nullptr, 20), nullptr);
}

TYPED_TEST(BKT, MakesTransformsOf64BitWords) {
    TransformSlot slot;
    slot.adopt(this->bkt.make_transform(BasicParameters{}, slot.place(), 21));
    EXPECT_STREQ(slot->name(), "BKT");
    const u64_t asked = 21 * WordTraits<TypeParam>::bits;
    EXPECT_EQ(slot->max_bits, (asked + 63) / 64 * 64);
    EXPECT_LE(slot->product_bytes(), this->bkt.work_bytes(21, 1));
}

// The road through a transform, which the objects leave aside, gives the same words within the same work
// buffer.
TEST(BKT64, TheRoadThroughATransformAgrees) {
    auto rng = testing::make_rng(23);
    const auto& bkt = *find_multiplier<c64i>("BKT");
    for (upL_t L = 2; L <= 58; L++) {
        const auto A = make_operand<c64i>(Kind::random, 1 + rng() % (L - 1), rng);
        const auto B = make_operand<c64i>(Kind::random, L - A.size(), rng);
        GuardedWork work(bkt.work_bytes(L, 1));
        GuardedWords<c64i> T(L);
        bkt.multiplier<c64i>::mul(work.bp(), T.data(), A, B);
        EXPECT_EQ(T.words(), exact_product(A, B));
    }
}

}  // namespace
}  // namespace znp
