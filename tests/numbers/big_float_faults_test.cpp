// Bits flipped in the words of an operand, before an operation or after it: no result passes that differs
// from the right one. Either the operation fails its check, or the result's residue is not that of its words.
#include <array>
#include <functional>

#include "foundation/repeat_once.hpp"
#include "multiply/dispatch.hpp"
#include "numbers/division.hpp"
#include "numbers/newton_test_support.hpp"
#include "numbers/product_chain.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::big;
using testing::BigIn;
using testing::console_output;
using testing::FaultyTransform;
using testing::Integer;
using testing::random_mantissa;
using testing::ScratchWords;
using testing::value;
using testing::Work;

using Words = std::vector<cdi>;

struct Operation {
    const char* name;
    std::function<void(BigFloatR& out, const BigFloat& a, const BigFloat& b, const BasicParameters& bp)> run;
};

constexpr upL_t length = 40;
constexpr upL_t precision = 25;

const std::array operations{
    Operation{"sum", [](auto& out, const auto& a, const auto& b, auto&) { out.set_uadd(a, b, 2 * length); }},
    Operation{"cut sum",
              [](auto& out, const auto& a, const auto& b, auto&) { out.set_uadd(a, b, precision); }},
    Operation{"difference",
              [](auto& out, const auto& a, const auto& b, auto&) { out.set_sub(a, b, 3 * length); }},
    Operation{"cut difference",
              [](auto& out, const auto& a, const auto& b, auto&) { out.set_usub(b, a, precision); }},
    Operation{"difference of windows", [](auto& out, const auto& a, const auto& b,
                                          auto&) { out.set_rsub(a, b, b.get_mag() - 3, precision, true); }},
    Operation{"product",
              [](auto& out, const auto& a, const auto& b, auto& bp) { out.set_mul(bp, a, b, 2 * length); }},
    Operation{"cut product",
              [](auto& out, const auto& a, const auto& b, auto& bp) { out.set_mul(bp, a, b, precision); }},
    Operation{"short product", [](auto& out, const auto& a, const auto& b,
                                  auto& bp) { out.set_mul(bp, a.top_words(6), b.top_words(4), 7); }},
    Operation{"square",
              [](auto& out, const auto& a, const auto&, auto& bp) { out.set_sqr(bp, a, precision); }},
    Operation{"half-length convolutions",
              [](auto& out, const auto& a, const auto& b, auto& bp) { out.set_mulp(bp, a, b, precision); }},
    Operation{"product with a word",
              [](auto& out, const auto& a, const auto&, auto&) { out.set_mul_uW(a, 77); }},
    Operation{"copy of the top",
              [](auto& out, const auto& a, const auto&, auto&) { out.set_gfp(a, precision); }},
    Operation{"steps in place",
              [](auto& out, const auto& a, const auto&, auto&) {
                  out.set_gfp(a, 2 * length);
                  out.mul_uW(~cdi{0});
                  out.add_ip((u128_t{5} << 64) + 9, a.get_exp() + 7);
                  out.shift_exp(-3);
                  out.truncate_top(out.get_mag() - 5);
                  out.negate_twos_complement();
              }},
    Operation{"sum of transformed operands",
              [](auto& out, const auto& a, const auto& b, auto& bp) {
                  BigIn product(2 * length);
                  multiply_chain(bp, std::array{TruncatedProduct{out, a, b, precision, &a, true, &product.x}},
                                 ChainTransforms::own);
              }},
};

class BigFloatFaults : public ::testing::Test {
  protected:
    enum class Result { refused, noticed, right, wrong };

    // With a bit of a or b flipped in the words.
    Result flipped(const Operation& operation) {
        Words A = random_mantissa(length, rng), B = random_mantissa(length, rng);
        const BigFloat a = big(A, -5), b = big(B, 2);
        Work work(work_bytes_for<cdi>(4 * length, 1));
        const BasicParameters bp = work.bp();
        BigIn right(3 * length), out(3 * length);
        operation.run(right.x, a, b, bp);
        const s64_t low = std::min<s64_t>(right.x.get_exp(), -2 * static_cast<s64_t>(length));
        const Integer expected = value(right.x, low);

        Words& words = (rng() & 1) != 0 ? A : B;
        words[rng() % length] ^= cdi{1} << rng() % 64;
        Result result = Result::refused;
        const std::string text = console_output([&] {
            try {
                operation.run(out.x, a, b, bp);
            } catch (const ArithmeticFailure&) {
                return;
            }
            if (out.x.hash_error() != 0) {
                result = Result::noticed;
            } else {
                const s64_t lowest = std::min(low, out.x.get_exp());
                const Integer as_right = expected << static_cast<u64_t>(low - lowest) * 64;
                result = value(out.x, lowest) == as_right ? Result::right : Result::wrong;
            }
        });
        return result;
    }

    std::mt19937_64 rng = testing::make_rng(801);
};

TEST_F(BigFloatFaults, NoFlippedOperandGivesAWrongResultUnnoticed) {
    for (const Operation& operation : operations) {
        std::array<int, 4> counts{};
        for (int i = 0; i < 200; i++) counts[static_cast<unsigned>(flipped(operation))]++;
        EXPECT_EQ(counts[static_cast<unsigned>(Result::wrong)], 0) << operation.name;
        EXPECT_GT(
            counts[static_cast<unsigned>(Result::refused)] + counts[static_cast<unsigned>(Result::noticed)],
            0)
            << operation.name;
    }
}

TEST_F(BigFloatFaults, ResiduesFollowTheWordsOfHardOperands) {
    for (const Operation& operation : operations) {
        for (int i = 0; i < 200; i++) {
            const Words A = random_mantissa(length, rng), B = random_mantissa(length, rng);
            Work work(work_bytes_for<cdi>(4 * length, 1));
            BigIn out(3 * length);
            operation.run(out.x, big(A, -5), big(B, 2), work.bp());
            ASSERT_EQ(out.x.hash_error(), 0u) << operation.name;
        }
    }
}

// The divisor changes between the steps: the quotient is refused, or carries the residue of the right one.
TEST_F(BigFloatFaults, ADivisionByAFlippedNumberIsNoticed) {
    constexpr upL_t p = 60;
    int refused = 0;
    for (int i = 0; i < 300; i++) {
        Words A = random_mantissa(p + 2, rng), B = random_mantissa(p + 2, rng);
        const BigFloat a = big(A, 0), b = big(B, 0);
        Work work(div_work_bytes(p, 1));
        ScratchWords scratch(div_scratch_words(p));
        BigIn Q(p + 3);
        zlm_div_t9_B(work.bp(), Q.x, a, b, p, scratch.get());
        const s64_t low = Q.x.get_exp();
        const Integer expected = value(Q.x, low);
        Words& words = i % 2 == 0 ? A : B;
        words[rng() % (p + 2)] ^= cdi{1} << rng() % 64;
        const std::string text = console_output([&] {
            try {
                zlm_div_t9_B(work.bp(), Q.x, a, b, p, scratch.get());
                if (Q.x.hash_error() == 0) {
                    EXPECT_EQ(value(Q.x, low), expected);
                }
            } catch (const ArithmeticFailure&) {
                refused++;
            }
        });
    }
    EXPECT_GT(refused, 100);
}

// ---- Chains

TEST_F(BigFloatFaults, AProductOfAChainIsRepeatedOnceFromWholeOperands) {
    const Words A = random_mantissa(300, rng), B = random_mantissa(310, rng), C = random_mantissa(290, rng);
    const BigFloat a = big(A, 0), b = big(B, 0), c = big(C, 0);
    Work work(work_bytes_for<cdi>(700, 1));
    TransformSlot slot;
    const transform& target = make_transform<cdi>(work.bp(), slot, 620);
    // c a, c b: forward steps 0 to 2, inverse steps 0 and 1.
    for (const auto fault : {FaultyTransform::Fault::after_forward, FaultyTransform::Fault::before_inverse}) {
        for (const int step : {0, 1}) {
            FaultyTransform algorithm(target);
            algorithm.arm(fault, step, target.transform_bytes * 4 + 62);
            const std::array<const transform*, 2> transforms{&algorithm, &algorithm};
            BigIn X(620), Y(620);
            const u64_t before = RecoveredErrors::count();
            const std::string text = console_output([&] {
                multiply_chain(work.bp(),
                               std::array{TruncatedProduct{X.x, c, a, 620}, TruncatedProduct{Y.x, c, b, 620}},
                               transforms);
            });
            EXPECT_EQ(RecoveredErrors::count(), before + 1) << step;
            EXPECT_NE(text.find("Re-attempting..."), std::string::npos);
            EXPECT_EQ(value(X.x, 0), Integer(C) * Integer(A));
            EXPECT_EQ(value(Y.x, 0), Integer(C) * Integer(B));
        }
    }
}

TEST_F(BigFloatFaults, AChainWithABrokenOperandFailsAtOnce) {
    Words A = random_mantissa(300, rng);
    const Words B = random_mantissa(310, rng);
    const BigFloat a = big(A, 0), b = big(B, 0);
    A[200] ^= 1;
    Work work(work_bytes_for<cdi>(700, 1));
    BigIn X(620), product(620);
    const u64_t before = RecoveredErrors::count();
    const std::string text = console_output([&] {
        EXPECT_THROW(
            multiply_chain(work.bp(), std::array{TruncatedProduct{X.x, a, b, 620, &b, false, &product.x}},
                           ChainTransforms::own),
            ArithmeticFailure);
    });
    EXPECT_EQ(RecoveredErrors::count(), before);
    EXPECT_EQ(text.find("Re-attempting..."), std::string::npos);
}

}  // namespace
}  // namespace znp
