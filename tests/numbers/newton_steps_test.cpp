// What the Newton routines share: the moved low word, the chain of precisions, the residues of products.
#include "numbers/newton_steps.hpp"

#include "numbers/newton_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using newton::ProductCheck;
using testing::big;
using testing::BigIn;
using testing::Float;
using testing::Integer;
using testing::value;
using testing::Work;

constexpr c64i ones = ~c64i{0};

TEST(NewtonSteps, ChainOfPrecisions) {
    EXPECT_EQ(newton::half_precision(1), 0u);
    EXPECT_EQ(newton::half_precision(2), 1u);
    EXPECT_EQ(newton::half_precision(3), 2u);
    EXPECT_EQ(newton::half_precision(4), 2u);
    EXPECT_EQ(newton::half_precision(9), 5u);
    EXPECT_EQ(newton::half_precision(10), 5u);
    EXPECT_EQ(newton::half_precision(1025), 513u);
}

TEST(NewtonSteps, ALongResultGetsItsLowWordIncremented) {
    const std::vector<c64i> A{5, 6, 7}, carrying{ones, ones, 7};
    BigIn<c64i> y(3);
    for (const auto& words : {A, carrying}) {
        for (const bool positive : {true, false}) {
            y.x.set_gfp(big(words, -4, positive), 3);
            newton::perturb(y.x, 2);
            BigFloat<c64i> magnitude = y.x;
            if (!positive) magnitude.negate();
            EXPECT_EQ(value(magnitude, -4), Integer(words) + 1);
            EXPECT_EQ(y.x.raw_sign(), positive);
        }
    }
}

TEST(NewtonSteps, AResultOfJustPWordsStays) {
    const std::vector<c64i> A{5, 6, 7};
    BigIn<c64i> y(3);
    for (const upL_t p : {upL_t{3}, upL_t{4}, upL_t{100}}) {
        y.x.set_gfp(big(A, -4), 3);
        newton::perturb(y.x, p);
        EXPECT_EQ(value<c64i>(y.x, -4), Integer(A));
    }
}

TEST(NewtonSteps, TheCarryOutOfAllOnesDoesNotGrowTheNumber) {
    const std::vector<c64i> A{ones, ones, ones};
    BigIn<c64i> y(3);  // no fourth word
    y.x.set_gfp(big(A, -3, false), 3);
    newton::perturb(y.x, 2);
    EXPECT_EQ(y.x.get_L(), 3u);
    EXPECT_FALSE(y.x.raw_sign());
    EXPECT_EQ(y.x.get_mag(), 1);
    y.x.negate();
    EXPECT_EQ(value<c64i>(y.x, -3), Integer(1) << 3 * 64);
}

TEST(NewtonSteps, ResiduesOfWordsNextToOne) {
    EXPECT_EQ(newton::near_one_residue(1, false), 0u);
    EXPECT_EQ(newton::near_one_residue(1, true), 0u);
    for (s64_t position = 0; position > -40; position--) {
        const Integer one = Integer(1) << static_cast<u64_t>(-position) * 64;
        EXPECT_EQ(newton::near_one_residue(position, false), one.residue());
        EXPECT_EQ(newton::near_one_residue(position, true), (one - 1).residue());
    }
}

// Products that wrap and products that do not, with the wrapped words known exactly or off by one.
TEST(NewtonSteps, ProductsAreVerifiedAgainstTheirOperands) {
    auto rng = testing::make_rng(101);
    for (const upL_t L : testing::Lengths{20, 30, 70, 100, 200}) {
        for (int i = 0; i < 20; i++) {
            const auto a = testing::random_mantissa<c64i>(L, rng),
                       b = testing::random_mantissa<c64i>(L / 2 + 4, rng);
            Work work(300000);
            TransformSlot slot;
            const BasicParameters bp = work.bp();
            const transform& t = make_transform<c64i>(bp, slot, L + 8);
            std::byte *T1 = bp.M, *T2 = T1 + t.transform_bytes, *scratch = T2 + t.transform_bytes;
            const Integer product = Integer(a) * Integer(b);
            const upL_t clen = t.max_bits / 64, n = a.size() + b.size();
            Float::Transform A(big(a, 0), scratch, t, T1, L);
            const Float::Transform B(big(b, 0), scratch, t, T2, L);
            ProductCheck check(big(a, 0), big(b, 0));
            BigIn<c64i> out(n);
            check.whole = out.x.set_checked_fmul(scratch, A, B, static_cast<s64_t>(std::min(n, clen)), n);
            EXPECT_EQ(check.wrap_position(t), static_cast<s64_t>(clen));
            const Integer high = product >> clen * 64;
            EXPECT_TRUE(check.holds(t, high.residue()));
            EXPECT_TRUE(check.holds(t, (high + 1).residue(), 1));
            EXPECT_TRUE(check.holds(t, (high - 1).residue(), 1));
            if (n > clen && t.modulus() != 0) {
                EXPECT_FALSE(check.holds(t, (high + 3).residue(), 1));
                EXPECT_FALSE(check.holds(t, (high - 3).residue(), 1));
                EXPECT_FALSE(check.holds(t, (high + 2).residue()));
            }
            check.whole = residue::add(*check.whole, 1);
            EXPECT_FALSE(check.holds(t, high.residue()));
        }
    }
}

}  // namespace
}  // namespace znp
