// The schedules of the merges in every arithmetic that carries them out, against integers of an independent
// library.

#include "multiply/dispatch.hpp"
#include "numbers/float_test_support.hpp"
#include "series/classes/bbp.hpp"
#include "series/classes/euler_gamma_ab.hpp"
#include "series/classes/taylor.hpp"
#include "series/classes/type0.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::big;
using testing::BigIn;
using testing::consistent;
using testing::exact;
using testing::ExactIn;
using testing::Integer;
using testing::random_mantissa;
using testing::value;
using testing::Work;

using Words = std::vector<cdi>;

// With the top bit set, so that a precision in words is one in bits.
Words full_words(upL_t L, std::mt19937_64& rng) {
    Words words = random_mantissa(L, rng);
    words.back() |= cdi{1} << 63;
    return words;
}

// P, Q, R of the halves; L words each, those of the left P a word more, so that a difference is positive.
struct Halves {
    Halves(upL_t L, std::mt19937_64& rng)
        : Pl(full_words(L + 1, rng)),
          Ql(full_words(L, rng)),
          Rl(full_words(L, rng)),
          Pr(full_words(L, rng)),
          Qr(full_words(L, rng)),
          Rr(full_words(L, rng)) {}
    Words Pl, Ql, Rl, Pr, Qr, Rr;
};

struct Sums {
    Integer P, Q, R;
};
Sums sums(const Halves& h, const Words& factor, bool subtract) {
    const Integer first = Integer(h.Pl) * Integer(h.Qr);
    const Integer second = Integer(factor) * Integer(h.Pr);
    return {subtract ? first - second : first + second, Integer(h.Ql) * Integer(h.Qr),
            Integer(h.Rl) * Integer(h.Rr)};
}

// What a class multiplies Pr with.
template <class Rules>
Words factor(const Halves& h) {
    if constexpr (std::is_same_v<Rules, TaylorRules>) return {1};
    return std::is_same_v<Rules, BBPRules> ? h.Ql : h.Rl;
}

template <class Number>
struct Operands {
    Number P, Q, R;
};

template <class Merge>
class Merges : public ::testing::Test {
  protected:
    std::mt19937_64 rng = testing::make_rng(640);
};
using Classes = ::testing::Types<TaylorRules, BBPRules, Type0Rules>;
TYPED_TEST_SUITE(Merges, Classes);

constexpr upL_t lengths[] = {1, 2, 9, 10, 28, 29, 30, 31, 100, 300, 2000, 4500};

TYPED_TEST(Merges, OfIntegers) {
    for (const upL_t L : {1u, 2u, 5u, 14u}) {
        for (const bool subtract : {false, true}) {
            Halves h(L, this->rng);
            const Sums expected = sums(h, factor<TypeParam>(h), subtract);
            const auto number = [](Words& words) {
                const upL_t n = words.size();
                words.resize(3 * n + 4);  // room for a sum with the addend
                BasicIntR x(words.data(), words.size());
                x.set_LN(n);
                return x;
            };
            BasicIntR Pl = number(h.Pl), Ql = number(h.Ql), Rl = number(h.Rl);
            BasicIntR Pr = number(h.Pr), Qr = number(h.Qr), Rr = number(h.Rr);
            Words words[4] = {Words(2 * L + 3), Words(2 * L + 3), Words(2 * L + 3), Words(2 * L + 3)};
            BasicIntR P(words[0].data(), 2 * L + 3), Q(words[1].data(), 2 * L + 3),
                R(words[2].data(), 2 * L + 3), t(words[3].data(), 2 * L + 3);
            TypeParam::merge_by(IntegerArithmetic(), MergeResults<BasicIntR>{P, Q, &t, &R},
                                Operands<BasicIntR&>{Pl, Ql, Rl}, Operands<BasicIntR&>{Pr, Qr, Rr}, subtract);
            EXPECT_EQ(Integer(P), expected.P);
            EXPECT_EQ(Integer(Q), expected.Q);
            if (std::is_same_v<TypeParam, Type0Rules>) {
                EXPECT_EQ(Integer(R), expected.R);
            }
        }
    }
}

// In place: each result's buffer starts at the left operand of its name and reaches over the right one.
// Taylor's right P lies in the temporary.
TYPED_TEST(Merges, OfExactNumbersInPlace) {
    for (const upL_t L : lengths) {
        for (const bool subtract : {false, true}) {
            for (const bool with_R : {false, true}) {
                const Halves h(L, this->rng);
                const Sums expected = sums(h, factor<TypeParam>(h), subtract);
                const upL_t n = 2 * L + 3;
                ExactIn P(n), Q(n), R(n), t(n);
                const auto operand = [](const ExactIn& buffer, upL_t offset, const Words& words) {
                    std::copy(words.begin(), words.end(), buffer.x.get_base() + offset);
                    return ExactFloat(buffer.x.get_base() + offset, words.size(), 0,
                                      exact(words, 0).get_hash());
                };
                const Operands<ExactFloat> left{operand(P, 0, h.Pl), operand(Q, 0, h.Ql),
                                                operand(R, 0, h.Rl)};
                constexpr bool taylor = std::is_same_v<TypeParam, TaylorRules>;
                const Operands<ExactFloat> right{operand(taylor ? t : P, taylor ? 0 : L + 1, h.Pr),
                                                 operand(Q, L, h.Qr), operand(R, L, h.Rr)};
                Work work(work_bytes_for<cdi>(2 * L + 1, 1));
                TypeParam::merge_by(ExactArithmetic(work.bp()),
                                    MergeResults<ExactFloatR>{P.x, Q.x, &t.x, with_R ? &R.x : nullptr}, left,
                                    right, subtract);
                EXPECT_EQ(value(P.x, 0), expected.P) << L;
                EXPECT_EQ(value(Q.x, 0), expected.Q) << L;
                EXPECT_TRUE(consistent(P.x) && consistent(Q.x));
                if (with_R && std::is_same_v<TypeParam, Type0Rules>) {
                    EXPECT_EQ(value(R.x, 0), expected.R) << L;
                    EXPECT_TRUE(consistent(R.x));
                }
            }
        }
    }
}

// To more words than there are, and to fewer: the leading ones are right.
TYPED_TEST(Merges, OfTruncatedNumbers) {
    for (const upL_t L : lengths) {
        for (const bool subtract : {false, true}) {
            for (const upL_t p : {3 * L, L + 1, L / 2 + 1}) {
                const Halves h(L, this->rng);
                const Sums expected = sums(h, factor<TypeParam>(h), subtract);
                const Operands<BigFloat> left{big(h.Pl, 0), big(h.Ql, 0), big(h.Rl, 0)};
                const Operands<BigFloat> right{big(h.Pr, 0), big(h.Qr, 0), big(h.Rr, 0)};
                const upL_t n = std::min(2 * L + 1, p + 2);
                BigIn P(n + 1), Q(n), R(n), x(n), t(n);
                Work work(work_bytes_for<cdi>(truncated_merge_words(L + 1, L, p), 1));
                TypeParam::merge_by(TruncatedArithmetic(work.bp(), p, p, x.x),
                                    MergeResults<BigFloatR>{P.x, Q.x, &t.x, &R.x}, left, right, subtract);
                const auto error_bits = [&](const BigFloat& y, const Integer& exact_value) {
                    const s64_t low = std::min<s64_t>(0, y.get_exp());
                    return (value(y, low) - (exact_value << static_cast<u64_t>(-low) * 64)).log2() -
                           exact_value.log2();
                };
                const double allowed = p == 3 * L ? -1e9 : -64 * static_cast<double>(p);
                EXPECT_LE(error_bits(P.x, expected.P), allowed) << L << ' ' << p;
                EXPECT_LE(error_bits(Q.x, expected.Q), allowed) << L << ' ' << p;
                if (std::is_same_v<TypeParam, Type0Rules>) {
                    EXPECT_LE(error_bits(R.x, expected.R), allowed) << L << ' ' << p;
                }
            }
        }
    }
}

// ---- U, V, W, X

struct ABHalf {
    ABHalf(upL_t L, std::mt19937_64& rng)
        : U(full_words(L, rng)),
          V(full_words(L, rng)),
          W(full_words(2 * L, rng)),
          X(full_words(3 * L, rng)) {}
    Words U, V, W, X;
};

struct ABSums {
    ABSums(const ABHalf& a, const ABHalf& b) {
        const Integer a0(a.U), a1(a.V), a2(a.W), a3(a.X), b0(b.U), b1(b.V), b2(b.W), b3(b.X);
        U = a0 * b1 + a1 * b0;
        V = a1 * b1;
        W = a2 * b1 * b1 + b2;
        X = a3 * b1 * b1 * b1 + a0 * b1 * b2 + a1 * b3;
    }
    Integer U, V, W, X;
};

template <class Number>
struct ABOperands {
    Number U, V, W, X;
};

TEST(ABMerge, OfExactNumbersInPlace) {
    auto rng = testing::make_rng(641);
    for (const upL_t L : {1u, 2u, 10u, 28u, 29u, 30u, 100u, 700u, 1400u}) {
        const ABHalf a(L, rng), b(L, rng);
        const ABSums expected(a, b);
        const upL_t shorter = 2 * L + 1, longer = 6 * L + 2;
        ExactIn U(shorter), V(shorter), W(longer), X(longer), long1(longer), long2(longer), sum(longer);
        ExactIn a1b0(shorter), a0b1(shorter), b1b1(shorter);
        const auto operand = [](const ExactIn& buffer, upL_t offset, const Words& words) {
            std::copy(words.begin(), words.end(), buffer.x.get_base() + offset);
            return ExactFloat(buffer.x.get_base() + offset, words.size(), 0, exact(words, 0).get_hash());
        };
        const ABOperands<ExactFloat> left{operand(U, 0, a.U), operand(V, 0, a.V), operand(W, 0, a.W),
                                          operand(X, 0, a.X)};
        const ABOperands<ExactFloat> right{operand(U, L, b.U), operand(V, L, b.V), operand(W, 3 * L, b.W),
                                           operand(X, 3 * L, b.X)};
        ExactFloatR X_right(X.x.get_base() + 3 * L, 3 * L + 2);
        Work work(work_bytes_for<cdi>(6 * L, 1));
        merge_ab(ExactArithmetic(work.bp()),
                 ABPlaces<ExactFloatR>{&U.x, &a1b0.x, V.x, W.x, X.x, X_right, long1.x, long2.x, sum.x, a0b1.x,
                                       b1b1.x},
                 left, right);
        EXPECT_EQ(value(U.x, 0), expected.U) << L;
        EXPECT_EQ(value(V.x, 0), expected.V) << L;
        EXPECT_EQ(value(W.x, 0), expected.W) << L;
        EXPECT_EQ(value(X.x, 0), expected.X) << L;
        EXPECT_TRUE(consistent(U.x) && consistent(V.x) && consistent(W.x) && consistent(X.x));
    }
}

// As a section joins: the right numbers lie where the results go, and nobody needs U.
TEST(ABMerge, OfTruncatedNumbersInPlace) {
    auto rng = testing::make_rng(642);
    for (const upL_t L : {1u, 2u, 10u, 28u, 100u, 700u, 1400u}) {
        const ABHalf a(L, rng), b(L, rng);
        const ABSums expected(a, b);
        for (const upL_t p : {12 * L, 3 * L, L + 5}) {
            const upL_t n = p + 3;
            BigIn V(n), W(n), X(n), long1(n), long2(n), sum(n), b1b1(n);
            V.x.set_gfp(big(b.V, 0), p);
            W.x.set_gfp(big(b.W, 0), p);
            X.x.set_gfp(big(b.X, 0), p);
            const ABOperands<BigFloat> left{big(a.U, 0), big(a.V, 0), big(a.W, 0), big(a.X, 0)};
            const ABOperands<const BigFloat&> right{V.x, V.x, W.x, X.x};
            Work work(work_bytes_for<cdi>(2 * n + transform_slack, 1));
            merge_ab(TruncatedArithmetic(work.bp(), p, p, sum.x),
                     ABPlaces<BigFloatR>{nullptr, nullptr, V.x, W.x, X.x, X.x, long1.x, long2.x, sum.x, sum.x,
                                         b1b1.x},
                     left, right);
            const auto agrees = [&](const BigFloat& y, const Integer& exact_value) {
                const s64_t low = std::min<s64_t>(0, y.get_exp());
                const Integer error = value(y, low) - (exact_value << static_cast<u64_t>(-low) * 64);
                if (p == 12 * L) return error.is_zero();
                return error.log2() - exact_value.log2() < -64 * static_cast<double>(p);
            };
            EXPECT_TRUE(agrees(V.x, expected.V)) << L << ' ' << p;
            EXPECT_TRUE(agrees(W.x, expected.W)) << L << ' ' << p;
            EXPECT_TRUE(agrees(X.x, expected.X)) << L << ' ' << p;
        }
    }
}

}  // namespace
}  // namespace znp
