// Exact fractions of an independent library, for the tests of series.
#pragma once

#include <gmp.h>
#include <gtest/gtest.h>

#include <ostream>

#include "numbers/float_test_support.hpp"

namespace znp::testing {

class Rational {
  public:
    Rational() { mpq_init(q); }
    Rational(const Integer& numerator, const Integer& denominator = 1) : Rational() {
        mpz_set(mpq_numref(q), numerator.get());
        mpz_set(mpq_denref(q), denominator.get());
        mpq_canonicalize(q);
    }
    // mantissa * 2^(64 exp), and the sign of a BigFloat.
    explicit Rational(const ExactFloat& x) : Rational(x.get_T(), x.get_L(), x.get_exp()) {}
    explicit Rational(const BigFloat& x) : Rational(x.get_T(), x.get_L(), x.get_exp()) {
        if (!x.raw_sign()) mpq_neg(q, q);
    }
    Rational(const cdi* T, upL_t L, s64_t exp) : Rational() {
        mpz_import(mpq_numref(q), L, -1, sizeof(cdi), 0, 0, T);
        if (exp >= 0) {
            mpq_mul_2exp(q, q, static_cast<u64_t>(exp) * 64);
        } else {
            mpq_div_2exp(q, q, static_cast<u64_t>(-exp) * 64);
        }
    }
    Rational(const Rational& other) : Rational() { mpq_set(q, other.q); }
    Rational(Rational&& other) noexcept : Rational() { mpq_swap(q, other.q); }
    Rational& operator=(Rational other) noexcept {
        mpq_swap(q, other.q);
        return *this;
    }
    ~Rational() { mpq_clear(q); }

    friend Rational operator+(const Rational& a, const Rational& b) { return by(mpq_add, a, b); }
    friend Rational operator-(const Rational& a, const Rational& b) { return by(mpq_sub, a, b); }
    friend Rational operator*(const Rational& a, const Rational& b) { return by(mpq_mul, a, b); }
    friend Rational operator/(const Rational& a, const Rational& b) { return by(mpq_div, a, b); }
    friend bool operator==(const Rational& a, const Rational& b) { return mpq_equal(a.q, b.q) != 0; }
    Integer numerator() const { return Integer::from(mpq_numref(q)); }
    Integer denominator() const { return Integer::from(mpq_denref(q)); }
    friend std::ostream& operator<<(std::ostream& out, const Rational& x) {
        return out << x.numerator() << '/' << x.denominator();
    }

    mpq_t q;

  private:
    template <class Operation>
    static Rational by(Operation operation, const Rational& a, const Rational& b) {
        Rational r;
        operation(r.q, a.q, b.q);
        return r;
    }
};

// The object is in normal form, and its residue is that of its words.
inline ::testing::AssertionResult consistent(const BasicInt& x) {
    if (x.get_L() == 0 || *x.word_ptr(x.get_L() - 1) == 0) {
        return ::testing::AssertionFailure() << "top word is zero";
    }
    if (x.hash_error() != 0) return ::testing::AssertionFailure() << "residue and words differ";
    return ::testing::AssertionSuccess();
}
}  // namespace znp::testing
