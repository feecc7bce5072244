// The series that the system sums, one class each. Formulas of the terms: with each class's source file.
//
// The closing formulas around a sum stand in compute/formulas.
//
// What an end routine takes, for a range of k terms: in the classes with P, Q, R all five objects
// end_words(Class::term_words, k) words; in Series_E_Taylor, P and Q k words, one more from 8 terms on. The
// word that an in-place sum writes above its value is counted.
#pragma once

#include "series/steady_series.hpp"

namespace znp {

// term_words is what the largest of a term's P, Q and R takes.
constexpr upL_t end_words(upL_t term_words, u64_t k) {
    return 2 * term_words * k;
}

// e = 2 + sum, or 1/e = sum when alternating, over the terms from 1: sums of reciprocal partial factorials.
// A class of its own (series/classes/taylor.hpp). Ends at ranges of at most 15 terms.
class Series_E_Taylor final : public zl_BSS {
  public:
    explicit Series_E_Taylor(bool alternating_) : zl_BSS(alternating_, 6, 16) {}
    u64_t terms(upL_t words) const override;
    double size_at(double x) const override;
    double precision_of(u64_t a, u64_t b) const override;
    // P and Q of a range of 1 to 15 terms.
    void BSR_End(BasicIntR& P, BasicIntR& Q, u64_t a, u64_t b) const;
    SumSizes sum_sizes(const PSRPlan& plan, u64_t threads) const override;
    void sum(const SumTask& task) const override;
};

class Pi_Chudnovsky final : public SteadySeries<zl_BSS_P2B3_Type0> {
  public:
    static constexpr upL_t term_words = 5;
    Pi_Chudnovsky();
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override;
};

class Pi_Ramanujan final : public SteadySeries<zl_BSS_P2B3_Type0> {
  public:
    static constexpr upL_t term_words = 5;
    Pi_Ramanujan();
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override;
};

class Zeta3_AZ1 final : public SteadySeries<zl_BSS_P2B3_Type0> {
  public:
    static constexpr upL_t term_words = 8;
    Zeta3_AZ1();
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override;
};

class Zeta3_AZ2 final : public SteadySeries<zl_BSS_P2B3_Type0> {
  public:
    static constexpr upL_t term_words = 14;
    Zeta3_AZ2();
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override;
};

class Catalan_Lupas final : public SteadySeries<zl_BSS_P2B3_Type0> {
  public:
    static constexpr upL_t term_words = 7;
    Catalan_Lupas();
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override;
};

class Catalan_Huvent final : public SteadySeries<zl_BSS_P2B2_BBP> {
  public:
    Catalan_Huvent();
    void BSR_End(ExactFloatR& P, ExactFloatR& Q, u64_t k) const override;
};

// Of an argument x: x2 = x^2.
class ArcCoth final : public SteadySeries<zl_BSS_P2B3_Type0> {
  public:
    static constexpr upL_t term_words = 2;
    explicit ArcCoth(u64_t x);  // 2 to 4294967295, or a fatal error
    const u64_t x2;
    const double log_x2;  // ln(x2)
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override;

  private:
    struct Square {
        u64_t x2;
    };
    explicit ArcCoth(Square x_squared);
};

// Of an argument n/d, 0 < n < d, d up to 65535: all else is a fatal error.
class ArcSinlemn final : public SteadySeries<zl_BSS_P2B3_Type0> {
  public:
    static constexpr upL_t term_words = 3;
    ArcSinlemn(u64_t n, u64_t d);
    const u64_t n, d, n4, d4;                // n^4, d^4
    const double log_n4, log_d4, log_ratio;  // ln(n^4), ln(d^4), ln(d^4 / n^4)
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override;

  private:
    ArcSinlemn(u64_t n_, u64_t d_, u64_t n4_, u64_t d4_);
};

// The asymptotic series C of the refined Brent-McMillan formula; n = 2^m, m up to 62, or a
// fatal error.
class EulerGamma_BM_C final : public zl_BSS_P2B3_Type0 {
  public:
    static constexpr upL_t term_words = 6;
    explicit EulerGamma_BM_C(u32_t m_);
    const u32_t m;
    u64_t terms(upL_t words) const override;
    double size_at(double x) const override;
    double precision_of(u64_t a, u64_t b) const override;
    bool can_be_truncated() const override { return true; }
    upL_t PrecisionAtIndex(u64_t a, u64_t b) const override;
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override;
};

}  // namespace znp
