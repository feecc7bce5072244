#include "numbers/inverse_sqrt.hpp"

#include "foundation/exceptions.hpp"
#include "numbers/newton_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::BigIn;
using testing::console_output;
using testing::FaultyTransform;
using testing::Integer;
using testing::Lengths;
using testing::ScratchWords;
using testing::Work;

// In buffers of exactly the promised sizes.
class InverseSqrt {
  public:
    InverseSqrt(u64_t x, upL_t p) : y_(p + 4), y(y_.x) {
        ScratchWords scratch(invsqrt_scratch_words(p));
        Work work(invsqrt_work_bytes(p, 1));
        result = zlp_invsqrt_udw_B(work.bp(), y, x, p, scratch.get());
    }

  private:
    BigIn y_;

  public:
    BigFloatR& y;
    int result;
};

// log2 of the relative error of y = 1/sqrt(x), times B^p, from y y x = 1 + twice the error.
double error(const BigFloat& y, u64_t x, upL_t p) {
    const Integer mantissa(y.get_T(), y.get_L());
    const Integer square = mantissa * mantissa * Integer(&x, 1);
    const Integer one = Integer(1) << static_cast<u64_t>(-2 * y.get_exp()) * 64;
    return testing::relative_log2(square, one) - 1 + 64 * static_cast<double>(p);
}

// Small words, squares, and both ends of the range of a word, and their neighbours.
std::vector<u64_t> hard_words(std::mt19937_64& rng) {
    constexpr u64_t ones = ~u64_t{0};
    std::vector<u64_t> words{1, 2, 3, 4, 5, 9, 10005, 0xfffffffe00000001, ones, ones - 1, ones - 2, rng()};
    for (unsigned bit = 8; bit < 64; bit += 11) {
        for (const u64_t d : {u64_t{0}, u64_t{1}, ones}) words.push_back((u64_t{1} << bit) + d);
    }
    return words;
}

void check(u64_t x, upL_t p) {
    const InverseSqrt r(x, p);
    EXPECT_EQ(r.result, 0);
    EXPECT_TRUE(r.y.raw_sign());
    EXPECT_NE(r.y.get_T()[r.y.get_L() - 1], 0u);
    EXPECT_LT(error(r.y, x, p), testing::random_error_bound) << "p " << p << " x " << x;
}

TEST(InverseSqrts, EveryPrecision) {
    auto rng = testing::make_rng(81);
    for (upL_t p = 1; p <= testing::longest_sweep; p++) {
        for (const u64_t x : hard_words(rng)) {
            if (x < 16 && (x == 1 || x == 4 || x == 9)) continue;  // exact: below
            check(x, p);
        }
    }
}

TEST(InverseSqrts, RandomWords) {
    auto rng = testing::make_rng(82);
    for (int i = 0; i < 3000; i++) check((rng() >> rng() % 62) | 2, 1 + rng() % 40);
}

TEST(InverseSqrts, LongPrecisions) {
    auto rng = testing::make_rng(83);
    for (const upL_t p : testing::long_precisions) {
        for (const u64_t x : {u64_t{2}, u64_t{10005}, ~u64_t{0}, rng() | 2}) check(x, p);
    }
}

TEST(InverseSqrts, SquaresOfPowersOfTwoAreExact) {
    for (const upL_t p : Lengths{1, 2, 5, 9, 10, 23, 60, 130}) {
        for (unsigned bit = 0; bit < 32; bit++) {
            const u64_t x = u64_t{1} << 2 * bit;
            const InverseSqrt r(x, p);
            EXPECT_EQ(r.result, 0);
            const Integer mantissa(r.y.get_T(), r.y.get_L());
            EXPECT_TRUE(mantissa * mantissa * Integer(&x, 1) ==
                        Integer(1) << static_cast<u64_t>(-2 * r.y.get_exp()) * 64)
                << p << " " << bit;
        }
    }
}

TEST(InverseSqrts, SquaresWhoseInverseRootDoesNotEnd) {
    for (upL_t p = 1; p < 130; p += 1 + p / 5) {
        for (const u64_t root : {u64_t{3}, u64_t{10}, u64_t{0xffffffff}, u64_t{0xfffffffe}})
            check(root * root, p);
    }
}

TEST(InverseSqrts, ScratchOneWordShort) {
    for (upL_t p = 1; p < 100; p += 1 + p / 9) {
        ScratchWords scratch(invsqrt_scratch_words(p) - 1);
        Work work(invsqrt_work_bytes(p, 1));
        BigIn y(p + 4);
        std::string message;
        const std::string text = console_output([&] {
            message = testing::caught<zn_exception>([&] {
                          static_cast<void>(zlp_invsqrt_udw_B(work.bp(), y.x, 7, p, scratch.get()));
                      }).message;
        });
        const bool small = message == "zlm_invsqrt_udw_E(): Insufficient Allocated Space - PL";
        EXPECT_TRUE(small || (p > 9 && message == "zlm_invsqrt_udw_B(): Insufficient Allocated Space - PL"))
            << message;
        EXPECT_NE(text.find("Required"), std::string::npos);
        EXPECT_NE(text.find("Given"), std::string::npos);
    }
}

TEST(InverseSqrts, TenGoesThroughTheBigRoutineAndNineThroughTheSmall) {
    const auto message = [](upL_t p) {
        BigIn y(p + 4);
        ScratchWords none(0);
        return std::string(testing::caught<zn_exception>([&] {
                               static_cast<void>(zlp_invsqrt_udw_B(BasicParameters{}, y.x, 3, p, none.get()));
                           }).message);
    };
    EXPECT_EQ(message(9), "zlm_invsqrt_udw_E(): Insufficient Allocated Space - PL");
    EXPECT_EQ(message(10), "zlm_invsqrt_udw_B(): Insufficient Allocated Space - PL");
}

TEST(InverseSqrts, WrongTransformsAreReturnedAsTwo) {
    testing::BadTables bad;
    for (const upL_t p : Lengths{60, 200}) {
        ScratchWords scratch(invsqrt_scratch_words(p));
        Work work(invsqrt_work_bytes(p, 1));
        BasicParameters bp = work.bp();
        bp.holder = &bad.holder;
        BigIn y(p + 4);
        int result = 0;
        const std::string text =
            console_output([&] { result = zlp_invsqrt_udw_B(bp, y.x, 10005, p, scratch.get()); });
        EXPECT_EQ(result, 2);
        // By the check of a transform, or by the routine's own.
        EXPECT_TRUE(text.find("Redundancy Check Failed:") != std::string::npos ||
                    text.find("zlm_invsqrt_udw_B(): ") != std::string::npos)
            << text;
    }
}

// ---- One step

class InverseSqrtSteps : public ::testing::Test {
  protected:
    struct Step {
        Step(u64_t x_, upL_t p_)
            : x(x_),
              p(p_),
              h(newton::half_precision(p)),
              work(invsqrt_work_bytes(p, 1)),
              y0_words(h + 4),
              y(p + 4),
              scratch(invsqrt_scratch_words(p)),
              algorithm(make_transform<c64i>(bp = work.bp(), slot, p + 6)) {
            EXPECT_EQ(zlp_invsqrt_udw_B(bp, y0_words.x, x, h, scratch.get()), 0);
            y0 = y0_words.x.top_words(h);
        }
        void run() { invsqrt_step(bp, algorithm, y.x, x, y0, p, scratch.get()); }
        // What a run that fails has printed; its failure is the caller's to report.
        std::string failure() {
            return console_output([&] {
                const auto e = testing::caught<newton::ConvergenceFailure>([&] { run(); });
                EXPECT_EQ(e.code, error_code::numerical_result);
            });
        }
        c64i* words() { return const_cast<c64i*>(y0.get_T()); }

        u64_t x;
        upL_t p, h;
        Work work;
        BasicParameters bp;
        BigIn y0_words, y;
        BigFloat y0;
        ScratchWords scratch;
        TransformSlot slot;
        FaultyTransform algorithm;
    };
    std::mt19937_64 rng = testing::make_rng(84);
};

TEST_F(InverseSqrtSteps, OverAndUnderEstimatesBothHappen) {
    for (const upL_t p : Lengths{10, 16, 40, 51, 100, 180}) {
        int over = 0, under = 0;
        for (int i = 0; i < 60; i++) {
            Step step((rng() >> rng() % 60) | 2, p);
            if (i % 2 == 0 && step.words()[0] > 9) {
                step.words()[0] -= 9;
                step.y0 = BigFloat(step.words(), step.y0.get_L(), step.y0.get_exp());
            }
            step.run();
            const int order = ucmp(step.y.x, step.y0);
            (order < 0 ? over : under)++;
        }
        EXPECT_GT(over, 0) << p;
        EXPECT_GT(under, 0) << p;
    }
}

TEST_F(InverseSqrtSteps, TwoForwardsAndTwoInverses) {
    for (const upL_t p : Lengths{20, 120}) {
        Step step(7, p);
        step.run();
        EXPECT_EQ(step.algorithm.forwards, 2);
        EXPECT_EQ(step.algorithm.inverses, 2);
    }
}

TEST_F(InverseSqrtSteps, NothingToCorrect) {
    for (const upL_t p : Lengths{20, 120}) {
        Step step(64, p);
        step.run();
        EXPECT_EQ(ucmp(step.y.x, step.y0), 0);
    }
}

TEST_F(InverseSqrtSteps, AWrongEstimateFailsToConverge) {
    for (const upL_t p : Lengths{20, 51, 120}) {
        Step step(10005, p);
        step.words()[step.y0.get_L() - 3] ^= 0x10000;
        const std::string text = step.failure();
        EXPECT_EQ(text.find("Exception"), std::string::npos) << text;
        EXPECT_NE(text.find("zlm_invsqrt_udw_B(): Convergence Failure"), std::string::npos) << text;
        const std::size_t top = text.find("top: ");
        ASSERT_NE(top, std::string::npos) << text;
    }
}

TEST_F(InverseSqrtSteps, TheTopWordIsPrintedInHexadecimal) {
    // x = 1 and y0 = 1 + 0x123456 B^-10: its square has twice that, just below te = -11 + 2.
    constexpr upL_t p = 20, h = 10;
    Step step(1, p);
    std::vector<c64i> words(h + 2, 0);
    words.back() = 1;
    words[1] = 0x123456;  // position -10 = te - 1
    step.y0 = testing::big(words, -11);
    const std::string text = step.failure();
    EXPECT_NE(text.find("zlm_invsqrt_udw_B(): Convergence Failure"), std::string::npos) << text;
    EXPECT_NE(text.find("00000000002468ac"), std::string::npos) << text;
}

// Lengths of a transform without a check of its own.
TEST_F(InverseSqrtSteps, AWrongProductFailsItsResidue) {
    using Fault = FaultyTransform::Fault;
    for (const upL_t p : Lengths{12, 20}) {
        for (const auto& [fault, number] :
             {std::pair{Fault::after_forward, 1}, std::pair{Fault::before_inverse, 1}}) {
            Step step(10005, p);
            step.algorithm.arm(fault, number, 64 * 3 + 56);
            const std::string text = step.failure();
            EXPECT_NE(text.find("zlm_invsqrt_udw_B(): Residue Check Failure"), std::string::npos) << text;
        }
    }
}

}  // namespace
}  // namespace znp
