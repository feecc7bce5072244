// The terms of each series and the recursion below the threshold, against exact sums.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/basecase_test_support.hpp"
#include "series/catalogue.hpp"
#include "series/exact_numbers.hpp"

namespace znp {
namespace {

using testing::consistent;
using testing::GuardedWords;
using testing::Integer;
using testing::Rational;

Integer n(u64_t x) {
    return Integer::of(x);
}

upL_t words(const Integer& x) {
    return (mpz_sizeinbase(x.get(), 2) + 63) / 64;
}

// Five objects of a node in buffers of exactly the given words.
struct Node {
    explicit Node(upL_t words) : Node(words, words, words, words) {}
    Node(upL_t p, upL_t q, upL_t r, upL_t t)
        : buffers{GuardedWords<cdi>(p), GuardedWords<cdi>(q), GuardedWords<cdi>(r), GuardedWords<cdi>(t),
                  GuardedWords<cdi>(t)},
          P(buffers[0].data(), p),
          Q(buffers[1].data(), q),
          R(buffers[2].data(), r),
          t0(buffers[3].data(), t),
          t1(buffers[4].data(), t) {}
    void fill(const zl_BSS_P2B3_Type0& series, u64_t a, u64_t b) { series.BSR_End(P, Q, R, t0, t1, a, b); }

    GuardedWords<cdi> buffers[5];
    BasicIntR P, Q, R, t0, t1;
};

// One series of the kind P, Q, R with the formulas of its term.
struct Case {
    std::string name;
    std::shared_ptr<const zl_BSS_P2B3_Type0> series;
    upL_t term_words;
    std::function<Integer(const Integer&b)> P, Q, R;
    upL_t P_words, Q_words, R_words;  // what the routine of one term asks for
    const char* P_location;
    const char* Q_location;
    const char* R_location;
    u64_t largest;  // an index whose linear factors just fit a word
};

std::vector<Case> cases() {
    std::vector<Case> all;
    const auto add = [&](std::string name, auto series, auto P, auto Q, auto R, upL_t P_words, upL_t Q_words,
                         upL_t R_words, const char* P_location, const char* Q_location,
                         const char* R_location, u64_t largest) {
        all.push_back({std::move(name), series, series->term_words, P, Q, R, P_words, Q_words, R_words,
                       P_location, Q_location, R_location, largest});
    };
    const u64_t top = ~u64_t{0};
    const auto chudnovsky = [](const Integer& b) { return (6 * b - 5) * (2 * b - 1) * (6 * b - 1); };
    add(
        "Chudnovsky", std::make_shared<Pi_Chudnovsky>(),
        [=](const Integer& b) { return chudnovsky(b) * (545140134 * b + 13591409); },
        [](const Integer& b) { return 10939058860032000 * b * b * b; }, chudnovsky, 5, 4, 3,
        "Pi_Chudnovsky_BSR_End_PR1()", "Pi_Chudnovsky_BSR_End_Q1()", "Pi_Chudnovsky_BSR_End_PR1()", top / 6);

    const auto ramanujan = [](const Integer& b) { return (4 * b - 3) * (2 * b - 1) * (4 * b - 1); };
    add(
        "Ramanujan", std::make_shared<Pi_Ramanujan>(),
        [=](const Integer& b) { return ramanujan(b) * (26390 * b + 1103); },
        [](const Integer& b) { return 3073907232 * b * b * b; }, ramanujan, 5, 4, 3,
        "Pi_Ramanujan_BSR_End_P1()", "Pi_Ramanujan_BSR_End_Q1()", "Pi_Ramanujan_BSR_End_R1()", top / 4);

    const auto fifth = [](const Integer& x) { return x * x * x * x * x; };
    add(
        "Zeta3_AZ1", std::make_shared<Zeta3_AZ1>(),
        [=](const Integer& b) { return fifth(b) * (205 * b * b + 250 * b + 77); },
        [=](const Integer& b) { return fifth(4 * b + 2); }, fifth, 8, 5, 5, "Zeta3_AZ1_BSR_End1()",
        "Zeta3_AZ1_BSR_End1()", "Zeta3_AZ1_BSR_End1()", (top - 2) / 4);

    const auto cube = [](const Integer& x) { return x * x * x; };
    const auto az2 = [=](const Integer& b) { return fifth(b) * cube(2 * b - 1); };
    add(
        "Zeta3_AZ2", std::make_shared<Zeta3_AZ2>(),
        [=](const Integer& b) {
            const Integer b2 = b * b;
            return az2(b) * (126392 * b2 * b2 * b + 412708 * b2 * b2 + 531578 * b2 * b + 336367 * b2 +
                             104000 * b + 12463);
        },
        [=](const Integer& b) { return 24 * (3 * b + 1) * (3 * b + 2) * cube(4 * b + 1) * cube(4 * b + 3); },
        az2, 14, 9, 8, "Zeta3_AZ2_BSR_End_P1()", "Zeta3_AZ2_BSR_End_Q1()", "Zeta3_AZ2_BSR_End_R1()",
        (top - 3) / 4);

    const auto lupas = [](const Integer& b) { return 4 * b * 4 * b * b * (4 * b - 2); };
    add(
        "Lupas", std::make_shared<Catalan_Lupas>(),
        [=](const Integer& b) { return lupas(b) * (40 * b * b + 56 * b + 19); },
        [](const Integer& b) {
            const Integer f = (4 * b + 1) * (4 * b + 3);
            return f * f;
        },
        lupas, 7, 4, 4, "Catalan_Lupas_BSR_End1()", "Catalan_Lupas_BSR_End1()", "Catalan_Lupas_BSR_End1()",
        (top - 3) / 4);

    for (const auto& [numerator, denominator] : {std::pair{1, 2}, {7, 23}, {2, 3}, {7, 137}}) {
        const Integer n4 = Integer::pow(static_cast<u64_t>(numerator), 4);
        const Integer d4 = Integer::pow(static_cast<u64_t>(denominator), 4);
        const auto r = [=](const Integer& b) { return (4 * b - 3) * (2 * b - 1) * n4; };
        add(
            "ArcSinlemn of " + std::to_string(numerator) + "/" + std::to_string(denominator),
            std::make_shared<ArcSinlemn>(numerator, denominator), r,
            [=](const Integer& b) { return (4 * b + 1) * (2 * b) * d4; }, r, 3, 3, 3, "ArcSinlemn_BSR_End1()",
            "ArcSinlemn_BSR_End1()", "ArcSinlemn_BSR_End1()", (top - 1) / 4);
    }

    for (const u32_t m : {0u, 2u, 29u, 30u, 45u, 62u}) {
        const auto r = [=](const Integer& b) { return cube(2 * b - 1); };
        add(
            "EulerGamma C of 2^" + std::to_string(m), std::make_shared<EulerGamma_BM_C>(m), r,
            [=](const Integer& b) { return b << (2 * m + 5); }, r, 3, 6, 3, "EulerGamma_BM_C_BSR_End1()",
            "EulerGamma_BM_C_BSR_End1()", "EulerGamma_BM_C_BSR_End1()", top / 2);
    }
    return all;
}

// The exact sum over [a, b), term by term.
struct Naive {
    Rational sum;
    Integer Q = 1, R = 1;
};
Naive naive(const Case& c, u64_t a, u64_t b) {
    Naive out;
    for (u64_t k = a + 1; k <= b; k++) {
        const Rational term = Rational(out.R, out.Q) * Rational(c.P(n(k)), c.Q(n(k)));
        const bool minus = c.series->alternating && (k - a) % 2 == 0;
        out.sum = minus ? out.sum - term : out.sum + term;
        out.Q = out.Q * c.Q(n(k));
        out.R = out.R * c.R(n(k));
    }
    return out;
}

void expect_sum(const Case& c, const Node& node, u64_t a, u64_t b) {
    SCOPED_TRACE(c.name + " over " + std::to_string(a) + " - " + std::to_string(b));
    const Naive exact = naive(c, a, b);
    EXPECT_TRUE(consistent(node.P));
    EXPECT_TRUE(consistent(node.Q));
    EXPECT_TRUE(consistent(node.R));
    EXPECT_EQ(Integer(node.Q), exact.Q);
    EXPECT_EQ(Integer(node.R), exact.R);
    EXPECT_EQ(Rational(Integer(node.P), Integer(node.Q)), exact.sum);
}

// ---- One term

TEST(SeriesTerms, OneTermInTheWordsThatItAsksFor) {
    for (const Case& c : cases()) {
        for (const u64_t b : {u64_t{1}, u64_t{2}, u64_t{3}, u64_t{1000}, u64_t{1} << 32, c.largest}) {
            SCOPED_TRACE(c.name + " at " + std::to_string(b));
            Node node(c.P_words, c.Q_words, c.R_words, 0);
            node.fill(*c.series, b - 1, b);
            EXPECT_TRUE(consistent(node.P));
            EXPECT_TRUE(consistent(node.Q));
            EXPECT_TRUE(consistent(node.R));
            EXPECT_EQ(Integer(node.P), c.P(n(b)));
            EXPECT_EQ(Integer(node.Q), c.Q(n(b)));
            EXPECT_EQ(Integer(node.R), c.R(n(b)));
        }
    }
}

// The largest terms are as long as what the routines ask for: the minimum is no word too small or too large.
TEST(SeriesTerms, LargestTermsFitAndTermWordsIsTheLargestNeed) {
    for (const Case& c : cases()) {
        SCOPED_TRACE(c.name);
        EXPECT_LE(words(c.P(n(c.largest))), c.P_words);
        EXPECT_LE(words(c.Q(n(c.largest))), c.Q_words);
        EXPECT_LE(words(c.R(n(c.largest))), c.R_words);
        EXPECT_EQ(std::max({c.P_words, c.Q_words, c.R_words}), c.term_words);
    }
}

template <class F>
void expect_too_small(const char* location, F f) {
    testing::StdoutCapture report;
    try {
        f();
        ADD_FAILURE() << "nothing thrown for " << location;
    } catch (const BufferTooSmallException& e) {
        EXPECT_STREQ(e.location, location);
    }
}

TEST(SeriesTerms, ShorterBuffersThrowAtTheRoutineThatNoticed) {
    for (const Case& c : cases()) {
        SCOPED_TRACE(c.name);
        const upL_t p = c.P_words, q = c.Q_words, r = c.R_words;
        expect_too_small(c.P_location, [&] { Node(p - 1, q, r, 0).fill(*c.series, 4, 5); });
        expect_too_small(c.Q_location, [&] { Node(p, q - 1, r, 0).fill(*c.series, 4, 5); });
        expect_too_small(c.R_location, [&] { Node(p, q, r - 1, 0).fill(*c.series, 4, 5); });
    }
}

TEST(SeriesTerms, ChudnovskyAtOne) {
    Node node(5);
    node.fill(Pi_Chudnovsky(), 0, 1);
    EXPECT_EQ(Integer(node.R), 5);
    EXPECT_EQ(Integer(node.P), Integer(5) * 558731543);
    EXPECT_EQ(Integer(node.Q), 10939058860032000);
}

// ---- Short ranges

TEST(SeriesRanges, BelowTheThresholdAgainstExactSums) {
    for (const Case& c : cases()) {
        for (const u64_t a : {u64_t{0}, u64_t{1}, u64_t{7}, u64_t{1} << 40}) {
            for (u64_t k = 1; k < c.series->end_threshold; k++) {
                Node node(end_words(c.term_words, k));
                node.fill(*c.series, a, a + k);
                expect_sum(c, node, a, a + k);
            }
        }
    }
}

TEST(SeriesRanges, LargestIndices) {
    for (const Case& c : cases()) {
        const u64_t k = c.series->end_threshold - 1;
        Node node(end_words(c.term_words, k));
        node.fill(*c.series, c.largest - k, c.largest);
        expect_sum(c, node, c.largest - k, c.largest);
    }
}

// Merging any two parts of a range gives the range.
TEST(SeriesRanges, AllSplits) {
    for (const Case& c : cases()) {
        const u64_t a = 3, b = 3 + c.series->end_threshold - 1;
        Node whole(end_words(c.term_words, b - a));
        whole.fill(*c.series, a, b);
        for (u64_t m = a + 1; m < b; m++) {
            SCOPED_TRACE(c.name + " at " + std::to_string(m));
            Node l(end_words(c.term_words, m - a)), r(end_words(c.term_words, b - m));
            l.fill(*c.series, a, m);
            r.fill(*c.series, m, b);
            const Integer first = Integer(l.P) * Integer(r.Q);
            const Integer second = Integer(l.R) * Integer(r.P);
            const bool minus = c.series->alternating && ((a ^ m) & 1) != 0;
            EXPECT_EQ(Integer(whole.P), minus ? first - second : first + second);
            EXPECT_EQ(Integer(whole.Q), Integer(l.Q) * Integer(r.Q));
            EXPECT_EQ(Integer(whole.R), Integer(l.R) * Integer(r.R));
        }
    }
}

TEST(SeriesRanges, AlternatingAddsForEqualParityAndSubtractsForDifferent) {
    const Pi_Chudnovsky series;
    for (const u64_t a : {0u, 1u}) {
        for (const u64_t k : {2u, 4u}) {  // halves of one term and of two
            Node l(end_words(5, k / 2)), r(end_words(5, k / 2)), whole(end_words(5, k));
            l.fill(series, a, a + k / 2);
            r.fill(series, a + k / 2, a + k);
            whole.fill(series, a, a + k);
            const Integer first = Integer(l.P) * Integer(r.Q);
            const Integer second = Integer(l.R) * Integer(r.P);
            EXPECT_EQ(Integer(whole.P), k == 2 ? first - second : first + second);
        }
    }
}

// Near the smallest term of series C the half with one term more can be the larger one. Wherever its length
// passes a word's end first, the order of the sum must change.
TEST(SeriesRanges, TermsThatDoNotShrinkAreAddedInEitherOrder) {
    for (u32_t m = 0; m < 12; m++) {
        const auto series = std::make_shared<EulerGamma_BM_C>(m);
        const Case c{"C",
                     series,
                     6,
                     [](const Integer& b) { return (2 * b - 1) * (2 * b - 1) * (2 * b - 1); },
                     [m](const Integer& b) { return b << (2 * m + 5); },
                     [](const Integer& b) { return (2 * b - 1) * (2 * b - 1) * (2 * b - 1); },
                     3,
                     6,
                     3,
                     "",
                     "",
                     "",
                     0};
        for (u64_t a = (u64_t{2} << m) / 2; a < (u64_t{2} << m) * 64; a += 1 + a / 16) {
            for (const u64_t k : {2u, 3u, 5u, 7u}) {
                Node node(end_words(c.term_words, k));
                node.fill(*series, a, a + k);
                expect_sum(c, node, a, a + k);
            }
        }
    }
}

TEST(SeriesRanges, ObjectsTooSmallForARangeThrow) {
    testing::StdoutCapture reports;
    for (const Case& c : cases()) {
        for (int which = 0; which < 5; which++) {
            Node node(end_words(c.term_words, 7));
            BasicIntR* const objects[] = {&node.P, &node.Q, &node.R, &node.t0, &node.t1};
            for (upL_t words = 0; words < 7; words++) {
                *objects[which] = BasicIntR(objects[which]->get_T(), words);
                EXPECT_THROW(node.fill(*c.series, 1000000, 1000007), BufferTooSmallException);
            }
        }
    }
}

// ---- ArcCoth

Rational arccoth_sum(u64_t x, u64_t a, u64_t b) {
    Rational sum;
    Integer power = 1;
    for (u64_t k = a + 1; k <= b; k++) {
        power = power * n(x) * n(x);
        sum = sum + Rational(1, (2 * n(k) + 1) * power);
    }
    return sum;
}

void expect_arccoth(u64_t x, u64_t a, u64_t b) {
    SCOPED_TRACE("ArcCoth(" + std::to_string(x) + ") over " + std::to_string(a) + " - " + std::to_string(b));
    const ArcCoth series(x);
    Node node((b - a) * 2 + 1, (b - a) * 2 + 1, b - a + 1, 0);
    node.fill(series, a, b);
    Integer Q = 1, R = 1;
    for (u64_t k = a + 1; k <= b; k++) {
        R = R * (2 * n(k) + 1);
        Q = Q * (2 * n(k) + 1) * n(x) * n(x);
    }
    EXPECT_TRUE(consistent(node.P));
    EXPECT_TRUE(consistent(node.Q));
    EXPECT_TRUE(consistent(node.R));
    EXPECT_EQ(Integer(node.Q), Q);
    EXPECT_EQ(Integer(node.R), R);
    EXPECT_EQ(Rational(Integer(node.P), Integer(node.Q)), arccoth_sum(x, a, b));
}

TEST(SeriesArcCoth, AgainstExactSums) {
    for (const u64_t x : {2u, 3u, 26u, 4801u, 65535u, 2147483647u, 2147483648u, 4294967295u}) {
        for (const u64_t a : {u64_t{0}, u64_t{1}, u64_t{100}, u64_t{1} << 31, u64_t{1} << 62}) {
            for (u64_t k = 1; k < 16; k++) expect_arccoth(x, a, a + k);
        }
    }
}

// (2b + 1) 2^62 passes 2^64 between b = 1 and b = 2; ranges on both sides and across.
TEST(SeriesArcCoth, LargeAndSmallSteps) {
    const u64_t x = u64_t{1} << 31;
    for (u64_t a = 0; a < 5; a++) {
        for (u64_t b = a + 1; b < a + 16; b++) expect_arccoth(x, a, b);
    }
    // Where the step passes a word's end at a later b.
    const u64_t y = 94906267;  // y^2 is just above 2^53: 2b + 1 passes at 2^11
    for (u64_t a = 1010; a < 1030; a++) {
        for (u64_t k = 1; k < 16; k++) expect_arccoth(y, a, a + k);
    }
}

TEST(SeriesArcCoth, BuffersTooSmall) {
    const ArcCoth small(2), large(4294967295);
    const u64_t k = 7;
    const upL_t p = 2 * k + 1, r = k + 1;
    for (const bool is_large : {false, true}) {
        const ArcCoth& series = is_large ? large : small;
        const char* location = is_large ? "ArcCoth_BSR_End_large()" : "ArcCoth_BSR_End_small()";
        expect_too_small(location, [&] { Node(p - 1, p, r, 0).fill(series, 0, k); });
        expect_too_small(location, [&] { Node(p, p - 1, r, 0).fill(series, 0, k); });
        expect_too_small(location, [&] { Node(p, p, r - 1, 0).fill(series, 0, k); });
    }
}

// ---- e

struct Pair {
    explicit Pair(upL_t words)
        : buffers{GuardedWords<cdi>(words), GuardedWords<cdi>(words)},
          P(buffers[0].data(), words),
          Q(buffers[1].data(), words) {}
    GuardedWords<cdi> buffers[2];
    BasicIntR P, Q;
};

upL_t taylor_words(u64_t k) {
    return k < 8 ? k : k + 1;
}

TEST(SeriesETaylor, AgainstExactSums) {
    for (const bool alternating : {false, true}) {
        const Series_E_Taylor series(alternating);
        for (const u64_t a : {u64_t{0}, u64_t{1}, u64_t{2}, u64_t{100}, u64_t{1} << 32, u64_t{1} << 62}) {
            for (u64_t k = 1; k < 16; k++) {
                SCOPED_TRACE(std::to_string(a) + " + " + std::to_string(k));
                Pair node(taylor_words(k));
                series.BSR_End(node.P, node.Q, a, a + k);
                Rational sum;
                Integer Q = 1;
                for (u64_t i = a + 1; i <= a + k; i++) {
                    Q = Q * n(i);
                    const bool minus = alternating && (i - a) % 2 == 0;
                    sum = minus ? sum - Rational(1, Q) : sum + Rational(1, Q);
                }
                EXPECT_TRUE(consistent(node.P));
                EXPECT_TRUE(consistent(node.Q));
                EXPECT_EQ(Integer(node.Q), Q);
                EXPECT_EQ(Rational(Integer(node.P), Integer(node.Q)), sum);
            }
        }
    }
}

TEST(SeriesETaylor, FirstTwoTerms) {
    Pair node(2);
    Series_E_Taylor(false).BSR_End(node.P, node.Q, 0, 2);
    EXPECT_EQ(Integer(node.P), 3);
    EXPECT_EQ(Integer(node.Q), 2);
    Series_E_Taylor(true).BSR_End(node.P, node.Q, 0, 2);
    EXPECT_EQ(Integer(node.P), 1);
    EXPECT_EQ(Integer(node.Q), 2);
}

TEST(SeriesETaylor, BuffersTooSmall) {
    for (const bool alternating : {false, true}) {
        const Series_E_Taylor series(alternating);
        const char* location = alternating ? "E_Taylor2_BSR_End_PQ1()" : "E_Taylor1_BSR_End_PQ1()";
        for (u64_t k = 1; k < 8; k++) {
            GuardedWords<cdi> buffer(2 * k);
            BasicIntR whole(buffer.data(), k), shorter(buffer.data() + k, k - 1);
            expect_too_small(location, [&] { series.BSR_End(shorter, whole, 0, k); });
            expect_too_small(location, [&] { series.BSR_End(whole, shorter, 0, k); });
        }
    }
}

// ---- Catalan's constant by Huvent's terms

struct HuventTerm {
    explicit HuventTerm(upL_t p = 18, upL_t q = 18)
        : buffers{GuardedWords<cdi>(p), GuardedWords<cdi>(q)},
          P(buffers[0].data(), p),
          Q(buffers[1].data(), q) {}
    GuardedWords<cdi> buffers[2];
    ExactFloatR P, Q;
};

Integer huvent_P(const Integer& k) {
    static const char* const coefficients[] = {
        "4636372233093120",   "37721048963088384",  "140614334152704000", "318025249742389248",
        "486920573914447872", "532937589964406784", "428868733241327616", "256653109156773888",
        "113872382317283328", "36670081182465024",  "8098743309464448",   "1029713994232704",
        "5572409156528",      "-24153149527360",    "-4419704161120",     "-360406957080",
        "-11728430425"};
    Integer value = 0;
    for (const char* c : coefficients) value = value * k + Integer::decimal(c);
    return value;
}
Integer huvent_Q(const Integer& k) {
    const Integer root = (2 * k + 1) * (4 * k + 1) * (4 * k + 3) * (6 * k + 1) * (6 * k + 5) * (12 * k + 1) *
                         (12 * k + 5) * (12 * k + 7) * (12 * k + 11);
    return root * root;
}

TEST(SeriesHuvent, TermsAgainstTheFormulas) {
    const Catalan_Huvent series;
    const u64_t largest = (~u64_t{0} - 11) / 12;
    for (const u64_t k : {u64_t{1}, u64_t{2}, u64_t{3}, u64_t{10}, u64_t{1000}, u64_t{32} * 1000, largest}) {
        SCOPED_TRACE(k);
        HuventTerm term;
        series.BSR_End(term.P, term.Q, k);
        EXPECT_TRUE(consistent(term.P));
        EXPECT_TRUE(consistent(term.Q));
        EXPECT_EQ(Rational(term.Q), Rational(huvent_Q(n(k))));
        EXPECT_LE(words(huvent_Q(n(k))), 18u);
        if (k > 1000000) continue;  // 2^(6k) is a fraction of many gigabits
        EXPECT_EQ(Rational(term.P), Rational(huvent_P(n(k)), Integer(1) << (6 * k)));
    }
}

TEST(SeriesHuvent, ExponentTakesThePowerOfTwo) {
    const Catalan_Huvent series;
    for (u64_t k = 1; k < 200; k++) {
        HuventTerm term;
        series.BSR_End(term.P, term.Q, k);
        EXPECT_EQ(term.P.get_exp(), -static_cast<s64_t>((6 * k + 63) / 64)) << k;
        EXPECT_EQ(term.Q.get_exp(), 0);
    }
}

TEST(SeriesHuvent, FirstTermAndExactSum) {
    EXPECT_EQ(Rational(huvent_P(0), huvent_Q(0)), Rational(Integer(-11728430425), 33350625));

    // The sum over k from 0 of (-1)^k P(k) / (Q(k) 2^(6k)) is -384 times the constant.
    const Catalan_Huvent series;
    Rational sum(huvent_P(0), huvent_Q(0));
    for (u64_t k = 1; k < 30; k++) {
        HuventTerm term;
        series.BSR_End(term.P, term.Q, k);
        const Rational t = Rational(term.P) / Rational(term.Q);
        sum = k % 2 == 1 ? sum - t : sum + t;
    }
    // 60 digits: 384 times 0.915965594177219015054603514932384110774149374281672134266498.
    const Integer scaled = (Integer::pow(10, 45) * sum.numerator()) / (sum.denominator() * -384);
    EXPECT_EQ(scaled, Integer::decimal("915965594177219015054603514932384110774149374"));
}

TEST(SeriesHuvent, BuffersTooSmall) {
    const Catalan_Huvent series;
    HuventTerm short_P(17, 18), short_Q(18, 17);
    expect_too_small("Catalan_Huvent_BSR_End()", [&] { series.BSR_End(short_P.P, short_P.Q, 5); });
    expect_too_small("Catalan_Huvent_BSR_End()", [&] { series.BSR_End(short_Q.P, short_Q.Q, 5); });
}

}  // namespace
}  // namespace znp
