// Integers and fractions of an independent library, for the tests of series.
#pragma once

#include <gmp.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

#include "foundation/types.hpp"
#include "multiply/kernels/residue.hpp"
#include "numbers/basic_int.hpp"
#include "numbers/big_float.hpp"
#include "numbers/exact_float.hpp"

namespace znp::testing {

class ExactInteger {
  public:
    ExactInteger(s64_t x = 0) { mpz_init_set_si(z, x); }
    explicit ExactInteger(const char* decimal) { mpz_init_set_str(z, decimal, 10); }
    ExactInteger(const cdi* T, upL_t L) : ExactInteger() { mpz_import(z, L, -1, sizeof(cdi), 0, 0, T); }
    explicit ExactInteger(const BasicInt<cdi>& x) : ExactInteger(x.get_T(), x.get_L()) {}
    ExactInteger(const ExactInteger& other) { mpz_init_set(z, other.z); }
    ExactInteger(ExactInteger&& other) noexcept : ExactInteger() { mpz_swap(z, other.z); }
    ExactInteger& operator=(ExactInteger other) noexcept {
        mpz_swap(z, other.z);
        return *this;
    }
    ~ExactInteger() { mpz_clear(z); }

    static ExactInteger of(u64_t x) {
        ExactInteger r;
        mpz_set_ui(r.z, x);
        return r;
    }
    static ExactInteger pow(u64_t base, u64_t e) {
        ExactInteger r;
        mpz_ui_pow_ui(r.z, base, e);
        return r;
    }

    friend ExactInteger operator+(const ExactInteger& a, const ExactInteger& b) { return by(mpz_add, a, b); }
    friend ExactInteger operator-(const ExactInteger& a, const ExactInteger& b) { return by(mpz_sub, a, b); }
    friend ExactInteger operator*(const ExactInteger& a, const ExactInteger& b) { return by(mpz_mul, a, b); }
    friend ExactInteger operator/(const ExactInteger& a, const ExactInteger& b) {
        return by(mpz_fdiv_q, a, b);
    }
    friend ExactInteger operator%(const ExactInteger& a, const ExactInteger& b) {
        return by(mpz_fdiv_r, a, b);
    }
    friend bool operator==(const ExactInteger& a, const ExactInteger& b) { return mpz_cmp(a.z, b.z) == 0; }
    friend bool operator<(const ExactInteger& a, const ExactInteger& b) { return mpz_cmp(a.z, b.z) < 0; }
    ExactInteger sqrt() const {
        ExactInteger r;
        mpz_sqrt(r.z, z);
        return r;
    }
    ExactInteger shifted(u64_t bits) const {
        ExactInteger r;
        mpz_mul_2exp(r.z, z, bits);
        return r;
    }

    u64_t residue() const { return mpz_get_ui((*this % of(residue::p)).z); }
    upL_t words() const { return (mpz_sizeinbase(z, 2) + 63) / 64; }
    std::string str() const {
        std::string s(mpz_sizeinbase(z, 10) + 2, '\0');
        mpz_get_str(s.data(), 10, z);
        s.resize(s.find('\0'));
        return s;
    }
    friend std::ostream& operator<<(std::ostream& out, const ExactInteger& x) { return out << x.str(); }

    mpz_t z;

  private:
    template <class Operation>
    static ExactInteger by(Operation operation, const ExactInteger& a, const ExactInteger& b) {
        ExactInteger r;
        operation(r.z, a.z, b.z);
        return r;
    }
};

class Rational {
  public:
    Rational() { mpq_init(q); }
    Rational(const ExactInteger& numerator, const ExactInteger& denominator = 1) : Rational() {
        mpz_set(mpq_numref(q), numerator.z);
        mpz_set(mpq_denref(q), denominator.z);
        mpq_canonicalize(q);
    }
    // mantissa * 2^(64 exp), and the sign of a BigFloat.
    explicit Rational(const ExactFloat<cdi>& x) : Rational(x.get_T(), x.get_L(), x.get_exp()) {}
    explicit Rational(const BigFloat<cdi>& x) : Rational(x.get_T(), x.get_L(), x.get_exp()) {
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
    ExactInteger numerator() const {
        ExactInteger r;
        mpz_set(r.z, mpq_numref(q));
        return r;
    }
    ExactInteger denominator() const {
        ExactInteger r;
        mpz_set(r.z, mpq_denref(q));
        return r;
    }
    double to_double() const { return mpq_get_d(q); }
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
inline ::testing::AssertionResult well_formed(const BasicInt<cdi>& x) {
    if (x.get_L() == 0 || *x.word_ptr(x.get_L() - 1) == 0) {
        return ::testing::AssertionFailure() << "top word is zero";
    }
    if (x.hash_error() != 0) return ::testing::AssertionFailure() << "residue and words differ";
    return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult well_formed(const ExactFloat<cdi>& x) {
    if (x.get_L() == 0 || x.get_T()[x.get_L() - 1] == 0) {
        return ::testing::AssertionFailure() << "top word is zero";
    }
    if (x.hash_error() != 0) return ::testing::AssertionFailure() << "residue and words differ";
    return ::testing::AssertionSuccess();
}

}  // namespace znp::testing
