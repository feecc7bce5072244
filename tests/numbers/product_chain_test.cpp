// Chains of products that share transformed operands.
#include "numbers/product_chain.hpp"

#include <array>

#include "foundation/exceptions.hpp"
#include "multiply/dispatch.hpp"
#include "numbers/float_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::big;
using testing::BigIn;
using testing::consistent;
using testing::exact;
using testing::ExactIn;
using testing::expect_too_small;
using testing::GuardedWords;
using testing::Integer;

using testing::random_mantissa;
using testing::value;
using testing::Work;

// Passes everything on to another transform and counts.
class CountingTransform final : public transform {
  public:
    struct Counts {
        int forwards = 0, inverses = 0;
    };

    CountingTransform(const transform& target, Counts& counts)
        : transform(target.holder, target.max_bits, target.transform_bytes, target.work_bytes),
          target_(target),
          counts_(counts) {}
    using transform::forward;
    using transform::inverse_fmul;
    using transform::inverse_fsqr;
    const char* name() const override { return target_.name(); }
    void forward(Image* image, WordSpan<c32i> A, TransformScratch* scratch) const override {
        counts_.forwards++;
        target_.forward(image, A, scratch);
    }
    void inverse_fsqr(Window<c32i> R, Image* T, TransformScratch* scratch) const override {
        counts_.inverses++;
        target_.inverse_fsqr(R, T, scratch);
    }
    void inverse_fmul(Window<c32i> R, Image* T1, const Image* T2, TransformScratch* scratch) const override {
        counts_.inverses++;
        target_.inverse_fmul(R, T1, T2, scratch);
    }
    void forward(Image* image, WordSpan<c64i> A, TransformScratch* scratch) const override {
        counts_.forwards++;
        target_.forward(image, A, scratch);
    }
    void inverse_fsqr(Window<c64i> R, Image* T, TransformScratch* scratch) const override {
        counts_.inverses++;
        target_.inverse_fsqr(R, T, scratch);
    }
    void inverse_fmul(Window<c64i> R, Image* T1, const Image* T2, TransformScratch* scratch) const override {
        counts_.inverses++;
        target_.inverse_fmul(R, T1, T2, scratch);
    }
    bool equals(const transform& other) const override {
        const auto* o = dynamic_cast<const CountingTransform*>(&other);
        return o != nullptr && target_.equals(o->target_);
    }

  private:
    const transform& target_;
    Counts& counts_;
};

constexpr auto one = ChainTransforms::one;
constexpr auto own = ChainTransforms::own;

class ProductChains : public ::testing::Test {
  protected:
    using Words = std::vector<c64i>;

    Words random(upL_t L) { return random_mantissa(L, rng); }

    // Bytes that two transforms of these lengths need, one after the other.
    static upL_t bytes_for(upL_t L1, upL_t L2) {
        Work none(0);
        TransformSlot slot;
        const upL_t first = make_transform<c64i>(none.bp(), slot, L1).product_bytes();
        return std::max(first, make_transform<c64i>(none.bp(), slot, L2).product_bytes());
    }
    static bool equal_transforms(upL_t L1, upL_t L2) {
        Work none(0);
        TransformSlot slot1, slot2;
        return make_transform<c64i>(none.bp(), slot1, L1).equals(make_transform<c64i>(none.bp(), slot2, L2));
    }
    std::mt19937_64 rng = testing::make_rng(61);
};

struct Lengths3 {
    upL_t c, a, b;
};
constexpr Lengths3 cases[] = {{10, 10, 10},    {20, 25, 25}, {20, 20, 30},    {29, 29, 29},
                              {30, 30, 30},    {60, 61, 60}, {100, 90, 200},  {300, 310, 310},
                              {301, 20, 1500}, {40, 10, 30}, {200, 400, 190}, {200, 405, 195},
                              {500, 20, 500}};

// Two products with a common operand.
template <class Product, class Out, class In>
std::array<Product, 2> pair_of(Out& out1, Out& out2, const In& c, const In& a, const In& b) {
    return {Product{out1, c, a}, Product{out2, b, c}};
}

TEST_F(ProductChains, SharedExactProducts) {
    for (const auto& [Lc, La, Lb] : cases) {
        for (const auto which : {own, one}) {
            const auto C = random(Lc), A = random(La), B = random(Lb);
            ExactIn T1(Lc + La), T2(Lc + Lb);
            const upL_t longest = std::max(Lc + La, Lc + Lb);
            Work work(bytes_for(longest, which == own ? std::min(Lc + La, Lc + Lb) : longest));
            const auto c = exact(C, -3), a = exact(A, 5), b = exact(B, 0);
            multiply_chain(work.bp(), pair_of<ExactProduct>(T1.x, T2.x, c, a, b), which);
            EXPECT_EQ(value(T1.x, 2), Integer(C) * Integer(A));
            EXPECT_EQ(value(T2.x, -3), Integer(C) * Integer(B));
            EXPECT_TRUE(consistent(T1.x) && consistent(T2.x));
        }
    }
}

// The addend reaches below the product, lies inside it, reaches above it.
TEST_F(ProductChains, SumsOfExactProducts) {
    for (const auto& [Lc, La, Lb] : cases) {
        const auto C = random(Lc), A = random(La), B = random(Lb);
        const auto c = exact(C, -3), a = exact(A, 5), b = exact(B, 0);
        const s64_t top = 2 + static_cast<s64_t>(Lc + La);
        for (const s64_t exp : {s64_t{0}, s64_t{3}, top - 4, top}) {
            for (const bool subtract : {false, true}) {
                if (subtract && exp + 4 >= top) continue;
                const auto D = random(4);
                const auto d = exact(D, exp);
                ExactIn T1(Lc + La + 6), T2(Lc + Lb);
                Work work(bytes_for(Lc + La, Lc + Lb));
                const std::array chain{ExactProduct{T1.x, c, a, &d, subtract}, ExactProduct{T2.x, c, b}};
                multiply_chain(work.bp(), chain, own);
                const Integer product = Integer(C) * Integer(A) << 2 * 64;
                const Integer addend = Integer(D) << static_cast<u64_t>(exp) * 64;
                EXPECT_EQ(value(T1.x, 0), subtract ? product - addend : product + addend);
                EXPECT_EQ(value(T2.x, -3), Integer(C) * Integer(B));
                EXPECT_TRUE(consistent(T1.x) && consistent(T2.x));
            }
        }
    }
}

// In one buffer each: the first operand below out1, the second and the common one in out2's.
TEST_F(ProductChains, ResultsMayLieOverOperandsThatAreUsedUp) {
    for (const auto& [Lc, La, Lb] : cases) {
        const auto C = random(Lc), A = random(La), B = random(Lb);
        GuardedWords<c64i> first(Lc + La), second(Lc + Lb);
        Work work(bytes_for(Lc + La + transform_slack, Lc + Lb + transform_slack));
        const auto fill = [&] {
            std::copy(A.begin(), A.end(), first.data());
            std::copy(C.begin(), C.end(), std::copy(B.begin(), B.end(), second.data()));
        };
        fill();
        const ExactFloat a(first.data(), La, 0, exact(A, 0).get_hash());
        const ExactFloat b(second.data(), Lb, 0, exact(B, 0).get_hash());
        const ExactFloat c(second.data() + Lb, Lc, 0, exact(C, 0).get_hash());
        ExactFloatR x(first.data(), Lc + La), y(second.data(), Lc + Lb);
        multiply_chain(work.bp(), pair_of<ExactProduct>(x, y, c, a, b), own);
        EXPECT_EQ(value(x, 0), Integer(C) * Integer(A));
        EXPECT_EQ(value(y, 0), Integer(C) * Integer(B));

        fill();
        const upL_t p = Lc + La + Lb;
        const BigFloat ta(first.data(), La, 0), tb(second.data(), Lb, 0), tc(second.data() + Lb, Lc, 0);
        BigFloatR u(first.data(), Lc + La), v(second.data(), Lc + Lb);
        const std::array chain{TruncatedProduct{u, tc, ta, p}, TruncatedProduct{v, tc, tb, p}};
        multiply_chain(work.bp(), chain, own);
        EXPECT_EQ(value(u, 0), Integer(C) * Integer(A));
        EXPECT_EQ(value(v, 0), Integer(C) * Integer(B));
    }
}

// A path d c, c a, a b on one transform, whose second result lies over both of its operands.
TEST_F(ProductChains, OnOneTransformAResultMayLieOverTheOperandThatIsShared) {
    for (const auto& [Lc, La, Lb] : cases) {
        const auto A = random(La), B = random(Lb), C = random(Lc), D = random(Lb);
        const Integer ia(A), ib(B), ic(C), id(D);
        const upL_t longest = std::max({Lb + Lc, Lc + La, La + Lb});
        GuardedWords<c64i> over(Lc + La);
        const auto fill = [&] { std::copy(A.begin(), A.end(), std::copy(C.begin(), C.end(), over.data())); };
        fill();
        const auto b = exact(B, 0), d = exact(D, 0);
        const ExactFloat c(over.data(), Lc, 0, exact(C, 0).get_hash());
        const ExactFloat a(over.data() + Lc, La, 0, exact(A, 0).get_hash());
        ExactIn T1(Lb + Lc), T3(La + Lb);
        ExactFloatR T2(over.data(), Lc + La);
        Work work(bytes_for(longest, longest + transform_slack));
        multiply_chain(work.bp(),
                       std::array{ExactProduct{T1.x, d, c}, ExactProduct{T2, c, a}, ExactProduct{T3.x, a, b}},
                       one);
        EXPECT_EQ(value(T1.x, 0), id * ic);
        EXPECT_EQ(value(T2, 0), ic * ia);
        EXPECT_EQ(value(T3.x, 0), ia * ib);
        EXPECT_TRUE(consistent(T1.x) && consistent(T2) && consistent(T3.x));

        fill();
        const upL_t p = 4000;
        const auto tb = big(B, 0), td = big(D, 0, false);
        const BigFloat tc(over.data(), Lc, 0), ta(over.data() + Lc, La, 0);
        BigIn U1(Lb + Lc), U3(La + Lb);
        BigFloatR U2(over.data(), Lc + La);
        multiply_chain(work.bp(),
                       std::array{TruncatedProduct{U1.x, td, tc, p}, TruncatedProduct{U2, tc, ta, p},
                                  TruncatedProduct{U3.x, ta, tb, p}},
                       one);
        EXPECT_EQ(value(U1.x, 0), 0 - id * ic);
        EXPECT_EQ(value(U2, 0), ic * ia);
        EXPECT_EQ(value(U3.x, 0), ia * ib);
    }
}

// Four products with a square at the end, of lengths that take one transform, two, or four.
TEST_F(ProductChains, ChainsWithASquare) {
    for (const auto& [Lc, La, Lb] : cases) {
        for (const auto which : {own, one}) {
            const auto A = random(La), B = random(Lb), C = random(Lc), D = random(Lb);
            const Integer ia(A), ib(B), ic(C), id(D);
            const upL_t longest = std::max({La + Lb, La + Lc, Lc + Lb, 2 * Lc}) + transform_slack;
            Work work(work_bytes_for<c64i>(longest, 1));
            const auto a = exact(A, 0), b = exact(B, 0), c = exact(C, 0), d = exact(D, 0);
            ExactIn T1(Lb + La), T2(La + Lc), T3(Lb + Lc), T4(2 * Lc);
            multiply_chain(work.bp(),
                           std::array{ExactProduct{T1.x, b, a}, ExactProduct{T2.x, a, c},
                                      ExactProduct{T3.x, d, c}, ExactProduct{T4.x, c, c}},
                           which);
            EXPECT_EQ(value(T1.x, 0), ib * ia);
            EXPECT_EQ(value(T2.x, 0), ia * ic);
            EXPECT_EQ(value(T3.x, 0), id * ic);
            EXPECT_EQ(value(T4.x, 0), ic * ic);
            EXPECT_TRUE(consistent(T1.x) && consistent(T2.x) && consistent(T3.x) && consistent(T4.x));

            const auto ta = big(A, 0), tb = big(B, 0), tc = big(C, 0), td = big(D, 0);
            BigIn U1(Lb + La), U2(La + Lc), U3(Lb + Lc), U4(2 * Lc);
            const upL_t p = 4000;
            multiply_chain(work.bp(),
                           std::array{TruncatedProduct{U1.x, tb, ta, p}, TruncatedProduct{U2.x, ta, tc, p},
                                      TruncatedProduct{U3.x, td, tc, p}, TruncatedProduct{U4.x, tc, tc, p}},
                           which);
            EXPECT_EQ(value(U1.x, 0), ib * ia);
            EXPECT_EQ(value(U2.x, 0), ia * ic);
            EXPECT_EQ(value(U3.x, 0), id * ic);
            EXPECT_EQ(value(U4.x, 0), ic * ic);
        }
    }
}

// The leading p words of x and y agree.
bool agree(const BigFloat& x, const BigFloat& y, upL_t p) {
    const s64_t least = std::min(x.get_exp(), y.get_exp());
    const Integer d = value(x, least) - value(y, least);
    const s64_t bits = 64 * (y.get_mag() - least - static_cast<s64_t>(p));
    return bits <= 0 ? d.is_zero() : d.log2() < static_cast<double>(bits);
}

TEST_F(ProductChains, SharedTruncatedProductsEqualTheUnsharedOnes) {
    for (const auto& [Lc, La, Lb] : cases) {
        const auto C = random(Lc), A = random(La), B = random(Lb);
        const upL_t all = 4000;
        for (const upL_t p : {upL_t{6}, Lc, all}) {
            const upL_t L1 = std::min(Lc + La, p + 2), L2 = std::min(Lc + Lb, p + 7 + 2);
            BigIn T1(L1), T2(L2), U1(L1), U2(L2);
            Work work(work_bytes_for<c64i>(Lc + std::max(La, Lb) + transform_slack, 1));
            const auto c = big(C, 0), a = big(A, 7, false), b = big(B, -8);
            const TruncatedProduct first{T1.x, c, a, p}, second{T2.x, c, b, p + 7};
            multiply_chain(work.bp(), std::array{first, second}, own);
            multiply_chain(work.bp(), std::array{TruncatedProduct{U1.x, c, a, p}}, own);
            multiply_chain(work.bp(), std::array{TruncatedProduct{U2.x, c, b, p + 7}}, own);
            EXPECT_FALSE(T1.x.raw_sign());
            // Beyond the kept words of each operand the two may differ; the leading p words do not.
            EXPECT_TRUE(agree(T1.x, U1.x, p)) << Lc << " " << La << " " << p;
            EXPECT_TRUE(agree(T2.x, U2.x, p + 7)) << Lc << " " << Lb << " " << p;
            if (p == all) {
                EXPECT_EQ(value(T1.x, 7), Integer(0) - Integer(C) * Integer(A));
                EXPECT_EQ(value(T2.x, -8), Integer(C) * Integer(B));
            }
        }
    }
}

TEST_F(ProductChains, SumsOfTruncatedProducts) {
    for (const auto& [Lc, La, Lb] : cases) {
        const auto C = random(Lc), A = random(La), B = random(Lb), D = random(5);
        const auto c = big(C, 0), a = big(A, 7), b = big(B, -8), d = big(D, 3);
        const upL_t p = 4000;
        for (const bool subtract : {false, true}) {
            BigIn T1(Lc + La + 5), T2(Lc + Lb), X(Lc + La);
            Work work(bytes_for(Lc + La + transform_slack, Lc + Lb + transform_slack));
            multiply_chain(work.bp(),
                           std::array{TruncatedProduct{T1.x, c, a, p, &d, subtract, &X.x},
                                      TruncatedProduct{T2.x, c, b, p}},
                           own);
            const Integer product = Integer(C) * Integer(A) << 4 * 64;
            EXPECT_EQ(value(T1.x, 3), subtract ? product - Integer(D) : product + Integer(D));
            EXPECT_EQ(value(T2.x, -8), Integer(C) * Integer(B));
        }
    }
}

TEST_F(ProductChains, SharedExactProductsEqualTheUnsharedOnesWordForWord) {
    const auto C = random(300), A = random(310), B = random(305);
    ASSERT_TRUE(equal_transforms(610, 605));
    ExactIn T1(610), T2(605), U1(610), U2(605);
    Work work(bytes_for(610, 605));
    const auto c = exact(C, 0), a = exact(A, 0), b = exact(B, 0);
    multiply_chain(work.bp(), pair_of<ExactProduct>(T1.x, T2.x, c, a, b), own);
    U1.x.set_mul(work.bp(), c, a);
    U2.x.set_mul(work.bp(), c, b);
    EXPECT_TRUE(std::equal(T1.x.get_T(), T1.x.get_T() + T1.x.get_L(), U1.x.get_T()));
    EXPECT_TRUE(std::equal(T2.x.get_T(), T2.x.get_T() + T2.x.get_L(), U2.x.get_T()));
    EXPECT_EQ(T1.x.get_hash(), U1.x.get_hash());
    EXPECT_EQ(T2.x.get_hash(), U2.x.get_hash());
}

TEST_F(ProductChains, OneProduct) {
    for (const auto& [La, Lb, Lc] : cases) {
        const auto A = random(La), B = random(Lb);
        const auto a = big(A, 0), b = big(B, 0, false);
        Work work(work_bytes_for<cdi>(La + Lb + transform_slack, 1));
        for (const upL_t p : {upL_t{3}, La, La + Lb}) {
            BigIn T(std::min(La + Lb, p + 2));
            multiply_chain(work.bp(), std::array{TruncatedProduct{T.x, a, b, p}}, own);
            const Integer error = Integer(A) * Integer(B) + value(T.x, 0);
            EXPECT_FALSE(error < 0);
            const double last = 64 * (static_cast<double>(La + Lb) - static_cast<double>(p) - 1);
            EXPECT_TRUE(error.is_zero() || error.log2() < std::max(last, 0.0)) << La << " " << Lb << " " << p;
        }
        ExactIn X(La + Lb);
        const auto x = exact(A, 2), y = exact(B, -1);
        multiply_chain(work.bp(), std::array{ExactProduct{X.x, x, y}}, own);
        EXPECT_EQ(value(X.x, 1), Integer(A) * Integer(B));
    }
}

// The count of steps: images are kept between products of equal transforms.
TEST_F(ProductChains, FourForwardsUnsharedThreeShared) {
    const auto A = random(300), B = random(310), C = random(305), D = random(290);
    const auto a = exact(A, 0), b = exact(B, 0), c = exact(C, 0), d = exact(D, 0);
    const auto count = [&](const auto& chain, const std::vector<upL_t>& lengths) {
        Work work(bytes_for(lengths.front(), lengths.back()));
        std::vector<TransformSlot> slots(lengths.size());
        CountingTransform::Counts counts;
        std::vector<CountingTransform> transforms;
        transforms.reserve(lengths.size());
        std::vector<const transform*> given;
        for (upL_t i = 0; i < lengths.size(); i++) {
            transforms.emplace_back(make_transform<c64i>(work.bp(), slots[i], lengths[i]), counts);
            given.push_back(&transforms.back());
        }
        multiply_chain(work.bp(), chain, given);
        EXPECT_EQ(counts.inverses, static_cast<int>(lengths.size()));
        return counts.forwards;
    };
    ExactIn T1(615), T2(615), T3(615), T4(615);
    const std::array common{ExactProduct{T1.x, c, a}, ExactProduct{T2.x, c, b}};
    EXPECT_EQ(count(common, {615, 605}), 3);
    EXPECT_EQ(count(common, {615, 2000}), 4);
    EXPECT_EQ(value(T1.x, 0), Integer(C) * Integer(A));
    EXPECT_EQ(value(T2.x, 0), Integer(C) * Integer(B));

    const std::array path{ExactProduct{T1.x, d, c}, ExactProduct{T2.x, c, a}, ExactProduct{T3.x, a, b}};
    EXPECT_EQ(count(path, {610, 610, 610}), 4);
    EXPECT_EQ(count(path, {610, 610, 2000}), 5);
    EXPECT_EQ(value(T3.x, 0), Integer(A) * Integer(B));

    const std::array square{ExactProduct{T1.x, b, a}, ExactProduct{T2.x, a, c}, ExactProduct{T3.x, d, c},
                            ExactProduct{T4.x, c, c}};
    EXPECT_EQ(count(square, {615, 615, 615, 615}), 4);
    EXPECT_EQ(count(square, {615, 615, 2000, 2000}), 5);
    EXPECT_EQ(value(T4.x, 0), Integer(C) * Integer(C));

    const std::array apart{ExactProduct{T1.x, a, b}, ExactProduct{T2.x, c, d}};
    EXPECT_EQ(count(apart, {615, 615}), 4);
    EXPECT_EQ(value(T2.x, 0), Integer(C) * Integer(D));
}

TEST_F(ProductChains, WhichTransformsAreEqual) {
    // Two lengths of one row of the plan are equal transforms; two BKT ones are equal only at one length.
    EXPECT_TRUE(equal_transforms(605, 610));
    EXPECT_TRUE(equal_transforms(40, 40));
    EXPECT_FALSE(equal_transforms(40, 41));
    EXPECT_FALSE(equal_transforms(58, 59));
    EXPECT_FALSE(equal_transforms(610, 2000));
}

TEST_F(ProductChains, AWorkBufferOfExactlyTheSizePassesAndAByteLessDoesNot) {
    const auto C = random(100), A = random(100);
    const upL_t bytes = bytes_for(200, 200);
    ExactIn T1(200), T2(200);
    Work exactly(bytes), less(bytes - 1);
    const auto c = exact(C, 0), a = exact(A, 0);
    const auto chain = pair_of<ExactProduct>(T1.x, T2.x, c, a, a);
    multiply_chain(exactly.bp(), chain, own);
    EXPECT_EQ(value(T1.x, 0), Integer(C) * Integer(A));
    expect_too_small("TransformHelper::TransformHelper()", bytes, bytes - 1,
                     [&] { multiply_chain(less.bp(), chain, own); });
    EXPECT_TRUE(less.untouched());

    const upL_t big_bytes = bytes_for(206, 206);
    BigIn S1(200), S2(200);
    Work big_less(big_bytes - 1), big_exactly(big_bytes);
    const auto tc = big(C, 0), ta = big(A, 0);
    const std::array truncated{TruncatedProduct{S1.x, tc, ta, 198}, TruncatedProduct{S2.x, tc, ta, 198}};
    expect_too_small("TransformHelper::TransformHelper()", big_bytes, big_bytes - 1,
                     [&] { multiply_chain(big_less.bp(), truncated, own); });
    EXPECT_TRUE(big_less.untouched());
    multiply_chain(big_exactly.bp(), truncated, own);
    EXPECT_EQ(value(S2.x, 0), Integer(C) * Integer(A));
}

TEST_F(ProductChains, ShortExactProductsTakeNoImages) {
    const auto C = random(29), A = random(29), B = random(20);
    ExactIn T1(58), T2(49);
    Work none(0);
    TransformSlot slot;
    Work scratch(make_transform<c64i>(none.bp(), slot, direct_product_words).work_bytes);
    const auto c = exact(C, 0), a = exact(A, 0), b = exact(B, 0);
    multiply_chain(scratch.bp(), pair_of<ExactProduct>(T1.x, T2.x, c, a, b), own);
    EXPECT_EQ(value(T1.x, 0), Integer(C) * Integer(A));
    EXPECT_EQ(value(T2.x, 0), Integer(C) * Integer(B));
}

TEST_F(ProductChains, UnsharedRoundsCheckTheBufferEach) {
    // The first product fits the buffer, the second does not.
    const auto C = random(100), A = random(100), B = random(900);
    ExactIn T1(200), T2(1000);
    Work work(bytes_for(200, 200));
    const auto c = exact(C, 0), a = exact(A, 0), b = exact(B, 0);
    expect_too_small("TransformHelper::TransformHelper()", bytes_for(1000, 1000), bytes_for(200, 200),
                     [&] { multiply_chain(work.bp(), pair_of<ExactProduct>(T1.x, T2.x, c, a, b), own); });
    EXPECT_EQ(value(T1.x, 0), Integer(C) * Integer(A));
}

TEST_F(ProductChains, ALengthBeyondTheTables) {
    const std::vector<c64i> words{1};
    const BigFloat endless(words.data(), upL_t{1} << 58, 0, true, 0), other = endless;
    BigIn T(3), U(3);
    const upL_t p = upL_t{1} << 59;
    const auto e = testing::caught<zn_exception>([&] {
        multiply_chain(
            BasicParameters{},
            std::array{TruncatedProduct{T.x, endless, other, p}, TruncatedProduct{U.x, endless, other, p}},
            own);
    });
    EXPECT_EQ(e.code, -4);
}

}  // namespace
}  // namespace znp
