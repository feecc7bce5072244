// The series A and B of Euler's constant: terms, merges, plans, and sums against exact ones.
#include "series/euler_gamma_ab.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "numbers/float_test_support.hpp"
#include "series/classes/euler_gamma_ab.hpp"
#include "series/exact_numbers.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::BigIn;
using testing::consistent;
using testing::GuardedWords;
using testing::Integer;
using testing::Rational;
using testing::Work;

// U, V, W, X of a range by their definitions, term by term over the common denominators V, V^2 and V^3.
struct Naive {
    Integer U = 0, V = 1, W = 0, X = 0;
};
Naive naive(u32_t m, u64_t a, u64_t b) {
    Naive n;
    for (u64_t i = a + 1; i <= b; i++) {
        const Integer k = Integer::of(i);
        const Integer power = Integer(1) << (2 * m * i);
        n.U = n.U * k + n.V;
        n.V = n.V * k;
        n.W = n.W * k * k + power;
        n.X = n.X * k * k * k + n.U * power;
    }
    return n;
}

// The ten objects of a node, each in a buffer of its own.
struct Node {
    explicit Node(std::vector<upL_t> words) {
        upL_t i = 0;
        for (ExactFloatR* x : ABRules::Node::all(node)) {
            buffers.push_back(std::make_unique<GuardedWords<cdi>>(words[i]));
            x->set_base(buffers.back()->data(), words[i]);
            i++;
        }
    }
    static Node leaf() { return Node({1, 2, 3, 4, 0, 0, 0, 0, 0, 0}); }
    static Node of(upL_t longer, upL_t shorter) {
        return Node({shorter, shorter, longer, longer, longer, longer, longer, shorter, shorter, shorter});
    }

    std::vector<std::unique_ptr<GuardedWords<cdi>>> buffers;
    ABRules::Node node;
};

void expect_exact(const ABRules::Node& node, u32_t m, u64_t a, u64_t b) {
    SCOPED_TRACE("m = " + std::to_string(m) + ", " + std::to_string(a) + " - " + std::to_string(b));
    const Naive exact = naive(m, a, b);
    for (const ExactFloatR* x : {&node.U, &node.V, &node.W, &node.X}) EXPECT_TRUE(consistent(*x));
    EXPECT_EQ(Rational(node.U), Rational(exact.U));
    EXPECT_EQ(Rational(node.V), Rational(exact.V));
    EXPECT_EQ(Rational(node.W), Rational(exact.W));
    EXPECT_EQ(Rational(node.X), Rational(exact.X));
}

const u32_t parameters[] = {0, 1, 2, 5, 16, 31, 32, 45};

// ---- One and two terms

TEST(EulerGammaAB, OneTerm) {
    for (const u32_t m : parameters) {
        const Series_EulerGamma_BM_AB series(m);
        for (const u64_t a : {0u, 1u, 2u, 99u, 100u, 1000u}) {
            Node leaf = Node::leaf();
            ABRules{series}.end(leaf.node, a, a + 1);
            expect_exact(leaf.node, m, a, a + 1);
        }
    }
}

TEST(EulerGammaAB, TwoTerms) {
    for (const u32_t m : parameters) {
        const Series_EulerGamma_BM_AB series(m);
        for (const u64_t a : {0u, 1u, 2u, 98u, 100u, 1000u}) {
            Node leaf = Node::leaf();
            ABRules{series}.end(leaf.node, a, a + 2);
            expect_exact(leaf.node, m, a, a + 2);
        }
    }
}

// At indices whose powers of two no naive sum can hold: the mantissas, the exponents and the residues.
TEST(EulerGammaAB, TwoTermsAtLargeIndices) {
    for (const u32_t m : {1u, 30u, 45u, 62u}) {
        for (const u64_t k : {u64_t{1} << 31, (u64_t{1} << 40) + 7, (u64_t{1} << 50) - 1}) {
            Node leaf = Node::leaf();
            ABRules{Series_EulerGamma_BM_AB(m)}.end(leaf.node, k - 2, k);
            const ExactFloat &U = leaf.node.U, &V = leaf.node.V, &W = leaf.node.W, &X = leaf.node.X;
            const Integer K = Integer::of(k), N = Integer(1) << (2 * m);
            const u64_t shift = 2 * m * (k - 1);
            EXPECT_EQ(Rational(U), Rational(2 * K - 1));
            EXPECT_EQ(Rational(V), Rational(K * (K - 1)));
            EXPECT_EQ(W.get_exp(), static_cast<s64_t>(shift / 64));
            EXPECT_EQ(X.get_exp(), static_cast<s64_t>(shift / 64));
            EXPECT_EQ(Rational(W.get_T(), W.get_L(), 0), Rational((K * K + N) << (shift % 64)));
            EXPECT_EQ(Rational(X.get_T(), X.get_L(), 0),
                      Rational((K * K * K + (2 * K - 1) * N) << (shift % 64)));
            EXPECT_TRUE(consistent(W));
            EXPECT_TRUE(consistent(X));
        }
    }
}

TEST(EulerGammaAB, TooSmallForATerm) {
    const Series_EulerGamma_BM_AB series(5);
    for (upL_t i = 0; i < 4; i++) {
        std::vector<upL_t> words{1, 2, 3, 4, 0, 0, 0, 0, 0, 0};
        words[i]--;
        for (const u64_t terms : {1u, 2u}) {
            testing::StdoutCapture report;
            Node leaf(words);
            EXPECT_THROW(ABRules{series}.end(leaf.node, 10, 10 + terms), BufferTooSmallException);
        }
    }
}

// ---- Merges

BasicParameters parameters_of(Work& work, u64_t threads) {
    BasicParameters bp = work.bp();
    bp.tds = threads;
    return bp;
}

TEST(EulerGammaAB, TwoTermsAreTheMergeOfTwoOneTermNodes) {
    for (const u32_t m : parameters) {
        const Series_EulerGamma_BM_AB series(m);
        const ABRules rules{series};
        for (const u64_t a : {0u, 2u, 50u, 1000u}) {
            Work work(0);
            Node node = Node::of(64, 32);
            rules.end(node.node, a, a + 1);
            const ABRules::Node left = node.node;
            ABRules::Node right = rules.behind(left);
            rules.end(right, a + 1, a + 2);
            rules.merge(parameters_of(work, 1), node.node, left, right, false);
            Node direct = Node::leaf();
            rules.end(direct.node, a, a + 2);
            const auto merged = ABRules::Node::all(node.node), expected = ABRules::Node::all(direct.node);
            for (upL_t i = 0; i < 4; i++) {
                EXPECT_EQ(Rational(*merged[i]), Rational(*expected[i]));
                EXPECT_EQ(merged[i]->get_hash(), expected[i]->get_hash());
            }
            expect_exact(node.node, m, a, a + 2);
        }
    }
}

TEST(EulerGammaAB, RangesAndTheirSplitsAgainstExactSums) {
    for (const u32_t m : parameters) {
        const Series_EulerGamma_BM_AB series(m);
        for (const u64_t a : {0u, 1u, 2u, 77u}) {
            for (u64_t k = 1; k < 24; k++) {
                const MemoryPlan longer =
                    serial_memory_plan(series.words_of(a, a + k), series.memory_overhead);
                const MemoryPlan shorter =
                    serial_memory_plan(ab_short_words(series.words_of(a, a + k)), series.memory_overhead);
                Work work(longer.bytes);
                Node node = Node::of(longer.words, shorter.words);
                sum_serial(parameters_of(work, 1), ABRules{series}, node.node, a, a + k, RecursionProgress());
                expect_exact(node.node, m, a, a + k);
            }
        }
    }
}

TEST(EulerGammaAB, DividesAtEvenIndicesInside) {
    const Series_EulerGamma_BM_AB series(10);
    for (u64_t a = 0; a < 40; a++) {
        for (u64_t b = a + 3; b < a + 250; b++) {
            const u64_t m = series.divide_even(a, b);
            ASSERT_LT(a, m);
            ASSERT_LT(m, b);
            ASSERT_EQ(m % 2, 0u) << a << " " << b;
        }
    }
    EXPECT_EQ(series.divide_even(0, 3), 2u);
    EXPECT_EQ(series.divide_even(0, 100), 50u);
    EXPECT_EQ(series.divide_even(0, 98), 48u);
    EXPECT_EQ(series.divide_even(0, 101), series.split(0, 101) & ~u64_t{1});
}

// ---- Sums by a plan

struct Sum {
    Sum(const Series_EulerGamma_BM_AB& series, const PSRPlan& plan, u64_t threads, EventLog* log = nullptr,
        StatusLine* status = nullptr)
        : sizes(ab_sum_sizes(series, plan, threads)),
          T(sizes.results),
          Q(sizes.results),
          R(sizes.results),
          nodes(sizes.nodes) {
        Work work(sizes.work_bytes);
        B_PSR(parameters_of(work, threads), series, plan, T.x, Q.x, R.x, nodes.data(), log, status);
    }
    const ABSumSizes sizes;
    BigIn T, Q, R;
    GuardedWords<cdi> nodes;
};

// One section with a precision that keeps all words.
TEST(EulerGammaABSum, OneSectionIsExact) {
    for (const u32_t m : {2u, 6u, 9u}) {
        const Series_EulerGamma_BM_AB series(m);
        for (const u64_t k : {1u, 2u, 3u, 100u, 101u, 999u, 1000u, 1001u}) {
            const Naive exact = naive(m, 0, k);
            for (const u64_t threads : {1u, 2u, 3u, 7u, 16u}) {
                PSRPlan plan = make_single_section(series, 0, k);
                plan[0].precision = plan[0].length + 64;
                const Sum sum(series, plan, threads);
                EXPECT_EQ(Rational(sum.T.x), Rational(exact.X));
                EXPECT_EQ(Rational(sum.Q.x), Rational(exact.V));
                EXPECT_EQ(Rational(sum.R.x), Rational(exact.W));
                if (threads > 1 && k < 1000) break;
            }
        }
    }
}

TEST(EulerGammaABSum, PlansBeginAtEvenIndicesAndCoverAllTerms) {
    for (const u32_t m : {4u, 8u, 12u}) {
        const Series_EulerGamma_BM_AB series(m);
        for (const upL_t p : {2u, 10u, 100u, 300u}) {
            for (const double ratio : {1.0, 0.5}) {
                const PSRPlan plan = make_ab_plan(series, p, ratio);
                u64_t a = 0;
                for (const SectionRow& row : plan) {
                    EXPECT_EQ(row.a, a);
                    EXPECT_EQ(row.a % 2, 0u);
                    EXPECT_LT(row.a, row.b);
                    EXPECT_EQ(row.length, series.words_of(row.a, row.b));
                    a = row.b;
                }
                EXPECT_EQ(a, series.terms(p));
                EXPECT_EQ(plan.back().next_precision, 0u);
                for (upL_t i = 0; i + 1 < plan.size(); i++) {
                    EXPECT_EQ(plan[i].next_precision, plan[i + 1].precision);
                }
                EXPECT_GE(plan.front().precision, p);
            }
        }
    }
}

// Sections anywhere, of every length and on every count of threads; the check inside says that they are
// right.
TEST(EulerGammaABSum, RandomSectionsInTheirPromisedBuffers) {
    auto rng = testing::make_rng(7);
    for (int i = 0; i < 100; i++) {
        const Series_EulerGamma_BM_AB series(static_cast<u32_t>(rng() % 46));
        const u64_t a = (rng() % 3 == 0 ? 0 : rng() >> (20 + rng() % 44)) & ~u64_t{1};
        const u64_t k = 1 + rng() % (u64_t{1} << (rng() % 13));
        PSRPlan plan = make_single_section(series, a, a + k);
        if (plan[0].length > 4500) continue;
        plan[0].precision = plan[0].length + 64;
        SCOPED_TRACE("m = " + std::to_string(series.m) + ", " + std::to_string(a) + " + " +
                     std::to_string(k));
        const Sum sum(series, plan, 1 + rng() % 16);
        EXPECT_FALSE(sum.T.x.is_zero());
    }
}

// Bits to which X/V^3 and W/V^2 of a sum agree with the exact ones.
double agreement(const Rational& x, const Rational& y) {
    Rational difference = (x - y) / y;
    if (mpq_sgn(difference.q) == 0) return 1e9;
    long top = 0, bottom = 0;
    mpz_get_d_2exp(&top, mpq_numref(difference.q));
    mpz_get_d_2exp(&bottom, mpq_denref(difference.q));
    return static_cast<double>(bottom - top);
}

TEST(EulerGammaABSum, ManySectionsToThePrecisionOfTheFirst) {
    for (const u32_t m : {4u, 7u, 9u}) {
        const Series_EulerGamma_BM_AB series(m);
        const upL_t p = (u64_t{4} << m) / 44 + 2;
        const u64_t end = series.terms(p);
        const Naive exact = naive(m, 0, end);
        const Rational V(exact.V);
        const Rational A = Rational(exact.X) / (V * V * V), B = Rational(exact.W) / (V * V);
        for (const double ratio : {1.0, 0.5, 0.1}) {
            const PSRPlan plan = make_ab_plan(series, p, ratio);
            if (ratio < 1) {
                EXPECT_GT(plan.size(), 1u);
            }
            for (const u64_t threads : {1u, 2u, 3u}) {
                const Sum sum(series, plan, threads);
                const Rational T(sum.T.x), Q(sum.Q.x), R(sum.R.x);
                EXPECT_GT(agreement(T / (Q * Q * Q), A), 64.0 * static_cast<double>(p));
                EXPECT_GT(agreement(R / (Q * Q), B), 64.0 * static_cast<double>(p));
            }
        }
    }
}

// ---- A wrong word

// Stores a wrong word of one of the four numbers after their residues are set.
class FaultySeries : public Series_EulerGamma_BM_AB {
  public:
    FaultySeries(u32_t m_, u64_t at, int number) : Series_EulerGamma_BM_AB(m_), at_(at), number_(number) {}
    void BSR_End(ExactFloatR& U, ExactFloatR& V, ExactFloatR& W, ExactFloatR& X, u64_t a,
                 u64_t b) const override {
        Series_EulerGamma_BM_AB::BSR_End(U, V, W, X, a, b);
        ExactFloatR* const numbers[] = {&U, &V, &W, &X};
        if (a <= at_ && at_ < b) *numbers[number_]->word_ptr(0) ^= 2;
    }

  private:
    u64_t at_;
    int number_;
};

TEST(EulerGammaABSum, WrongWordFailsTheCheckOfItsSection) {
    const upL_t p = 20;
    const PSRPlan plan = make_ab_plan(Series_EulerGamma_BM_AB(6), p, 0.5);
    ASSERT_GT(plan.size(), 2u);
    for (const SectionRow& row : {plan.front(), plan[1], plan.back()}) {
        for (int number = 0; number < 4; number++) {
            const FaultySeries series(6, (row.a + row.b) / 2, number);
            EventLog log;
            std::string report;
            testing::StdoutCapture screen;
            try {
                const Sum sum(series, plan, 1, &log);
            } catch (const zl_BSRModularCheckFailed& e) {
                report = e.text;
            }
            const std::string shown = screen.text();
            const std::string heading = "Modular Redundancy Check Failed:\na = " + std::to_string(row.a) +
                                        "\nb = " + std::to_string(row.b) + "\nhashA = ";
            EXPECT_EQ(report.substr(0, heading.size()), heading);
            EXPECT_NE(report.find("\nhashD = "), std::string::npos);
            EXPECT_NE(shown.find(report), std::string::npos);
            EXPECT_NE(log.text().find("Modular Redundancy Check Failed: "), std::string::npos);
        }
    }
}

TEST(EulerGammaABSum, StatusLineMovesFromSectionToSection) {
    const PSRPlan plan = make_ab_plan(Series_EulerGamma_BM_AB(8), 30, 0.5);
    ASSERT_GT(plan.size(), 2u);
    testing::StdoutCapture screen;
    StatusLine line(79, 0);
    const Sum sum(Series_EulerGamma_BM_AB(8), plan, 1, nullptr, &line);
    const std::string text = screen.text();
    for (upL_t i = 0; i < plan.size(); i++) {
        EXPECT_NE(text.find("Series: " + std::to_string(i) + "  "), std::string::npos) << i;
    }
}

}  // namespace
}  // namespace znp
