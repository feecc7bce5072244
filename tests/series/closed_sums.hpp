// Constants from the sums of their series by the closing formulas, in integers of an independent library.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "golden.hpp"
#include "numbers/float_test_support.hpp"
#include "series/catalogue.hpp"
#include "series/euler_gamma_ab.hpp"
#include "series/series_test_support.hpp"

namespace znp::testing::closed_sums {

// For sums beyond what all_tables() serves.
inline const TableHolder* larger_tables = nullptr;
inline const TableHolder& tables() {
    return larger_tables != nullptr ? *larger_tables : all_tables();
}

// Words for so many digits after the point.
inline upL_t words_for(u64_t digits) {
    const auto hex = static_cast<u64_t>(0.8304820237218407 * static_cast<double>(digits)) + 1;
    return hex / 16 + 2;
}

// A quotient of integers.
struct Quotient {
    Integer p, q;
};

inline Integer scaled(const BigFloat& x, s64_t low) {
    Integer r = Integer(x.get_T(), x.get_L()) << (static_cast<u64_t>(x.get_exp() - low) * 64);
    return x.raw_sign() ? r : 0 - r;
}

inline Quotient as_integers(const BigFloat& P, const BigFloat& Q) {
    const s64_t low = std::min(P.get_exp(), Q.get_exp());
    return {scaled(P, low), scaled(Q, low)};
}

inline Quotient sum(const zl_BSS& series, const PSRPlan& plan, u64_t threads = 1) {
    const GuardedSum result(series, plan, threads, nullptr, nullptr, tables());
    return as_integers(result.P(), result.Q());
}
inline Quotient sum(const zl_BSS& series, upL_t p) {
    return sum(series, make_psr_plan(series, p, 1.0));
}

// c (a Q + P) / (b Q), P subtracted where the series alternates.
inline Quotient closed(const zl_BSS& series, upL_t p, s64_t a, s64_t b, s64_t c = 1) {
    const auto [P, Q] = sum(series, p);
    const Integer T = series.alternating ? a * Q - P : a * Q + P;
    return {c * T, b * Q};
}

inline Integer power_of_10(u64_t digits) {
    return Integer::pow(10, digits);
}
inline Integer fixed(const Quotient& x, u64_t digits) {
    return x.p * power_of_10(digits) / x.q;
}

// A constant to some digits after the point, truncated, from its formula at p words.
struct Constant {
    std::string name;  // of the formula
    std::string golden;
    std::function<Integer(u64_t digits, upL_t p)> digits;
};

// A sum of quotients: each to guard digits more.
inline constexpr u64_t guard_digits = 15;
inline Integer added(std::initializer_list<Quotient> terms, u64_t digits) {
    Integer total = 0;
    for (const Quotient& x : terms) total = total + fixed(x, digits + guard_digits);
    return total / power_of_10(guard_digits);
}

inline Integer pi(const zl_BSS& series, u64_t digits, upL_t p, s64_t a, s64_t b, u64_t radicand) {
    // b Q / ((a Q +- P) sqrt(n)) with the root to 2 d + 40 digits.
    const auto [P, Q] = sum(series, p);
    const Integer T = series.alternating ? a * Q - P : a * Q + P;
    const Integer root = (Integer::of(radicand) * power_of_10(2 * digits + 80)).sqrt();
    return b * Q * power_of_10(2 * digits + 40) / (T * root);
}

inline Quotient arc_sinlemn(s64_t coefficient, u64_t n, u64_t d, upL_t p) {
    return closed(ArcSinlemn(n, d), p, 1, static_cast<s64_t>(d), coefficient * static_cast<s64_t>(n));
}
inline Quotient arc_coth(s64_t coefficient, u64_t x, upL_t p) {
    return closed(ArcCoth(x), p, 1, static_cast<s64_t>(x), coefficient);
}

// Coefficients for k log 2.
inline Integer log_2(s64_t k, u64_t digits, upL_t p) {
    return added({arc_coth(18 * k, 26, p), arc_coth(-2 * k, 4801, p), arc_coth(8 * k, 8749, p)}, digits);
}

// The k of n = 2^k for p words.
inline u32_t brent_mcmillan_exponent(upL_t p) {
    const double X = 10 + 11.090354888959125 * static_cast<double>(p);
    u32_t k = 3;
    while (std::ldexp(1, static_cast<int>(k)) < X) k++;
    return k;
}

struct ABSum {
    ABSum(u32_t m, upL_t p, double ratio, u64_t threads) {
        const Series_EulerGamma_BM_AB series(m);
        const PSRPlan plan = make_ab_plan(series, p, ratio);
        const ABSumSizes sizes = ab_sum_sizes(series, plan, threads);
        BigIn T_(sizes.results), Q_(sizes.results), R_(sizes.results);
        GuardedWords<cdi> nodes(sizes.nodes);
        Work work(sizes.work_bytes);
        BasicParameters bp = work.bp();
        bp.holder = &tables();
        bp.tds = threads;
        B_PSR(bp, series, plan, T_.x, Q_.x, R_.x, nodes.data(), nullptr, nullptr);
        T = scaled(T_.x, 0);
        Q = scaled(Q_.x, 0);
        R = scaled(R_.x, 0);
    }
    Integer T, Q, R;
};

// A/B - C/B^2 - k log 2. C as exact sections or with truncated products.
enum class SeriesC { without, truncated, exact };
inline Integer gamma(u32_t m, u64_t digits, upL_t p, SeriesC with_C, double ratio = 1, u64_t threads = 1) {
    const ABSum AB(m, p, ratio, threads);
    const Integer S = AB.Q * AB.Q;
    const Integer RS = AB.R + S;
    const u64_t d = digits + guard_digits;
    Integer value = fixed({AB.T, AB.Q * RS}, d);
    if (with_C != SeriesC::without) {
        const double x = std::ldexp(4, static_cast<int>(m)) * words_per_nat;
        const auto w = static_cast<upL_t>(std::min(x, static_cast<double>(p) - x)) + 1;
        const EulerGamma_BM_C series(m);
        PSRPlan plan = make_psr_plan(series, w, 1.0);
        for (SectionRow& row : plan) row.asr = with_C == SeriesC::truncated;
        const auto [P, Q] = sum(series, plan, threads);
        value = value - fixed({(P + Q) * S * S, (Q * RS * RS) << (m + 2)}, d);
    }
    value = value - log_2(static_cast<s64_t>(m), d, p);
    return value / power_of_10(guard_digits);
}

inline std::vector<Constant> constants() {
    return {
        {"Pi, Chudnovsky", "pi",
         [](u64_t d, upL_t p) { return pi(Pi_Chudnovsky(), d, p, 13591409, 4270934400, 10005); }},
        {"Pi, Ramanujan", "pi", [](u64_t d, upL_t p) { return pi(Pi_Ramanujan(), d, p, 1103, 9801, 8); }},
        {"e by exp(1)", "e",
         [](u64_t d, upL_t p) {
             const Series_E_Taylor series(false);
             const auto [P, Q] = sum(series, make_single_section(series, 1, series.terms(p)));
             return fixed({2 * Q + P, Q}, d);
         }},
        {"e by exp(-1)", "e",
         [](u64_t d, upL_t p) {
             const Series_E_Taylor series(true);
             const auto [P, Q] = sum(series, make_single_section(series, 1, series.terms(p)));
             return fixed({Q, P}, d);
         }},
        {"e by sections", "e",
         [](u64_t d, upL_t p) {
             const Series_E_Taylor series(false);
             const auto [P, Q] = sum(series, make_psr_plan(series, p, 0.1));
             return fixed({Q + P, Q}, d);
         }},
        {"Zeta(3), series 2", "zeta(3)",
         [](u64_t d, upL_t p) { return fixed(closed(Zeta3_AZ2(), p, 12463, 10368), d); }},
        {"Zeta(3), series 1", "zeta(3)",
         [](u64_t d, upL_t p) { return fixed(closed(Zeta3_AZ1(), p, 77, 64), d); }},
        {"Catalan, Lupas", "catalan",
         [](u64_t d, upL_t p) { return fixed(closed(Catalan_Lupas(), p, 19, 18), d); }},
        {"Catalan, Huvent", "catalan",
         [](u64_t d, upL_t p) {
             const auto [P, Q] = sum(Catalan_Huvent(), p);
             return fixed({1334025 * P + 469137217 * Q, 512265600 * Q}, d);
         }},
        {"ArcCoth(2)", "arccoth:2", [](u64_t d, upL_t p) { return fixed(arc_coth(1, 2, p), d); }},
        {"ArcCoth(4294967295)", "arccoth:4294967295",
         [](u64_t d, upL_t p) { return fixed(arc_coth(1, 4294967295, p), d); }},
        {"Log(2)", "log:2", [](u64_t d, upL_t p) { return log_2(1, d, p); }},
        {"Lemniscate, first formula", "lemniscate",
         [](u64_t d, upL_t p) {
             return added({arc_sinlemn(8, 1, 2, p), arc_sinlemn(4, 7, 23, p)}, d);
         }},
        {"Lemniscate, second formula", "lemniscate",
         [](u64_t d, upL_t p) {
             return added({arc_sinlemn(8, 2, 3, p), arc_sinlemn(-4, 7, 137, p)}, d);
         }},
        {"Euler's constant", "gamma",
         [](u64_t d, upL_t p) { return gamma(brent_mcmillan_exponent(p), d, p, SeriesC::without); }},
        {"Euler's constant, refined", "gamma",
         [](u64_t d, upL_t p) { return gamma(brent_mcmillan_exponent(p) - 1, d, p, SeriesC::truncated); }},
        {"Euler's constant, refined, exact C", "gamma",
         [](u64_t d, upL_t p) { return gamma(brent_mcmillan_exponent(p) - 1, d, p, SeriesC::exact); }},
    };
}

// Every constant to so many digits: all of them by their residue, and the last ones.
inline void expect_golden_digits(u64_t digits) {
    const std::vector<GoldenDecimal> golden = golden_decimal();
    for (const Constant& constant : constants()) {
        SCOPED_TRACE(constant.name + " to " + std::to_string(digits) + " digits");
        const auto row = std::find_if(golden.begin(), golden.end(), [&](const auto& g) {
            return g.constant == constant.golden && g.dec == digits;
        });
        ASSERT_NE(row, golden.end());
        const Integer value = constant.digits(digits, words_for(digits));
        EXPECT_EQ(value.residue(), row->residue);
        const Integer last = value % power_of_10(row->last_digits.size());
        EXPECT_EQ(last, Integer::decimal(row->last_digits.c_str()));
    }
}

}  // namespace znp::testing::closed_sums
