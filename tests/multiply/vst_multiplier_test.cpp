#include "multiply/vst/vst_multiplier.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/vst/size_plan.hpp"
#include "multiply/vst_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::all_ones;
using testing::caught;
using testing::console_output;
using testing::gmp_product;
using testing::random_words;
using testing::VSTTablesOf;
using testing::VSTWork;

template <class word>
class VSTMultiplierTest : public ::testing::Test {
  protected:
    static constexpr upL_t bits = WordTraits<word>::bits;

    static const multiplier<word>& vst() { return *find_multiplier<word>("VST"); }
    static const TableHolder& tables() {
        static const VSTTablesOf built(20'000'000);
        return built.holder;
    }
    static std::vector<word> product(const std::vector<word>& A, const std::vector<word>& B,
                                     u64_t threads = 1) {
        const upL_t L = A.size() + B.size();
        const VSTWork work(tables(), vst().work_bytes(L, threads), threads);
        testing::GuardedWords<word> T(L);
        vst().mul(work.bp(), T.data(), A, B);
        return T.words();
    }
};

using WordFamilies = ::testing::Types<c32i, c64i>;
TYPED_TEST_SUITE(VSTMultiplierTest, WordFamilies);

TYPED_TEST(VSTMultiplierTest, Identity) {
    const multiplier<TypeParam>& vst = this->vst();
    EXPECT_EQ(vst.max_bits, 633318697598976u);
    EXPECT_STREQ(vst.name, "VST");
    EXPECT_STREQ(vst.long_name, "VST Algorithm");
    TransformSlot slot;
    EXPECT_EQ(vst.make_transform({}, nullptr, 100), nullptr);
    slot.adopt(vst.make_transform({}, slot.place(), 100));
    EXPECT_STREQ(slot->name(), "VST");
    EXPECT_EQ(slot->max_bits, 73728u);
}

// The product that fills a row to its last word, and the one that is a word longer, in the next row.
TYPED_TEST(VSTMultiplierTest, CapacityOfEveryRow) {
    std::mt19937_64 rng = testing::make_rng(1);
    for (const vst::SizePlanRow& row : vst::main_plan()) {
        if (row.capacity() > 1'500'000) break;
        const upL_t L = row.capacity() / this->bits;
        SCOPED_TRACE(::testing::Message() << int(row.a) << " " << int(row.b) << " " << int(row.c));
        TransformSlot slot;
        slot.adopt(this->vst().make_transform({&this->tables(), nullptr, 0, 1}, slot.place(), L));
        EXPECT_EQ(slot->max_bits, row.capacity());
        const std::vector<TypeParam> ones = all_ones<TypeParam>(L / 2);
        EXPECT_EQ(this->product(ones, ones), gmp_product(ones, ones));
        const auto A = random_words<TypeParam>(rng, L / 2 + 1), B = random_words<TypeParam>(rng, L / 2);
        EXPECT_EQ(this->product(A, B), gmp_product(A, B));
    }
}

TYPED_TEST(VSTMultiplierTest, UnequalAndShortOperands) {
    std::mt19937_64 rng = testing::make_rng(2);
    using Words = std::vector<TypeParam>;
    const Words A = random_words<TypeParam>(rng, 5000), one{1}, zero{0}, none;
    for (const Words& B : {random_words<TypeParam>(rng, 1), random_words<TypeParam>(rng, 77), one, zero,
                           all_ones<TypeParam>(4999), Words(300), none}) {
        EXPECT_EQ(this->product(A, B), gmp_product(A, B));
        EXPECT_EQ(this->product(B, A), gmp_product(B, A));
    }
}

TYPED_TEST(VSTMultiplierTest, WindowsAndSquares) {
    std::mt19937_64 rng = testing::make_rng(3);
    const upL_t n = 3000;
    const auto A = random_words<TypeParam>(rng, n), B = random_words<TypeParam>(rng, n);
    const auto AB = gmp_product(A, B), AA = gmp_product(A, A);
    for (const u64_t threads : {1u, 3u}) {
        const VSTWork work(this->tables(), this->vst().work_bytes(2 * n, threads), threads);
        for (unsigned k = 0; k < 20; ++k) {
            const upL_t s = rng() % (2 * n), e = s + rng() % (2 * n - s + 1);
            testing::GuardedWords<TypeParam> T(e - s), S(e - s);
            this->vst().mul_window(work.bp(), Window{T.data(), s, e}, {A.data(), n}, {B.data(), n});
            this->vst().sqr_window(work.bp(), Window{S.data(), s, e}, {A.data(), n});
            EXPECT_EQ(T.words(), std::vector<TypeParam>(AB.begin() + long(s), AB.begin() + long(e)));
            EXPECT_EQ(S.words(), std::vector<TypeParam>(AA.begin() + long(s), AA.begin() + long(e)));
        }
    }
}

TYPED_TEST(VSTMultiplierTest, WorkBytesCoverEveryShorterProduct) {
    for (const u64_t threads : {1u, 2u, 7u, 256u}) {
        upL_t before = 0, before_mulp = 0;
        for (const vst::SizePlanRow& row : vst::main_plan()) {
            const upL_t L = row.capacity() / this->bits;
            TransformSlot slot;
            slot.adopt(this->vst().make_transform({nullptr, nullptr, 0, threads}, slot.place(), L));
            const upL_t bytes = this->vst().work_bytes(L, threads);
            EXPECT_GE(bytes, slot->product_bytes());
            EXPECT_GE(bytes, before);
            before = bytes;
            if (L * this->bits > vst_threshold_bits) {
                EXPECT_GE(work_bytes_for<TypeParam>(L, threads), bytes);
            }
            const upL_t mulp_bytes = this->vst().mulp_bytes(L, threads);
            EXPECT_GE(mulp_bytes, before_mulp);
            before_mulp = mulp_bytes;
        }
    }
}

TYPED_TEST(VSTMultiplierTest, WorkBytesCoverFewerThreads) {
    for (const upL_t L : {upL_t{300}, upL_t{5000}, upL_t{30000}, upL_t{1000000}}) {
        const upL_t words = L * 64 / this->bits;
        upL_t before = 0, before_mulp = 0;
        for (u64_t threads = 1; threads <= 256; ++threads) {
            TransformSlot slot;
            slot.adopt(this->vst().make_transform({nullptr, nullptr, 0, threads}, slot.place(), words));
            const upL_t bytes = this->vst().work_bytes(words, threads);
            const upL_t mulp_bytes = L > 5000 ? this->vst().mulp_bytes(words, threads) : 0;
            ASSERT_GE(bytes, slot->product_bytes());
            ASSERT_GE(bytes, before) << threads;
            ASSERT_GE(mulp_bytes, before_mulp) << threads;
            before = bytes;
            before_mulp = mulp_bytes;
        }
    }
}

// Less memory than the plain route; both within what a byte of the result may cost where the plan's size
// fits.
TYPED_TEST(VSTMultiplierTest, MemoryOfAByteOfTheResult) {
    for (const auto plan : {vst::main_plan(), vst::large_plan()}) {
        for (const vst::SizePlanRow& row : plan) {
            if (row.capacity() < 100'000'000) continue;
            const upL_t L = row.capacity() / this->bits;
            const auto bytes = static_cast<double>(row.capacity()) / 8;
            const auto plain = static_cast<double>(this->vst().work_bytes(L, 2));
            const auto halves = static_cast<double>(this->vst().mulp_bytes(L, 2));
            EXPECT_LE(halves, 4.8 * bytes);
            EXPECT_LT(halves, plain);
            if (row.a > 4) {
                EXPECT_LE(plain, 7.3 * bytes) << int(row.a) << " " << int(row.b) << " " << int(row.c);
            }
        }
    }
}

TYPED_TEST(VSTMultiplierTest, TooLongForEveryRow) {
    const upL_t L = 0x2400000000000 / this->bits;
    const std::string output = console_output([&] {
        EXPECT_EQ(caught<zn_exception>([&] { (void)this->vst().work_bytes(L + 1, 1); }).code, -4);
        EXPECT_EQ(caught<zn_exception>([&] { (void)this->vst().mulp_bytes(L + 1, 1); }).code, -4);
        EXPECT_EQ(caught<zn_exception>([&] { (void)this->vst().table_bytes(0x2400000000001); }).code, -4);
    });
    EXPECT_GT(this->vst().work_bytes(L, 1), this->vst().mulp_bytes(L, 1));
}

// Of the smallest rows the halves are no transforms: the query skips them, the product lets it pass.
TYPED_TEST(VSTMultiplierTest, TooFewLevels) {
    EXPECT_EQ(this->vst().mulp_bytes(73728 / this->bits, 1), 0u);
    const std::vector<TypeParam> A(10, 3);
    std::vector<TypeParam> T(20);
    const VSTWork work(this->tables(), 1000, 1);
    const auto e = caught<InvalidTransformParametersException>([&] {
        this->vst().mulp(work.bp(), Window{T.data(), 0, 20}, {A.data(), 10}, {A.data(), 10});
    });
    EXPECT_STREQ(e.title, "Transform length is too small.");
}

// Through the dispatchers, just above the last length of the floating-point FFT.
TYPED_TEST(VSTMultiplierTest, DispatchersReachIt) {
    std::mt19937_64 rng = testing::make_rng(4);
    const upL_t L = 655424 / this->bits + 1;
    const auto A = random_words<TypeParam>(rng, L / 2), B = random_words<TypeParam>(rng, L - L / 2);
    const auto expected = gmp_product(A, B);
    for (const bool use_mulp : {false, true}) {
        for (const u64_t threads : {1u, 2u, 5u}) {
            const VSTWork work(this->tables(), work_bytes_for<TypeParam>(L, threads, use_mulp), threads);
            testing::GuardedWords<TypeParam> T(L);
            if (use_mulp) {
                mulp(work.bp(), Window{T.data(), 0, L}, A, B);
            } else {
                mul(work.bp(), T.data(), A, B);
            }
            EXPECT_EQ(T.words(), expected);
        }
    }
}

TEST(VSTHolder, TablesOfAHolder) {
    for (const u64_t limit : {vst_threshold_bits - 1, vst_threshold_bits, u64_t{3'000'000}}) {
        const upL_t bytes = table_size(limit);
        const GuardedArray<std::byte> memory = make_guarded_array<std::byte>(nullptr, bytes, 64);
        TableHolder holder;
        EXPECT_EQ(build_tables(holder, limit, memory.get()), memory.get() + bytes);
        EXPECT_EQ(holder.limit_bits, limit);
        EXPECT_NE(holder.fft, nullptr);
        EXPECT_EQ(holder.vst != nullptr, limit >= vst_threshold_bits);
    }
}

}  // namespace
}  // namespace znp
