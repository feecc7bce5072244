#include "multiply/vst/crt_mulp.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
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

const vst::Geometry shapes[] = {{4, 1, 10}, {9, 1, 11}, {6, 3, 9}, {7, 5, 9}, {8, 7, 9}, {7, 1, 13}};

template <class word>
class CRTMulp : public ::testing::Test {
  protected:
    using Words = std::vector<word>;

    static const TableHolder& tables() {
        static const VSTTablesOf built(shapes);
        return built.holder;
    }
    static VST transform(const vst::Geometry& g, u64_t threads = 1) { return {&tables(), g, threads}; }
    static upL_t length(const vst::Geometry& g) { return g.capacity() / WordTraits<word>::bits; }

    static Words window(const VST& t, const Words& A, const Words& B, upL_t s, upL_t e) {
        const VSTWork work(tables(), crt_mulp_bytes(t), t.threads);
        testing::GuardedWords<word> T(e - s);
        CRT_mulp(t, work.bp(), Window{T.data(), s, e}, A, B);
        return T.words();
    }
    static Words product(const VST& t, const Words& A, const Words& B) {
        return window(t, A, B, 0, A.size() + B.size());
    }
};

using WordFamilies = ::testing::Types<c32i, c64i>;
TYPED_TEST_SUITE(CRTMulp, WordFamilies);

// La + Lb exactly 2 L, with the longer operand folded by one word, by half and by all of its words but some.
TYPED_TEST(CRTMulp, TwiceTheLength) {
    std::mt19937_64 rng = testing::make_rng(1);
    for (const vst::Geometry& g : shapes) {
        const VST t = this->transform(g);
        const upL_t L = this->length(g);
        for (const upL_t La : {L, L + 1, L + L / 2, 2 * L - 3, 2 * L - 1}) {
            const auto A = random_words<TypeParam>(rng, La), B = random_words<TypeParam>(rng, 2 * L - La);
            EXPECT_EQ(this->product(t, A, B), gmp_product(A, B)) << g.a << " " << g.b << " La - L " << La - L;
            EXPECT_EQ(this->product(t, B, A), gmp_product(B, A));
        }
        const auto ones = all_ones<TypeParam>(L), short_ones = all_ones<TypeParam>(L - 1),
                   long_ones = all_ones<TypeParam>(L + 1);
        EXPECT_EQ(this->product(t, ones, ones), gmp_product(ones, ones));
        EXPECT_EQ(this->product(t, long_ones, short_ones), gmp_product(long_ones, short_ones));
    }
}

TYPED_TEST(CRTMulp, ShorterOperands) {
    std::mt19937_64 rng = testing::make_rng(2);
    const vst::Geometry g = shapes[1];
    const VST t = this->transform(g);
    const upL_t L = this->length(g);
    for (const auto& [La, Lb] :
         {std::pair{upL_t{1}, upL_t{1}}, {L, 1}, {L + 1, 1}, {L - 1, L}, {L / 3, L / 5}}) {
        const auto A = random_words<TypeParam>(rng, La), B = random_words<TypeParam>(rng, Lb);
        EXPECT_EQ(this->product(t, A, B), gmp_product(A, B));
        const std::vector<TypeParam> zero(La);
        EXPECT_EQ(this->product(t, zero, B), std::vector<TypeParam>(La + Lb));
    }
    const auto A = random_words<TypeParam>(rng, L);
    EXPECT_EQ(this->product(t, A, {}), std::vector<TypeParam>(L));
}

// A = 2^N - 1 + ..: lower half one less than the upper one, so that A = -1 modulo 2^N + 1 and no negacyclic
// transform runs; with B = 1 even the product's residue is 2^N, and with B = 0 it is 0.
TYPED_TEST(CRTMulp, FoldedOperandIsMinusOne) {
    std::mt19937_64 rng = testing::make_rng(3);
    for (const vst::Geometry& g : shapes) {
        const VST t = this->transform(g);
        const upL_t L = this->length(g), upper = L / 3;
        auto A = random_words<TypeParam>(rng, L + upper);
        A[L] |= 1;
        std::fill(A.begin() + long(upper), A.begin() + long(L), TypeParam{0});
        std::copy(A.begin() + long(L), A.end(), A.begin());
        A[0] -= 1;
        const upL_t Lb = L - upper;
        std::vector<TypeParam> one(Lb), zero(Lb);
        one[0] = 1;
        for (const auto& B : {random_words<TypeParam>(rng, Lb), all_ones<TypeParam>(Lb), one, zero,
                              std::vector<TypeParam>{1}, std::vector<TypeParam>{0}})
            EXPECT_EQ(this->product(t, A, B), gmp_product(A, B));
    }
}

// Products that are -1 modulo 2^N + 1, with no operand folded: (2^(N/3) + 1) (2^(2N/3) - 2^(N/3)) is one, and
// 2^k 2^(N - k).
TYPED_TEST(CRTMulp, TopBitOfTheNegacyclicResult) {
    constexpr unsigned bits = WordTraits<TypeParam>::bits;
    for (const vst::Geometry& g : shapes) {
        const VST t = this->transform(g);
        const upL_t L = this->length(g);
        for (const upL_t k : {upL_t{1}, L / 2 * bits, L * bits - 1, upL_t{12345}}) {
            const upL_t rest = L * bits - k;
            std::vector<TypeParam> A(k / bits + 1), B(rest / bits + 1);
            A[k / bits] = static_cast<TypeParam>(TypeParam{1} << k % bits);
            B[rest / bits] = static_cast<TypeParam>(TypeParam{1} << rest % bits);
            EXPECT_EQ(this->product(t, A, B), gmp_product(A, B)) << k;
        }
    }
}

// Products that are 0 modulo 2^N - 1 or 2^N + 1, which have two forms.
TYPED_TEST(CRTMulp, MultiplesOfTheModuli) {
    std::mt19937_64 rng = testing::make_rng(4);
    for (const vst::Geometry& g : shapes) {
        const VST t = this->transform(g);
        const upL_t L = this->length(g);
        std::vector<TypeParam> plus(L + 1);
        plus[0] = plus[L] = 1;
        for (const auto& B : {random_words<TypeParam>(rng, L - 1), all_ones<TypeParam>(L - 1),
                              std::vector<TypeParam>{1}, std::vector<TypeParam>{2}}) {
            EXPECT_EQ(this->product(t, plus, B), gmp_product(plus, B));
            EXPECT_EQ(this->product(t, all_ones<TypeParam>(L), B), gmp_product(all_ones<TypeParam>(L), B));
        }
        const auto ones = all_ones<TypeParam>(2 * L - 1);  // a multiple of neither
        EXPECT_EQ(this->product(t, ones, {1}), gmp_product(ones, {1}));
        auto both = all_ones<TypeParam>(2 * L - 2);
        EXPECT_EQ(this->product(t, both, {3, 7}), gmp_product(both, {3, 7}));
    }
}

TYPED_TEST(CRTMulp, Windows) {
    std::mt19937_64 rng = testing::make_rng(5);
    for (const vst::Geometry& g : shapes) {
        const VST t = this->transform(g, 2);
        const upL_t L = this->length(g);
        const auto A = random_words<TypeParam>(rng, L + 5), B = random_words<TypeParam>(rng, L - 5);
        const auto C = gmp_product(A, B);
        std::vector<std::pair<upL_t, upL_t>> windows{
            {L, 2 * L}, {0, L}, {L - 1, L + 1}, {2 * L - 1, 2 * L}, {0, 1}, {L, L}, {L / 2, L + L / 2}};
        for (unsigned k = 0; k < 5; ++k) {
            const upL_t s = rng() % (2 * L);
            windows.emplace_back(s, s + rng() % (2 * L - s + 1));
        }
        for (const auto& [s, e] : windows) {
            EXPECT_EQ(this->window(t, A, B, s, e),
                      std::vector<TypeParam>(C.begin() + long(s), C.begin() + long(e)));
        }
    }
}

TYPED_TEST(CRTMulp, AnyThreads) {
    std::mt19937_64 rng = testing::make_rng(6);
    const vst::Geometry g = shapes[5];
    const upL_t L = this->length(g);
    const auto A = random_words<TypeParam>(rng, L + 100), B = random_words<TypeParam>(rng, L - 100);
    const auto C = gmp_product(A, B);
    for (const u64_t threads : {1u, 2u, 3u, 8u, 256u})
        EXPECT_EQ(this->product(this->transform(g, threads), A, B), C);
}

// One operand given twice: one image serves.
TYPED_TEST(CRTMulp, Squares) {
    std::mt19937_64 rng = testing::make_rng(7);
    for (const vst::Geometry& g : shapes) {
        const upL_t L = this->length(g);
        for (const auto& A : {random_words<TypeParam>(rng, L), random_words<TypeParam>(rng, L / 2 + 1),
                              all_ones<TypeParam>(L)}) {
            for (const u64_t threads : {1u, 3u})
                EXPECT_EQ(this->product(this->transform(g, threads), A, A), gmp_product(A, A));
        }
    }
}

TYPED_TEST(CRTMulp, Refusals) {
    const VST t = this->transform(shapes[0]);
    const upL_t L = this->length(shapes[0]);
    const std::vector<TypeParam> A(L + 1), B(L);
    std::vector<TypeParam> T(2 * L + 1);
    console_output([&] {
        const VSTWork work(this->tables(), crt_mulp_bytes(t), 1);
        const auto e = caught<zn_exception>([&] {
            CRT_mulp(t, work.bp(), Window{T.data(), 0, 2 * L + 1}, {A.data(), L + 1}, {B.data(), L});
        });
        EXPECT_STREQ(e.location, "CRT_mulp(): Convolution length is not long enough.");
        EXPECT_STREQ(e.title, "Generic Exception");
        VST odd = t;
        odd.capacity += 8;
        EXPECT_STREQ(caught<zn_exception>([&] {
                         CRT_mulp(odd, work.bp(), Window{T.data(), 0, 2}, {A.data(), 1}, {B.data(), 1});
                     }).location,
                     "CRT_mulp(): Convolution length is not divisible by the word-size.");
        const VSTWork small(this->tables(), crt_mulp_bytes(t) - 1, 1);
        EXPECT_EQ(caught<zn_exception>([&] {
                      CRT_mulp(t, small.bp(), Window{T.data(), 0, 2}, {A.data(), 1}, {B.data(), 1});
                  }).code,
                  error_code::work_space_too_small);
    });
}

}  // namespace
}  // namespace znp
