// What the tests of sums share: exact sums of an independent library, a small series with settable
// properties, and the sum of a plan in buffers of exactly the promised sizes.
#pragma once

#include <gmp.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "numbers/float_test_support.hpp"
#include "series/catalogue.hpp"
#include "series/partial_series.hpp"
#include "series/terms/end_recursion.hpp"

namespace znp::testing {

// ---- Exact sums

struct Fraction {
    Integer p, q;
};

// -log2 of the relative difference; infinite if the fractions are equal.
inline double agreement(const Fraction& x, const Fraction& y) {
    const Integer a = x.p * y.q;
    const Integer b = y.p * x.q;
    return a.log2() - (a - b).log2();
}

struct ExactSum {
    Integer P = 0, Q = 1, R = 1;
    Fraction fraction() const { return {P, Q}; }
};

// Term by term from the left.
inline ExactSum exact_sum(const zl_BSS_P2B3_Type0& series, u64_t a, u64_t b) {
    constexpr upL_t term_words = 40;
    cdi words[5][term_words];
    ExactSum sum;
    for (u64_t k = a; k < b; k++) {
        BasicIntR P(words[0], term_words), Q(words[1], term_words), R(words[2], term_words);
        BasicIntR t0(words[3], term_words), t1(words[4], term_words);
        series.BSR_End(P, Q, R, t0, t1, k, k + 1);
        const Integer q(Q.get_T(), Q.get_L());
        const Integer t = sum.R * Integer(P.get_T(), P.get_L());
        sum.P = series.alternating && (k - a) % 2 == 1 ? sum.P * q - t : sum.P * q + t;
        sum.Q = sum.Q * q;
        sum.R = sum.R * Integer(R.get_T(), R.get_L());
    }
    return sum;
}

// P and Q times 2^(64 words), to make integers of the terms' binary fractions.
inline Fraction exact_sum(const zl_BSS_P2B2_BBP& series, u64_t a, u64_t b) {
    const auto scale = static_cast<s64_t>(b / 8 + 8);
    constexpr upL_t term_words = 40;
    cdi words[2][term_words];
    Integer P(0), Q(1);
    for (u64_t k = a; k < b; k++) {
        ExactFloatR p(words[0], term_words), q(words[1], term_words);
        series.BSR_End(p, q, k + 1);
        const Integer t = Q * value(p, -scale);
        const Integer factor = value(q, 0);
        P = series.alternating && (k - a) % 2 == 1 ? P * factor - t : P * factor + t;
        Q = Q * factor;
    }
    return {P, Q << static_cast<u64_t>(scale) * 64};
}

// 1/(a+1) +- 1/((a+1)(a+2)) + ...
inline Fraction exact_sum(const Series_E_Taylor& series, u64_t a, u64_t b) {
    Integer P(0), Q(1);
    for (u64_t k = a; k < b; k++) {
        const Integer factor(static_cast<s64_t>(k + 1));
        P = P * factor + Integer(series.alternating && (k - a) % 2 == 1 ? -1 : 1);
        Q = Q * factor;
    }
    return {P, Q};
}

// ---- A series with small terms

// R(b) = 2b - 1, P(b) = R(b) (b + 3), Q(b) = 5b. flip: the index of a term whose word is changed behind its
// residue's back, in the numbers P, Q or R (0, 1, 2).
struct Flip {
    u64_t index = 0;
    int object = 0;
};
class SmallSeries : public zl_BSS_P2B3_Type0 {
  public:
    explicit SmallSeries(bool alternating_, Flip flip = {})
        : zl_BSS_P2B3_Type0(alternating_, 12, 8), flip_(flip) {}

    u64_t terms(upL_t words) const override {
        return static_cast<u64_t>(static_cast<double>(words) * nats_per_word / std::log(2.5)) + 2;
    }
    double size_at(double x) const override { return x * std::log(5) + log_factorial(x); }
    double precision_of(u64_t a, u64_t b) const override {
        return static_cast<double>(b - a) * std::log(2.5);
    }
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override {
        if (b - a != 1) return terms::end_recursion(*this, P, Q, R, t0, t1, a, b);
        const u128_t p = static_cast<u128_t>(2 * b - 1) * (b + 3);
        P.get_T()[0] = static_cast<u64_t>(p);
        P.get_T()[1] = static_cast<u64_t>(p >> 64);
        P.set_LN(2);
        Q.set_uW(5 * b);
        R.set_uW(2 * b - 1);
        if (b == flip_.index) (flip_.object == 0 ? P : flip_.object == 1 ? Q : R).get_T()[0] ^= 2;
    }

  private:
    const Flip flip_;
};

// ---- Sums in guarded buffers

// Twiddle tables for products of up to so many bits; built at the first call.
template <u64_t limit_bits>
const TableHolder& tables_up_to() {
    struct Tables {
        GuardedArray<std::byte> memory = make_guarded_array<std::byte>(nullptr, table_size(limit_bits), 64);
        TableHolder holder;
        Tables() { build_tables(holder, limit_bits, memory.get()); }
    };
    static const Tables tables;
    return tables.holder;
}

// B_PSR with every buffer exactly as promised, guard words behind each.
class GuardedSum {
  public:
    GuardedSum(const zl_BSS& series, const PSRPlan& plan, u64_t threads, EventLog* log = nullptr,
               StatusLine* status = nullptr, const TableHolder& tables = all_tables())
        : sizes(sum_sizes(series, plan, threads)), P_(sizes.P), Q_(sizes.Q), nodes_(sizes.nodes) {
        Work work(sizes.work_bytes);
        BasicParameters bp = work.bp();
        bp.tds = threads;
        bp.holder = &tables;
        B_PSR(bp, series, plan, P_.x, Q_.x, nodes_.data(), log, status);
    }

    const BigFloat& P() const { return P_.x; }
    const BigFloat& Q() const { return Q_.x; }
    Fraction fraction() const {
        const s64_t low = std::min(P().get_exp(), Q().get_exp());
        return {value(P(), low), value(Q(), low)};
    }

    const SumSizes sizes;

  private:
    BigIn P_, Q_;
    GuardedWords<cdi> nodes_;
};

}  // namespace znp::testing
