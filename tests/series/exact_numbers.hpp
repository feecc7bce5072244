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
#include "numbers/exact_float.hpp"

namespace znp::testing {

class Integer {
  public:
    Integer(s64_t x = 0) { mpz_init_set_si(z, x); }
    explicit Integer(const char* decimal) { mpz_init_set_str(z, decimal, 10); }
    explicit Integer(const BasicInt<cdi>& x) : Integer() {
        mpz_import(z, x.get_L(), -1, sizeof(cdi), 0, 0, x.get_T());
    }
    Integer(const Integer& other) { mpz_init_set(z, other.z); }
    Integer(Integer&& other) noexcept : Integer() { mpz_swap(z, other.z); }
    Integer& operator=(Integer other) noexcept {
        mpz_swap(z, other.z);
        return *this;
    }
    ~Integer() { mpz_clear(z); }

    static Integer of(u64_t x) {
        Integer r;
        mpz_set_ui(r.z, x);
        return r;
    }
    static Integer pow(u64_t base, u64_t e) {
        Integer r;
        mpz_ui_pow_ui(r.z, base, e);
        return r;
    }

    friend Integer operator+(const Integer& a, const Integer& b) { return by(mpz_add, a, b); }
    friend Integer operator-(const Integer& a, const Integer& b) { return by(mpz_sub, a, b); }
    friend Integer operator*(const Integer& a, const Integer& b) { return by(mpz_mul, a, b); }
    friend Integer operator/(const Integer& a, const Integer& b) { return by(mpz_fdiv_q, a, b); }
    friend Integer operator%(const Integer& a, const Integer& b) { return by(mpz_fdiv_r, a, b); }
    friend bool operator==(const Integer& a, const Integer& b) { return mpz_cmp(a.z, b.z) == 0; }
    friend bool operator<(const Integer& a, const Integer& b) { return mpz_cmp(a.z, b.z) < 0; }
    Integer sqrt() const {
        Integer r;
        mpz_sqrt(r.z, z);
        return r;
    }
    Integer shifted(u64_t bits) const {
        Integer r;
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
    friend std::ostream& operator<<(std::ostream& out, const Integer& x) { return out << x.str(); }

    mpz_t z;

  private:
    template <class Operation>
    static Integer by(Operation operation, const Integer& a, const Integer& b) {
        Integer r;
        operation(r.z, a.z, b.z);
        return r;
    }
};

class Fraction {
  public:
    Fraction() { mpq_init(q); }
    Fraction(const Integer& numerator, const Integer& denominator = 1) : Fraction() {
        mpz_set(mpq_numref(q), numerator.z);
        mpz_set(mpq_denref(q), denominator.z);
        mpq_canonicalize(q);
    }
    // mantissa * 2^(64 exp).
    explicit Fraction(const ExactFloat<cdi>& x) : Fraction() {
        mpz_import(mpq_numref(q), x.get_L(), -1, sizeof(cdi), 0, 0, x.get_T());
        const s64_t e = x.get_exp() * 64;
        if (e >= 0) {
            mpq_mul_2exp(q, q, static_cast<u64_t>(e));
        } else {
            mpq_div_2exp(q, q, static_cast<u64_t>(-e));
        }
    }
    Fraction(const Fraction& other) : Fraction() { mpq_set(q, other.q); }
    Fraction(Fraction&& other) noexcept : Fraction() { mpq_swap(q, other.q); }
    Fraction& operator=(Fraction other) noexcept {
        mpq_swap(q, other.q);
        return *this;
    }
    ~Fraction() { mpq_clear(q); }

    friend Fraction operator+(const Fraction& a, const Fraction& b) { return by(mpq_add, a, b); }
    friend Fraction operator-(const Fraction& a, const Fraction& b) { return by(mpq_sub, a, b); }
    friend Fraction operator*(const Fraction& a, const Fraction& b) { return by(mpq_mul, a, b); }
    friend Fraction operator/(const Fraction& a, const Fraction& b) { return by(mpq_div, a, b); }
    friend bool operator==(const Fraction& a, const Fraction& b) { return mpq_equal(a.q, b.q) != 0; }
    Integer numerator() const {
        Integer r;
        mpz_set(r.z, mpq_numref(q));
        return r;
    }
    Integer denominator() const {
        Integer r;
        mpz_set(r.z, mpq_denref(q));
        return r;
    }
    double to_double() const { return mpq_get_d(q); }
    friend std::ostream& operator<<(std::ostream& out, const Fraction& x) {
        return out << x.numerator() << '/' << x.denominator();
    }

    mpq_t q;

  private:
    template <class Operation>
    static Fraction by(Operation operation, const Fraction& a, const Fraction& b) {
        Fraction r;
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
