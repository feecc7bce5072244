// Products that share a transformed operand.
#include "numbers/transform_helper.hpp"

#include <cstring>
#include <string>

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
using testing::Lengths;
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
    void forward(void* image, const c32i* A, upL_t L, void* scratch) const override {
        counts_.forwards++;
        target_.forward(image, A, L, scratch);
    }
    void inverse_fsqr(c32i* R, upL_t s, upL_t e, void* T, void* scratch) const override {
        counts_.inverses++;
        target_.inverse_fsqr(R, s, e, T, scratch);
    }
    void inverse_fmul(c32i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const override {
        counts_.inverses++;
        target_.inverse_fmul(R, s, e, T1, T2, scratch);
    }
    void forward(void* image, const c64i* A, upL_t L, void* scratch) const override {
        counts_.forwards++;
        target_.forward(image, A, L, scratch);
    }
    void inverse_fsqr(c64i* R, upL_t s, upL_t e, void* T, void* scratch) const override {
        counts_.inverses++;
        target_.inverse_fsqr(R, s, e, T, scratch);
    }
    void inverse_fmul(c64i* R, upL_t s, upL_t e, void* T1, const void* T2, void* scratch) const override {
        counts_.inverses++;
        target_.inverse_fmul(R, s, e, T1, T2, scratch);
    }
    bool equals(const transform& other) const override {
        const auto* o = dynamic_cast<const CountingTransform*>(&other);
        return o != nullptr && target_.equals(o->target_);
    }

  private:
    const transform& target_;
    Counts& counts_;
};

class TransformHelpers : public ::testing::Test {
  protected:
    // Bytes that two transforms of these lengths need, one after the other.
    static upL_t bytes_for(upL_t L1, upL_t L2) {
        Work none(0);
        TransformSlot slot;
        const upL_t first = make_transform<c64i>(none.bp(), slot, L1).product_bytes();
        return std::max(first, make_transform<c64i>(none.bp(), slot, L2).product_bytes());
    }
    static bool shared(upL_t L1, upL_t L2) {
        Work none(0);
        TransformSlot slot1, slot2;
        return make_transform<c64i>(none.bp(), slot1, L1).equals(make_transform<c64i>(none.bp(), slot2, L2));
    }
    std::mt19937_64 rng = testing::make_rng(61);
};

struct Lengths3 {
    upL_t c, a, b;
};
constexpr Lengths3 cases[] = {{10, 10, 10},   {20, 25, 25},    {20, 20, 30},    {30, 30, 30}, {60, 61, 60},
                              {100, 90, 200}, {300, 310, 310}, {301, 20, 1500}, {40, 10, 30}};

TEST_F(TransformHelpers, SharedExactProducts) {
    for (const auto& [Lc, La, Lb] : cases) {
        const auto C = random_mantissa<c64i>(Lc, rng), A = random_mantissa<c64i>(La, rng),
                   B = random_mantissa<c64i>(Lb, rng);
        ExactIn<c64i> T1(Lc + La), T2(Lc + Lb);
        Work work(bytes_for(Lc + La, Lc + Lb));
        mul_shared(work.bp(), T1.x, T2.x, exact(C, -3), exact(A, 5), exact(B, 0));
        EXPECT_EQ(value(T1.x, 2), Integer(C) * Integer(A));
        EXPECT_EQ(value(T2.x, -3), Integer(C) * Integer(B));
        EXPECT_TRUE(consistent(T1.x) && consistent(T2.x));
    }
}

TEST_F(TransformHelpers, SharedExactProductsWithAnExponentLimit) {
    for (const auto& [Lc, La, Lb] : cases) {
        const auto C = random_mantissa<c64i>(Lc, rng), A = random_mantissa<c64i>(La, rng),
                   B = random_mantissa<c64i>(Lb, rng);
        ExactIn<c64i> T1(Lc + La + 2), T2(Lc + Lb);
        Work work(bytes_for(Lc + La, Lc + Lb));
        mul_shared(work.bp(), T1.x, T2.x, exact(C, -3), exact(A, 5), exact(B, 0), 0);
        EXPECT_EQ(T1.x.get_exp(), 0);
        EXPECT_EQ(T2.x.get_exp(), -3);
        EXPECT_EQ(value(T1.x, 0), Integer(C) * Integer(A) << 2 * 64);
        EXPECT_EQ(value(T2.x, -3), Integer(C) * Integer(B));
        EXPECT_TRUE(consistent(T1.x) && consistent(T2.x));
    }
}

// In one buffer each: the first operand below out1, the second and the common one in out2's.
TEST_F(TransformHelpers, ResultsMayLieOverOperandsThatAreUsedUp) {
    for (const auto& [Lc, La, Lb] : cases) {
        const auto C = random_mantissa<c64i>(Lc, rng), A = random_mantissa<c64i>(La, rng),
                   B = random_mantissa<c64i>(Lb, rng);
        GuardedWords<c64i> first(Lc + La), second(Lc + Lb);
        Work work(bytes_for(Lc + La + transform_slack, Lc + Lb + transform_slack));
        const auto fill = [&] {
            std::copy(A.begin(), A.end(), first.data());
            std::copy(C.begin(), C.end(), std::copy(B.begin(), B.end(), second.data()));
        };
        const u64_t hash_a = exact(A, 0).get_hash(), hash_b = exact(B, 0).get_hash(),
                    hash_c = exact(C, 0).get_hash();
        fill();
        ExactFloatR<c64i> x(first.data(), Lc + La), y(second.data(), Lc + Lb);
        mul_shared(work.bp(), x, y, ExactFloat<c64i>(second.data() + Lb, Lc, 0, hash_c),
                   ExactFloat<c64i>(first.data(), La, 0, hash_a),
                   ExactFloat<c64i>(second.data(), Lb, 0, hash_b));
        EXPECT_EQ(value(x, 0), Integer(C) * Integer(A));
        EXPECT_EQ(value(y, 0), Integer(C) * Integer(B));

        fill();
        const upL_t p = Lc + La + Lb;
        BigFloatR<c64i> u(first.data(), Lc + La), v(second.data(), Lc + Lb);
        mul_shared(work.bp(), u, p, v, p, BigFloat<c64i>(second.data() + Lb, Lc, 0),
                   BigFloat<c64i>(first.data(), La, 0), BigFloat<c64i>(second.data(), Lb, 0));
        EXPECT_EQ(value(u, 0), Integer(C) * Integer(A));
        EXPECT_EQ(value(v, 0), Integer(C) * Integer(B));

        fill();
        BigFloatR<c64i> w(second.data(), Lc + Lb);
        mul_transformed(work.bp(), w, BigFloat<c64i>(second.data() + Lb, Lc, 0),
                        BigFloat<c64i>(second.data(), Lb, 0), p);
        EXPECT_EQ(value(w, 0), Integer(C) * Integer(B));
    }
}

TEST_F(TransformHelpers, SharedTruncatedProductsEqualTheUnsharedOnes) {
    for (const auto& [Lc, La, Lb] : cases) {
        const auto C = random_mantissa<c64i>(Lc, rng), A = random_mantissa<c64i>(La, rng),
                   B = random_mantissa<c64i>(Lb, rng);
        const upL_t all = 4000;
        for (const upL_t p : {upL_t{6}, Lc, all}) {
            const upL_t L1 = std::min(Lc + La, p + 2), L2 = std::min(Lc + Lb, p + 7 + 2);
            BigIn<c64i> T1(L1), T2(L2), U1(L1), U2(L2);
            Work work(bytes_for(Lc + La + transform_slack, Lc + Lb + transform_slack));
            const auto c = big(C, 0), a = big(A, 7, false), b = big(B, -8);
            mul_shared(work.bp(), T1.x, p, T2.x, p + 7, c, a, b);
            mul_transformed(work.bp(), U1.x, c, a, p);
            mul_transformed(work.bp(), U2.x, c, b, p + 7);
            EXPECT_FALSE(T1.x.raw_sign());
            // Beyond the kept words of each operand the two may differ; the leading p words do not.
            const auto agree = [](const BigFloat<c64i>& x, const BigFloat<c64i>& y, upL_t precision) {
                const s64_t least = std::min(x.get_exp(), y.get_exp());
                const Integer d = value(x, least) - value(y, least);
                const s64_t bits = 64 * (y.get_mag() - least - static_cast<s64_t>(precision));
                return bits <= 0 ? d.is_zero() : d.log2() < static_cast<double>(bits);
            };
            EXPECT_TRUE(agree(T1.x, U1.x, p)) << Lc << " " << La << " " << p;
            EXPECT_TRUE(agree(T2.x, U2.x, p + 7)) << Lc << " " << Lb << " " << p;
            if (p == all) {
                EXPECT_EQ(value(T1.x, 7), Integer(0) - Integer(C) * Integer(A));
                EXPECT_EQ(value(T2.x, -8), Integer(C) * Integer(B));
            }
        }
    }
}

TEST_F(TransformHelpers, SharedExactProductsEqualTheUnsharedOnesWordForWord) {
    const auto C = random_mantissa<c64i>(300, rng), A = random_mantissa<c64i>(310, rng),
               B = random_mantissa<c64i>(305, rng);
    ASSERT_TRUE(shared(610, 605));
    ExactIn<c64i> T1(610), T2(605), U1(610), U2(605);
    Work work(bytes_for(610, 605));
    mul_shared(work.bp(), T1.x, T2.x, exact(C, 0), exact(A, 0), exact(B, 0));
    U1.x.set_mul(work.bp(), exact(C, 0), exact(A, 0));
    U2.x.set_mul(work.bp(), exact(C, 0), exact(B, 0));
    EXPECT_TRUE(std::equal(T1.x.get_T(), T1.x.get_T() + T1.x.get_L(), U1.x.get_T()));
    EXPECT_TRUE(std::equal(T2.x.get_T(), T2.x.get_T() + T2.x.get_L(), U2.x.get_T()));
    EXPECT_EQ(T1.x.get_hash(), U1.x.get_hash());
    EXPECT_EQ(T2.x.get_hash(), U2.x.get_hash());
}

TEST_F(TransformHelpers, OneProduct) {
    for (const auto& [La, Lb, Lc] : cases) {
        const auto A = random_mantissa<c64i>(La, rng), B = random_mantissa<c64i>(Lb, rng);
        for (const upL_t p : {upL_t{3}, La, La + Lb}) {
            BigIn<c64i> T(std::min(La + Lb, p + 2));
            Work work(bytes_for(La + Lb + transform_slack, 1));
            mul_transformed(work.bp(), T.x, big(A, 0), big(B, 0, false), p);
            const Integer error = Integer(A) * Integer(B) + value(T.x, 0);
            EXPECT_FALSE(error < 0);
            const double last = 64 * (static_cast<double>(La + Lb) - static_cast<double>(p) - 1);
            EXPECT_TRUE(error.is_zero() || error.log2() < std::max(last, 0.0)) << La << " " << Lb << " " << p;
        }
    }
}

// The count of steps where both products fit one transform, and where they do not.
TEST_F(TransformHelpers, FourForwardsUnsharedThreeShared) {
    using Transform = ExactFloat<c64i>::Transform;
    const auto C = random_mantissa<c64i>(300, rng), A = random_mantissa<c64i>(310, rng),
               B = random_mantissa<c64i>(305, rng);
    const auto count = [&](upL_t L1, upL_t L2) {
        Work work(bytes_for(L1, L2));
        TransformSlot slot1, slot2;
        CountingTransform::Counts counts;
        const CountingTransform t1(make_transform<c64i>(work.bp(), slot1, L1), counts);
        const CountingTransform t2(make_transform<c64i>(work.bp(), slot2, L2), counts);
        ExactIn<c64i> T1(610), T2(605);
        const auto product_with = [](ExactFloatR<c64i>& out, const ExactFloat<c64i>& operand) {
            return [&out, operand](const TransformHelper& helper, const Transform& c) {
                Transform a(operand, helper.algorithm, helper.T1, helper.scratch);
                out.set_inverse_fmul(helper.scratch, a, c);
                EXPECT_EQ(a.image, nullptr);
                EXPECT_NE(c.image, nullptr);
            };
        };
        shared_products(
            work.bp(), t1, t2,
            [&](const TransformHelper& helper) {
                return Transform(exact(C, 0), helper.algorithm, helper.T2, helper.scratch);
            },
            product_with(T1.x, exact(A, 0)), product_with(T2.x, exact(B, 0)));
        EXPECT_EQ(value(T1.x, 0), Integer(C) * Integer(A));
        EXPECT_EQ(value(T2.x, 0), Integer(C) * Integer(B));
        EXPECT_EQ(counts.inverses, 2);
        return counts.forwards;
    };
    EXPECT_EQ(count(610, 605), 3);
    EXPECT_EQ(count(610, 2000), 4);
}

TEST_F(TransformHelpers, TheLongerProductChoosesTheSharedTransform) {
    // Two lengths of one row of the plan are equal transforms; two BKT ones are equal only at one length.
    EXPECT_TRUE(shared(605, 610));
    EXPECT_TRUE(shared(40, 40));
    EXPECT_FALSE(shared(40, 41));
    EXPECT_FALSE(shared(58, 59));
    EXPECT_FALSE(shared(610, 2000));
}

TEST_F(TransformHelpers, AWorkBufferOfExactlyTheSizePassesAndAByteLessDoesNot) {
    const auto C = random_mantissa<c64i>(100, rng), A = random_mantissa<c64i>(100, rng);
    const upL_t bytes = bytes_for(200, 200);
    ExactIn<c64i> T1(200), T2(200);
    Work exactly(bytes), less(bytes - 1);
    mul_shared(exactly.bp(), T1.x, T2.x, exact(C, 0), exact(A, 0), exact(A, 0));
    EXPECT_EQ(value(T1.x, 0), Integer(C) * Integer(A));
    expect_too_small("TransformHelper::TransformHelper()", bytes, bytes - 1,
                     [&] { mul_shared(less.bp(), T1.x, T2.x, exact(C, 0), exact(A, 0), exact(A, 0)); });
    EXPECT_TRUE(less.untouched());

    const upL_t big_bytes = bytes_for(206, 206);
    BigIn<c64i> S1(200), S2(200);
    Work big_less(big_bytes - 1), big_exactly(big_bytes);
    const auto c = big(C, 0), a = big(A, 0);
    expect_too_small("TransformHelper::TransformHelper()", big_bytes, big_bytes - 1,
                     [&] { mul_transformed(big_less.bp(), S1.x, c, a, 198); });
    expect_too_small("TransformHelper::TransformHelper()", big_bytes, big_bytes - 1,
                     [&] { mul_shared(big_less.bp(), S1.x, 198, S2.x, 198, c, a, a); });
    EXPECT_TRUE(big_less.untouched());
    mul_shared(big_exactly.bp(), S1.x, 198, S2.x, 198, c, a, a);
    EXPECT_EQ(value(S2.x, 0), Integer(C) * Integer(A));
}

TEST_F(TransformHelpers, UnsharedRoundsCheckTheBufferEach) {
    // The first product fits the buffer, the second does not.
    const auto C = random_mantissa<c64i>(100, rng), A = random_mantissa<c64i>(100, rng),
               B = random_mantissa<c64i>(900, rng);
    ExactIn<c64i> T1(200), T2(1000);
    Work work(bytes_for(200, 200));
    expect_too_small("TransformHelper::TransformHelper()", bytes_for(1000, 1000), bytes_for(200, 200),
                     [&] { mul_shared(work.bp(), T1.x, T2.x, exact(C, 0), exact(A, 0), exact(B, 0)); });
    EXPECT_EQ(value(T1.x, 0), Integer(C) * Integer(A));
}

TEST_F(TransformHelpers, ALengthBeyondTheTables) {
    const std::vector<c64i> one{1};
    const BigFloat<c64i> endless(one.data(), upL_t{1} << 58, 0);
    BigIn<c64i> T(3);
    const auto e =
        testing::caught<zn_exception>([&] { mul_transformed(BasicParameters{}, T.x, endless, endless, 1); });
    EXPECT_EQ(e.code, -4);
}

// 32-bit words above the range of BKT, whose transform is of 64-bit words only.
TEST_F(TransformHelpers, ThirtyTwoBitWords) {
    const auto C = random_mantissa<c32i>(150, rng), A = random_mantissa<c32i>(99, rng),
               B = random_mantissa<c32i>(420, rng);
    Work work(work_bytes_for<c32i>(580, 1));
    ExactIn<c32i> T1(249), T2(570);
    mul_shared(work.bp(), T1.x, T2.x, exact(C, 0), exact(A, 2), exact(B, 0));
    EXPECT_EQ(value(T1.x, 2), Integer(C) * Integer(A));
    EXPECT_EQ(value(T2.x, 0), Integer(C) * Integer(B));
    EXPECT_TRUE(consistent(T1.x) && consistent(T2.x));
    BigIn<c32i> S1(249), S2(570);
    mul_shared(work.bp(), S1.x, 568, S2.x, 568, big(C, 0), big(A, 2), big(B, 0));
    EXPECT_EQ(value(S1.x, 2), Integer(C) * Integer(A));
    EXPECT_EQ(value(S2.x, 0), Integer(C) * Integer(B));
}

}  // namespace
}  // namespace znp
