#include "numbers/division.hpp"

#include "foundation/exceptions.hpp"
#include "numbers/newton_test_support.hpp"
#include "numbers/reciprocal.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::big;
using testing::BigIn;
using testing::caught;
using testing::console_output;
using testing::FaultyTransform;
using testing::hard_operands;
using testing::Integer;
using testing::Lengths;
using testing::Operand;
using testing::quotient_error;
using testing::ScratchWords;
using testing::value;
using testing::Work;

// In buffers of exactly the promised sizes.
class Quotient {
  public:
    Quotient(const BigFloat& A, const BigFloat& B, upL_t p) : Q_(p + 3), Q(Q_.x) {
        ScratchWords scratch(div_scratch_words(p));
        Work work(div_work_bytes(p, 1));
        zlm_div_t9_B(work.bp(), Q, A, B, p, scratch.get());
    }

  private:
    BigIn Q_;

  public:
    BigFloatR& Q;
};

void check(const Operand& a, s64_t a_exp, const Operand& b, s64_t b_exp, upL_t p) {
    const BigFloat A = big(a.words, a_exp, p % 3 != 0), B = big(b.words, b_exp, p % 2 != 0);
    const Quotient q(A, B, p);
    const double bound = std::max(a.error_bound(), b.error_bound());
    EXPECT_LT(quotient_error(q.Q, A, B, p), bound)
        << "p " << p << " lengths " << a.words.size() << " " << b.words.size();
    EXPECT_EQ(q.Q.raw_sign(), A.raw_sign() == B.raw_sign());
}

TEST(Divisions, EveryPrecision) {
    auto rng = testing::make_rng(91);
    for (upL_t p = 1; p <= testing::longest_sweep; p++) {
        for (const upL_t L : {upL_t{1}, p + 2}) {
            const auto as = hard_operands(L, rng), bs = hard_operands(p + 2 - rng() % 2, rng);
            for (upL_t i = 0; i < as.size(); i++) {
                const upL_t j = p < 80 ? rng() % bs.size() : i;
                check(as[i], -2, bs[j], static_cast<s64_t>(rng() % 9), p);
                check(bs[j], 5, as[i], -1, p);
            }
        }
    }
}

TEST(Divisions, OperandsOfEveryLength) {
    auto rng = testing::make_rng(92);
    for (upL_t L = 1; L <= testing::longest_sweep; L++) {
        const auto as = hard_operands(L, rng), bs = hard_operands(1 + rng() % testing::longest_sweep, rng);
        for (upL_t i = 0; i < as.size(); i++) {
            check(as[i], 0, bs[rng() % bs.size()], -7, 1 + rng() % testing::longest_sweep);
        }
    }
}

TEST(Divisions, LongPrecisions) {
    auto rng = testing::make_rng(93);
    for (const upL_t p : testing::long_precisions) {
        const auto as = hard_operands(p + 1, rng), bs = hard_operands(p - 1, rng);
        for (upL_t i = 0; i < as.size(); i++) check(as[i], 0, bs[(i + p) % bs.size()], 0, p);
    }
}

TEST(Divisions, IntegersAgainstTheExactQuotient) {
    // A = b q exactly, and a quotient with words to spare.
    auto rng = testing::make_rng(94);
    for (upL_t n = 1; n < 120; n += 1 + n / 7) {
        const auto b = testing::random_mantissa(n, rng), q = testing::random_mantissa(n, rng);
        auto a = testing::exact_product(b, q);
        if (a.back() == 0) a.pop_back();
        const Quotient r(big(a, 0), big(b, 0), n + 3);
        // The nearest integer is the quotient.
        const s64_t low = std::min<s64_t>(r.Q.get_exp(), 0);
        const u64_t down = static_cast<u64_t>(-low) * 64;
        const Integer half = down == 0 ? Integer(0) : Integer(1) << (down - 1);
        EXPECT_EQ((value(r.Q, low) + half) >> down, Integer(q));
    }
}

TEST(Divisions, ZeroDividendNeedsNoReciprocal) {
    // B is zero and there is no scratch: a reciprocal would fail.
    for (const upL_t p : Lengths{1, 9, 10, 80}) {
        BigIn Q(0);
        ScratchWords none(0);
        EXPECT_NO_THROW(zlm_div_t9_B(BasicParameters{}, Q.x, BigFloat(), BigFloat(), p, none.get()));
        EXPECT_TRUE(Q.x.is_zero());
    }
}

TEST(Divisions, ByZero) {
    const std::vector<c64i> a{5};
    for (const upL_t p : Lengths{1, 9, 10, 80}) {
        const auto e = caught<zn_exception>([&] { Quotient q(big(a, 0), BigFloat(), p); });
        EXPECT_EQ(e.code, error_code::divide_by_zero);
        EXPECT_STREQ(e.message, "zlb_rcp_E(): Divide-by-Zero");
    }
}

TEST(Divisions, ScratchOneWordShort) {
    const std::vector<c64i> a{5};
    for (const upL_t p : Lengths{1, 2, 9, 10, 33, 80}) {
        ScratchWords scratch(div_scratch_words(p) - 1);
        Work work(div_work_bytes(p, 1));
        BigIn Q(p + 3);
        std::string message;
        const std::string text = console_output([&] {
            message = caught<zn_exception>([&] {
                          zlm_div_t9_B(work.bp(), Q.x, big(a, 0), big(a, 0), p, scratch.get());
                      }).message;
        });
        EXPECT_EQ(message, "zlp_div_t9_B(): Insufficient Allocated Space - PL");
        EXPECT_NE(text.find("Required"), std::string::npos);
        EXPECT_NE(text.find("Given"), std::string::npos);
    }
}

// ---- The step after the reciprocal

class DivisionSteps : public ::testing::Test {
  protected:
    struct Step {
        Step(const BigFloat& A_, const BigFloat& B_, upL_t p_)
            : A(A_),
              B(B_),
              p(p_),
              h(newton::half_precision(p)),
              work(div_work_bytes(p, 1)),
              r_words(h + 3),
              Q(p + 3),
              scratch(div_scratch_words(p)),
              step_scratch(3 * h + 11),
              algorithm(make_transform<c64i>(bp = work.bp(), slot, p + 9)) {
            zlp_rcp_B(bp, r_words.x, B, h, scratch.get());
            r = r_words.x.top_words(h);
        }
        void run() { zlp_div_t9_B(bp, algorithm, Q.x, A, B, r, p, step_scratch.get()); }

        BigFloat A, B;
        upL_t p, h;
        Work work;
        BasicParameters bp;
        BigIn r_words, Q;
        BigFloat r;
        ScratchWords scratch, step_scratch;
        TransformSlot slot;
        FaultyTransform algorithm;
    };
    static std::vector<c64i> random_words(upL_t n, std::mt19937_64& rng) {
        std::vector<c64i> x(n);
        for (c64i& w : x) w = rng() | 1;
        return x;
    }
    std::mt19937_64 rng = testing::make_rng(95);
};

TEST_F(DivisionSteps, CorrectionsOfBothSignsHappen) {
    for (const upL_t p : Lengths{10, 40, 51, 120}) {
        int up = 0, down = 0;
        for (int i = 0; i < 60; i++) {
            const auto a = random_words(p + 2, rng), b = random_words(p + 2, rng);
            Step step(big(a, 0), big(b, 0), p);
            auto* low = const_cast<c64i*>(step.r.get_T());
            if (i % 2 == 0 && low[0] > 9) {
                low[0] -= 9;
                step.r = BigFloat(low, step.r.get_L(), step.r.get_exp());
            }
            step.run();
            EXPECT_LT(quotient_error(step.Q.x, step.A, step.B, p), testing::random_error_bound);
            BigIn y0(step.h + 2);
            y0.x.set_mul(step.bp, step.A.top_words(step.h), step.r, step.h);
            (ucmp(step.Q.x, y0.x) > 0 ? up : down)++;
        }
        EXPECT_GT(up, 0) << p;
        EXPECT_GT(down, 0) << p;
    }
}

TEST_F(DivisionSteps, FourForwardsAndTwoInverses) {
    for (const upL_t p : Lengths{20, 120}) {
        const auto a = random_words(p, rng), b = random_words(p, rng);
        Step step(big(a, 0), big(b, 0), p);
        step.run();
        EXPECT_EQ(step.algorithm.forwards, 4);
        EXPECT_EQ(step.algorithm.inverses, 2);
    }
}

// The words next to te: A has zeros or ones there, and the product is on the other side.
TEST_F(DivisionSteps, BorrowsAcrossTheKnownWords) {
    for (const upL_t p : Lengths{10, 20, 51, 120}) {
        for (const c64i middle : {c64i{0}, ~c64i{0}}) {
            for (const c64i top : {c64i{1}, c64i{1} << 63, ~c64i{0}}) {
                for (int i = 0; i < 20; i++) {
                    std::vector<c64i> a(p + 2, middle);
                    a.back() = top;
                    const auto b = random_words(p + 2, rng);
                    Step step(big(a, -3), big(b, 0, i % 2 == 0), p);
                    step.run();
                    EXPECT_LT(quotient_error(step.Q.x, step.A, step.B, p), testing::hard_error_bound);
                }
            }
        }
    }
}

TEST_F(DivisionSteps, AWrongReciprocalFailsToConverge) {
    for (const upL_t p : Lengths{20, 51, 120}) {
        const auto a = random_words(p, rng), b = random_words(p, rng);
        Step step(big(a, 0), big(b, 0), p);
        const_cast<c64i*>(step.r.get_T())[step.r.get_L() - 3] ^= 0x10000;
        step.r = BigFloat(step.r.get_T(), step.r.get_L(), step.r.get_exp());
        zn_exception e(0);
        const std::string text = console_output([&] { e = caught<zn_exception>([&] { step.run(); }); });
        EXPECT_EQ(e.code, error_code::numerical_result);
        EXPECT_STREQ(e.message, "zlp_div_t9_B(): Computation Failed");
        const std::size_t failure = text.find("zlm_div_t9_B(): Convergence Failure");
        const std::size_t topA = text.find("topA: "), topB = text.find("topB: ");
        EXPECT_TRUE(failure < topA && topA < topB && topB != std::string::npos) << text;
        // A's word just below te stands there in hexadecimal.
        const s64_t te = step.A.get_mag() - static_cast<s64_t>(step.h) + 3;
        char digits[20];
        std::snprintf(digits, sizeof digits, "%016llx",
                      static_cast<unsigned long long>(step.A.word_at(te - 1)));
        EXPECT_NE(text.find(digits, topB), std::string::npos) << text;
    }
}

// Lengths of a transform without a check of its own.
TEST_F(DivisionSteps, AWrongProductFailsItsResidue) {
    using Fault = FaultyTransform::Fault;
    for (const upL_t p : Lengths{12, 20}) {
        const auto a = random_words(p, rng), b = random_words(p, rng);
        for (const auto& [fault, number] :
             {std::pair{Fault::after_forward, 2}, std::pair{Fault::after_forward, 3},
              std::pair{Fault::before_inverse, 1}}) {
            Step step(big(a, 0), big(b, 0), p);
            step.algorithm.arm(fault, number, 64 * 3 + 56);
            zn_exception e(0);
            const std::string text = console_output([&] { e = caught<zn_exception>([&] { step.run(); }); });
            EXPECT_STREQ(e.message, "zlp_div_t9_B(): Computation Failed");
            EXPECT_NE(text.find("zlp_div_t9_B(): Residue Check Failure"), std::string::npos) << text;
        }
    }
}

}  // namespace
}  // namespace znp
