// What the Newton routines share: the moved low word, the chain of precisions, the residues of products.
#include "numbers/newton_steps.hpp"

#include "numbers/newton_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using newton::ProductCheck;
using testing::big;
using testing::BigIn;
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
    BigIn y(3);
    for (const auto& words : {A, carrying}) {
        for (const bool positive : {true, false}) {
            y.x.set_gfp(big(words, -4, positive), 3);
            newton::perturb(y.x, 2);
            BigFloat magnitude = y.x;
            if (!positive) magnitude.negate();
            EXPECT_EQ(value(magnitude, -4), Integer(words) + 1);
            EXPECT_EQ(y.x.raw_sign(), positive);
        }
    }
}

TEST(NewtonSteps, AResultOfJustPWordsStays) {
    const std::vector<c64i> A{5, 6, 7};
    BigIn y(3);
    for (const upL_t p : {upL_t{3}, upL_t{4}, upL_t{100}}) {
        y.x.set_gfp(big(A, -4), 3);
        newton::perturb(y.x, p);
        EXPECT_EQ(value(y.x, -4), Integer(A));
    }
}

TEST(NewtonSteps, TheCarryOutOfAllOnesDoesNotGrowTheNumber) {
    const std::vector<c64i> A{ones, ones, ones};
    BigIn y(3);  // no fourth word
    y.x.set_gfp(big(A, -3, false), 3);
    newton::perturb(y.x, 2);
    EXPECT_EQ(y.x.get_L(), 3u);
    EXPECT_FALSE(y.x.raw_sign());
    EXPECT_EQ(y.x.get_mag(), 1);
    y.x.negate();
    EXPECT_EQ(value(y.x, -3), Integer(1) << 3 * 64);
}

TEST(NewtonSteps, ResiduesOfWordsNextToOne) {
    EXPECT_EQ(newton::near_one_residue(1, false), 0u);
    EXPECT_EQ(newton::near_one_residue(1, true), 0u);
    for (s64_t position = 0; position > -40; position--) {
        const Integer one = Integer(1) << static_cast<u64_t>(-position) * 64;
        EXPECT_EQ(newton::near_one_residue(position, false), one.guard_residue());
        EXPECT_EQ(newton::near_one_residue(position, true), (one - 1).guard_residue());
    }
}

// ---- Products next to 1

constexpr newton::Routine routine{"name", "name(): Computation Failed", "name(): no space"};
constexpr newton::Routine silent{"name", nullptr, nullptr};

// What the action prints before it fails.
template <class Action>
std::string failure(const newton::Routine& r, Action action) {
    std::string message;
    const std::string text = testing::console_output([&] {
        const auto e = testing::caught<newton::ConvergenceFailure>(action);
        EXPECT_EQ(e.code, error_code::numerical_result);
        EXPECT_EQ(e.message, r.failed);
    });
    const std::size_t report = text.find("Exception Encountered");
    EXPECT_EQ(report != std::string::npos, r.failed != nullptr) << text;
    const std::string shown = testing::without_colors(text.substr(0, report));
    return shown.substr(0, shown.find_last_not_of('\n') + 1);
}

TEST(NewtonSteps, OneWordTellsTheSide) {
    EXPECT_FALSE(routine.is_under(1, 1));
    EXPECT_TRUE(routine.is_under(0, 1));
    EXPECT_FALSE(routine.is_under(0, 0));
    EXPECT_TRUE(routine.is_under(ones, 0));
    EXPECT_TRUE(routine.is_under(ones - 1, 0, 2));
    for (const newton::Routine& r : {routine, silent}) {
        EXPECT_EQ(failure(r, [&] { r.is_under(ones - 1, 0); }),
                  "\nname(): Convergence Failure\ntop: fffffffffffffffe");
        EXPECT_EQ(failure(r, [&] { r.is_under(ones - 2, 0, 2); }),
                  "\nname(): Convergence Failure\ntop: fffffffffffffffd");
        EXPECT_EQ(failure(r, [&] { r.is_under(2, 1); }),
                  "\nname(): Convergence Failure\ntop: 0000000000000002");
    }
}

TEST(NewtonSteps, DistanceFromOne) {
    const std::vector<c64i> above{5, 6, 0, 0, 1}, below{5, 6, ones, ones};
    BigIn T(5);
    T.x.set_gfp(big(above, -4), 5);
    routine.take_distance(T.x, false, 0, -2, 4);
    EXPECT_EQ(value(T.x, -4), Integer(std::vector<c64i>{5, 6}));
    T.x.set_gfp(big(below, -4), 5);
    routine.take_distance(T.x, true, 0, -2, 4);
    EXPECT_EQ(value(T.x, -4), (Integer(1) << 2 * 64) - Integer(std::vector<c64i>{5, 6}));
    T.x.set_gfp(big(above, -4), 5);
    routine.take_distance(T.x, false, -3, -3, 4);  // only the words below -3 count
    EXPECT_EQ(value(T.x, -4), Integer(5));
}

TEST(NewtonSteps, ADistanceAboveTheLimitFails) {
    const std::vector<c64i> above{5, 6, 0, 0, 1}, below{5, 6, ones, ones};
    BigIn T(5);
    const auto failing = [&](const std::vector<c64i>& words, s64_t exp, bool under, s64_t limit) {
        T.x.set_gfp(big(words, exp), 5);
        return failure(routine, [&] { routine.take_distance(T.x, under, 0, limit, 4); });
    };
    EXPECT_EQ(failing(above, -4, false, -3), "-2\n-4\n\nname(): Over-Estimate -> Convergence Failure");
    EXPECT_EQ(failing(below, -4, true, -3), "-2\n-4\n\nname(): Under-Estimate -> Convergence Failure");
    // Below 1, but not next to it.
    EXPECT_EQ(failing(below, -6, true, 0), "-2\n-4\n\nname(): Under-Estimate -> Convergence Failure");
    T.x.set_zero();
    EXPECT_EQ(failure(routine, [&] { routine.take_distance(T.x, true, 0, 0, 4); }),
              "\nname(): strip_l1s() resulted in zero.\ntop: 0000000000000000");
}

// ---- Verified products

// Products that wrap and products that do not, with the wrapped words known exactly or off by one.
TEST(NewtonSteps, ProductsAreVerifiedAgainstTheirOperands) {
    auto rng = testing::make_rng(101);
    for (const upL_t L : testing::Lengths{20, 30, 70, 100, 200}) {
        for (int i = 0; i < 20; i++) {
            const auto a = testing::random_mantissa(L, rng), b = testing::random_mantissa(L / 2 + 4, rng);
            Work work(300000);
            TransformSlot slot;
            const BasicParameters bp = work.bp();
            const transform& t = make_transform<c64i>(bp, slot, L + 8);
            const auto [T1, T2, scratch] = t.work_areas(bp.M);
            const Integer product = Integer(a) * Integer(b);
            const upL_t clen = t.max_bits / 64, n = a.size() + b.size();
            BigFloat::Transform A(big(a, 0), t, T1, scratch, L);
            const BigFloat::Transform B(big(b, 0), t, T2, scratch, L);
            ProductCheck check(big(a, 0), big(b, 0));
            BigIn out(n);
            check.whole = out.x.set_checked_fmul(scratch, A, B, static_cast<s64_t>(std::min(n, clen)), n);
            EXPECT_EQ(check.wrap_position(t), static_cast<s64_t>(clen));
            const Integer high = product >> clen * 64;
            EXPECT_TRUE(check.holds(t, high.guard_residue()));
            EXPECT_TRUE(check.holds(t, (high + 1).guard_residue(), 1));
            EXPECT_TRUE(check.holds(t, (high - 1).guard_residue(), 1));
            if (n > clen && t.modulus() != 0) {
                EXPECT_FALSE(check.holds(t, (high + 3).guard_residue(), 1));
                EXPECT_FALSE(check.holds(t, (high - 3).guard_residue(), 1));
                EXPECT_FALSE(check.holds(t, (high + 2).guard_residue()));
            }
            check.whole = guard::add(*check.whole, 1);
            EXPECT_FALSE(check.holds(t, high.guard_residue()));
        }
    }
}

}  // namespace
}  // namespace znp
