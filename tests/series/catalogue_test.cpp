// Fields, term counts and size functions of the series.
#include "series/catalogue.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/basecase_test_support.hpp"
#include "series/euler_gamma_ab.hpp"
#include "series/exact_numbers.hpp"

namespace znp {
namespace {

using testing::GuardedWords;
using testing::Integer;

struct Case {
    std::string name;
    std::shared_ptr<const zl_BSS> series;
    bool alternating;
    u64_t memory_overhead;
    u64_t end_threshold;
};

std::vector<Case> cases() {
    return {{"e", std::make_shared<Series_E_Taylor>(false), false, 6, 16},
            {"1/e", std::make_shared<Series_E_Taylor>(true), true, 6, 16},
            {"Chudnovsky", std::make_shared<Pi_Chudnovsky>(), true, 19, 8},
            {"Ramanujan", std::make_shared<Pi_Ramanujan>(), false, 19, 12},
            {"ArcCoth", std::make_shared<ArcCoth>(26), false, 11, 16},
            {"AZ2", std::make_shared<Zeta3_AZ2>(), true, 37, 6},
            {"AZ1", std::make_shared<Zeta3_AZ1>(), true, 24, 12},
            {"ArcSinlemn", std::make_shared<ArcSinlemn>(7, 23), false, 15, 8},
            {"Lupas", std::make_shared<Catalan_Lupas>(), true, 21, 10},
            {"Huvent", std::make_shared<Catalan_Huvent>(), true, 60, 2},
            {"AB", std::make_shared<Series_EulerGamma_BM_AB>(10), false, 18, 1},
            {"C", std::make_shared<EulerGamma_BM_C>(10), false, 17, 8}};
}

TEST(SeriesCatalogue, Fields) {
    for (const Case& c : cases()) {
        EXPECT_EQ(c.series->alternating, c.alternating) << c.name;
        EXPECT_EQ(c.series->memory_overhead, c.memory_overhead) << c.name;
        EXPECT_EQ(c.series->end_threshold, c.end_threshold) << c.name;
    }
    EXPECT_EQ(ArcCoth(4294967295).x2, 18446744065119617025u);
    EXPECT_DOUBLE_EQ(ArcCoth(26).log_x2, 6.516193076042964);
}

TEST(SeriesCatalogue, ArgumentsOfArcSinlemn) {
    const struct {
        u64_t n, d, n4, d4;
        double log_n4, log_d4, log_ratio;
    } arguments[] = {{1, 2, 1, 16, 0, 2.772588722239781, 2.772588722239781},
                     {7, 23, 2401, 279841, 7.783640596221253, 12.541976863716599, 4.758336267495346},
                     {2, 3, 16, 81, 2.772588722239781, 4.394449154672439, 1.621860432432658},
                     {7, 137, 2401, 352275361, 7.783640596221253, 19.6799237033125, 11.896283107091246}};
    for (const auto& x : arguments) {
        const ArcSinlemn series(x.n, x.d);
        EXPECT_EQ(series.n, x.n);
        EXPECT_EQ(series.d, x.d);
        EXPECT_EQ(series.n4, x.n4);
        EXPECT_EQ(series.d4, x.d4);
        EXPECT_DOUBLE_EQ(series.log_n4, x.log_n4);
        EXPECT_DOUBLE_EQ(series.log_d4, x.log_d4);
        EXPECT_DOUBLE_EQ(series.log_ratio, x.log_ratio);
    }
}

// Both sides of each bound.
TEST(SeriesCatalogueDeathTest, ParametersWhosePowersDoNotFit) {
    const auto refuses = [](const std::function<void()>& make, const char* series) {
        EXPECT_EXIT(testing::dying(make), ::testing::ExitedWithCode(1),
                    std::string("Invalid Function Parameters:   ") + series);
    };
    EXPECT_EQ(ArcCoth(2).x2, 4u);
    EXPECT_EQ(ArcCoth(4294967295).x2, 18446744065119617025u);
    for (const u64_t x : {u64_t{0}, u64_t{1}, u64_t{4294967296}, ~u64_t{0}})
        refuses([x] { ArcCoth a(x); }, "ArcCoth");
    EXPECT_EQ(ArcSinlemn(65534, 65535).d4, 18445618199572250625u);
    EXPECT_EQ(ArcSinlemn(1, 2).n4, 1u);
    const u64_t fractions[][2] = {{1, 65536}, {0, 2}, {2, 2},         {3, 2},
                                  {0, 0},     {1, 0}, {65536, 65537}, {1, ~u64_t{0}}};
    for (const auto& x : fractions) refuses([&x] { ArcSinlemn a(x[0], x[1]); }, "ArcSinlemn");
    EXPECT_EQ(EulerGamma_BM_C(62).m, 62u);
    EXPECT_GT(EulerGamma_BM_C(62).terms(1000), 2u);
    EXPECT_EQ(Series_EulerGamma_BM_AB(62).m, 62u);
    EXPECT_GT(Series_EulerGamma_BM_AB(62).terms(1000), u64_t{1} << 62);
    for (const u32_t m : {63u, 64u, 65u, ~0u}) {
        refuses([m] { EulerGamma_BM_C a(m); }, "EulerGamma");
        refuses([m] { Series_EulerGamma_BM_AB a(m); }, "EulerGamma");
    }
}

TEST(SeriesCatalogue, TermCounts) {
    EXPECT_EQ(Pi_Chudnovsky().terms(1000), 1360u);
    EXPECT_EQ(Pi_Ramanujan().terms(1000), 2415u);
    EXPECT_EQ(Zeta3_AZ2().terms(1000), 3821u);
    EXPECT_EQ(Zeta3_AZ1().terms(1000), 6401u);  // 6.3999999999999995 words
    EXPECT_EQ(Catalan_Lupas().terms(1000), 32002u);
    EXPECT_EQ(Catalan_Huvent().terms(1000), 10668u);
    EXPECT_EQ(ArcCoth(2).terms(1000), 32002u);
    EXPECT_EQ(ArcSinlemn(1, 2).terms(1000), 16002u);
}

TEST(SeriesCatalogue, NoPrecisionTakesAtLeastTwoTerms) {
    for (const Case& c : cases()) {
        EXPECT_GE(c.series->terms(0), 2u) << c.name;
        EXPECT_GE(c.series->terms(1), c.series->terms(0)) << c.name;
    }
    EXPECT_GE(EulerGamma_BM_C(0).terms(0), 2u);
    EXPECT_GE(Series_EulerGamma_BM_AB(0).terms(0), 2u);
}

TEST(SeriesCatalogue, TermsOfEAreTheFewest) {
    const Series_E_Taylor series(false);
    for (const upL_t p : {0u, 1u, 2u, 10u, 1000u, 1000000u}) {
        const double target = nats_per_word * static_cast<double>(p) + 1;
        const u64_t n = series.terms(p) - 2;
        EXPECT_GE(log_factorial(static_cast<double>(n)), target);
        EXPECT_LT(log_factorial(static_cast<double>(n - 1)), target);
    }
}

// ln of (n^x / x!)^2, with n = 2^m.
double AB_term(u32_t m, double x) {
    return 2 * (x * m * std::log(2) - std::lgamma(x + 1));
}

TEST(SeriesCatalogue, TermsOfABAreTheFewest) {
    for (const u32_t m : {4u, 10u, 20u}) {
        const Series_EulerGamma_BM_AB series(m);
        const double largest = AB_term(m, std::ldexp(1, static_cast<int>(m)));
        for (const upL_t p : {1u, 10u, 1000u}) {
            const double target = largest - nats_per_word * static_cast<double>(p) - 1;
            const auto x = static_cast<double>(series.terms(p) - 2);
            EXPECT_LE(AB_term(m, x), target + 0.01);
            EXPECT_GT(AB_term(m, x - 1), target - 0.01);
        }
    }
}

// ln of ((2x)!)^3 / ((x!)^4 (16n)^(2x)), n = 2^m.
double C_term(u32_t m, double x) {
    return 3 * std::lgamma(2 * x + 1) - 4 * std::lgamma(x + 1) - 2 * x * (m + 4) * std::log(2);
}

TEST(SeriesCatalogue, TermsOfCAreTheFewestUpToTheSmallest) {
    for (const u32_t m : {4u, 10u, 20u}) {
        const EulerGamma_BM_C series(m);
        const u64_t smallest = u64_t{2} << m;
        const double n = std::ldexp(1, static_cast<int>(m));
        EXPECT_NEAR(C_term(m, 2 * n), -4 * n, 2 * std::log(n) + 5);  // what the series can give
        for (const upL_t p : {1u, 2u, 10u, 1000u, 100000u}) {
            const double target = -nats_per_word * static_cast<double>(p) - 1;
            const u64_t terms = series.terms(p);
            if (C_term(m, static_cast<double>(smallest - 2)) > target) {
                EXPECT_EQ(terms, smallest) << m << " " << p;
                continue;
            }
            const auto x = static_cast<double>(terms - 2);
            EXPECT_LE(C_term(m, x), target + 0.5);
            EXPECT_GT(C_term(m, x - 1), target - 0.5);
        }
    }
}

// ---- Sizes against exact products

double ln(const Integer& x) {
    long exponent = 0;
    const double d = mpz_get_d_2exp(&exponent, x.get());
    return std::log(d) + static_cast<double>(exponent) * std::log(2);
}

// ln of P, Q and R of the one term at b.
struct Term {
    Term(const zl_BSS_P2B3_Type0& series, u64_t b) {
        cdi words[3][14];
        BasicIntR P(words[0], 14), Q(words[1], 14), R(words[2], 14), t0, t1;
        series.BSR_End(P, Q, R, t0, t1, b - 1, b);
        p = ln(Integer(P));
        q = ln(Integer(Q));
        r = ln(Integer(R));
    }
    double p, q, r;
};

std::vector<Case> type0_cases() {
    std::vector<Case> all;
    for (const Case& c : cases()) {
        if (dynamic_cast<const zl_BSS_P2B3_Type0*>(c.series.get()) != nullptr) all.push_back(c);
    }
    return all;
}

// What the memory plan is built on: Q, R and P of a range take no more words than words_of tells and the
// overhead allows, and words_of tells no more than a few words too many.
TEST(SeriesSizes, CoverTheNumbersOfARange) {
    for (const Case& c : type0_cases()) {
        const auto& series = dynamic_cast<const zl_BSS_P2B3_Type0&>(*c.series);
        for (const u64_t a : {u64_t{0}, u64_t{1}, u64_t{50}, u64_t{500}}) {  // series C ends at 2048
            double Q = 0, R = 0, largest_P = 0;
            for (u64_t b = a + 1; b <= a + 1500; b++) {
                const Term term(series, b);
                Q += term.q;
                largest_P = std::max(largest_P + term.q, R + term.p);
                R += term.r;
                const auto words = static_cast<double>(series.words_of(a, b));
                const double allowed = words + static_cast<double>(c.memory_overhead);
                const double terms = std::log(static_cast<double>(b - a));
                ASSERT_LE(Q * words_per_nat + 1, allowed) << c.name << " " << a << " " << b;
                ASSERT_LE(R * words_per_nat + 1, allowed) << c.name << " " << a << " " << b;
                ASSERT_LE((largest_P + terms) * words_per_nat + 1, allowed) << c.name << " " << a << " " << b;
                ASSERT_GE(Q * words_per_nat + 6, words) << c.name << " " << a << " " << b;
            }
        }
    }
}

// ln of what the terms shrink by, but for powers of the index.
TEST(SeriesSizes, PrecisionIsWhatTheTermsShrinkBy) {
    for (const Case& c : type0_cases()) {
        const auto& series = dynamic_cast<const zl_BSS_P2B3_Type0&>(*c.series);
        for (const u64_t a : {u64_t{1}, u64_t{50}, u64_t{500}}) {
            const Term first(series, a);
            double products = first.q - first.r;  // of the terms in front
            for (u64_t b = a + 1; b < a + 1500; b++) {
                const Term term(series, b);
                const double shrunk = products + (first.p - first.q) - (term.p - term.q);
                const double of_index = 6 * std::log(static_cast<double>(b) / static_cast<double>(a)) + 7;
                ASSERT_NEAR(series.precision_of(a, b), shrunk, of_index) << c.name << " " << a << " " << b;
                products += term.q - term.r;
            }
        }
    }
}

// The terms' powers of two go to the exponents, and so to the length of the sum, P.
TEST(SeriesSizes, Huvent) {
    const Catalan_Huvent series;
    double Q = 0;
    for (u64_t k = 1; k < 1000; k++) {
        GuardedWords<cdi> P_words(18), Q_words(18);
        ExactFloatR P(P_words.data(), 18), q(Q_words.data(), 18);
        series.BSR_End(P, q, k);
        Q += ln(Integer(q.get_T(), q.get_L()));
        const double P_nats = Q + static_cast<double>(k) * std::log(64);
        ASSERT_NEAR(P_nats * words_per_nat, static_cast<double>(series.words_of(0, k)), 5) << k;
    }
    EXPECT_DOUBLE_EQ(series.precision_of(100, 200), 100 * std::log(64));
}

TEST(SeriesSizes, E) {
    const Series_E_Taylor series(false);
    EXPECT_DOUBLE_EQ(series.precision_of(10, 1000), series.size_at(1000) - series.size_at(10));
    for (const double x : {2.0, 10.0, 1000.0, 1e9}) {
        EXPECT_NEAR(series.size_at(x), std::lgamma(x + 1), 0.05 + 1e-12 * std::lgamma(x + 1));
    }
}

// X is the longest of A and B's numbers. Its lowest power of two, N^(a + 1), is in its exponent.
TEST(SeriesSizes, AB) {
    for (const u32_t m : {3u, 8u, 20u}) {
        const Series_EulerGamma_BM_AB series(m);
        for (const u64_t a : {u64_t{0}, u64_t{2}, u64_t{100}, u64_t{300}}) {
            Integer U = 0, V = 1, X = 0;
            for (u64_t b = a + 1; b < a + 700; b++) {
                const Integer k = Integer::of(b);
                U = U * k + V;
                V = V * k;
                X = X * k * k * k + (U << (2 * m * (b - a - 1)));
                const auto words = static_cast<double>(series.words_of(a, b));
                ASSERT_LE(ln(X) * words_per_nat + 1, words + static_cast<double>(series.memory_overhead))
                    << m << " " << a << " " << b;
                ASSERT_GE(ln(X) * words_per_nat + 6, words) << m << " " << a << " " << b;
            }
        }
    }
}

TEST(SeriesSizes, ABPrecisionCountsFromTheLargestTerm) {
    const u32_t m = 9;
    const u64_t n = 512;
    const Series_EulerGamma_BM_AB series(m);
    const u64_t end = series.terms(20);
    EXPECT_EQ(series.precision_of(0, end), series.precision_of(n, end));
    EXPECT_EQ(series.precision_of(100, end), series.precision_of(n, end));
    EXPECT_GE(series.precision_of(0, end), 20 * nats_per_word);
    EXPECT_NEAR(series.precision_of(n + 100, end), AB_term(m, n + 100) - AB_term(m, static_cast<double>(end)),
                0.01);
}

// ---- What a tail still needs

TEST(SeriesPrecisionAtIndex, OfSeriesC) {
    const EulerGamma_BM_C series(12);
    const u64_t end = series.terms(100);
    EXPECT_GE(series.PrecisionAtIndex(0, end), 100u);
    EXPECT_EQ(series.PrecisionAtIndex(end, end), 2u);
    upL_t before = series.PrecisionAtIndex(0, end);
    for (u64_t a = 1; a < end; a++) {
        const upL_t needed = series.PrecisionAtIndex(a, end);
        const double nats = C_term(12, static_cast<double>(a)) - C_term(12, static_cast<double>(end));
        ASSERT_LE(needed, before);
        ASSERT_NEAR(static_cast<double>(needed), nats * words_per_nat + 2, 1.1);
        before = needed;
    }
}

TEST(SeriesPrecisionAtIndex, OthersHaveNone) {
    for (const Case& c : cases()) {
        EXPECT_EQ(c.series->can_be_truncated(), c.name == "C");
        if (c.name == "C") continue;
        testing::StdoutCapture report;
        try {
            c.series->PrecisionAtIndex(0, 10);
            ADD_FAILURE() << c.name;
        } catch (const zn_exception& e) {
            EXPECT_STREQ(e.message, "zl_BSS::PrecisionAtIndex() is required to use ASR.") << c.name;
        }
    }
}

}  // namespace
}  // namespace znp
