// What the tests of floating-point numbers share: integers of an independent library, exact values of floats,
// numbers in guarded buffers, the twiddle tables.
#pragma once

#include <gmp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "foundation/exceptions.hpp"
#include "foundation/guarded_alloc.hpp"
#include "multiply/hash_by_threads.hpp"
#include "multiply/multiply_test_support.hpp"
#include "multiply/table_holder.hpp"
#include "numbers/basic_int.hpp"
#include "numbers/big_float.hpp"
#include "numbers/exact_float.hpp"

namespace znp::testing {

class Integer {
  public:
    Integer() { mpz_init(z_); }
    Integer(s64_t x) : Integer() {  // NOLINT: numbers in expressions
        mpz_set_si(z_, x);
    }
    Integer(const cdi* T, upL_t L) : Integer() { mpz_import(z_, L, -1, sizeof(cdi), 0, 0, T); }
    explicit Integer(const std::vector<cdi>& words) : Integer(words.data(), words.size()) {}
    explicit Integer(const BasicInt& x) : Integer(x.get_T(), x.get_L()) {}
    Integer(const Integer& other) { mpz_init_set(z_, other.z_); }
    Integer& operator=(const Integer& other) {
        mpz_set(z_, other.z_);
        return *this;
    }
    ~Integer() { mpz_clear(z_); }

    static Integer from(mpz_srcptr x) {
        Integer r;
        mpz_set(r.z_, x);
        return r;
    }
    static Integer of(u64_t x) { return Integer(&x, 1); }
    static Integer decimal(const char* text) {
        Integer r;
        mpz_set_str(r.z_, text, 10);
        return r;
    }
    static Integer pow(u64_t base, u64_t e) {
        Integer r;
        mpz_ui_pow_ui(r.z_, base, e);
        return r;
    }
    mpz_srcptr get() const { return z_; }

    friend Integer operator+(Integer a, const Integer& b) { return mpz_add(a.z_, a.z_, b.z_), a; }
    friend Integer operator-(Integer a, const Integer& b) { return mpz_sub(a.z_, a.z_, b.z_), a; }
    friend Integer operator*(Integer a, const Integer& b) { return mpz_mul(a.z_, a.z_, b.z_), a; }
    // Rounded towards minus infinity, and what that leaves.
    friend Integer operator/(Integer a, const Integer& b) { return mpz_fdiv_q(a.z_, a.z_, b.z_), a; }
    friend Integer operator%(Integer a, const Integer& b) { return mpz_fdiv_r(a.z_, a.z_, b.z_), a; }
    friend Integer operator<<(Integer a, u64_t bits) { return mpz_mul_2exp(a.z_, a.z_, bits), a; }
    // Rounded towards minus infinity.
    friend Integer operator>>(Integer a, u64_t bits) { return mpz_fdiv_q_2exp(a.z_, a.z_, bits), a; }
    // Modulo 2^bits, not negative.
    Integer low_bits(u64_t bits) const {
        Integer r;
        mpz_fdiv_r_2exp(r.z_, z_, bits);
        return r;
    }
    friend bool operator==(const Integer& a, const Integer& b) { return mpz_cmp(a.z_, b.z_) == 0; }
    friend bool operator<(const Integer& a, const Integer& b) { return mpz_cmp(a.z_, b.z_) < 0; }
    bool is_zero() const { return mpz_sgn(z_) == 0; }

    // log2 |x|, or -infinity.
    double log2() const {
        long exponent = 0;
        const double d = mpz_get_d_2exp(&exponent, z_);
        return std::log2(std::fabs(d)) + static_cast<double>(exponent);
    }
    u64_t residue() const { return mpz_get_ui((*this % of(residue::p)).z_); }
    u64_t guard_residue() const { return mpz_get_ui((*this % of(guard::q)).z_); }
    Integer sqrt() const {
        Integer r;
        mpz_sqrt(r.z_, z_);
        return r;
    }
    std::string str() const {
        std::string text(mpz_sizeinbase(z_, 10) + 2, '\0');
        mpz_get_str(text.data(), 10, z_);
        text.resize(text.find('\0'));
        return text;
    }
    friend std::ostream& operator<<(std::ostream& out, const Integer& x) { return out << x.str(); }

  private:
    mpz_t z_;
};

// The value of a float in units of B^low, which has to be at or below its exponent. Its residue must be that
// of its words.
inline Integer value(const BigFloat& x, s64_t low) {
    EXPECT_EQ(x.hash_error(), 0u) << "residue and words differ";
    const Integer mantissa(x.get_T(), x.get_L());
    const Integer scaled =
        x.is_zero() ? Integer(0) : mantissa << static_cast<u64_t>(x.get_exp() - low) * WordTraits<cdi>::bits;
    return x.raw_sign() ? scaled : Integer(0) - scaled;
}
inline Integer value(const ExactFloat& x, s64_t low) {
    return Integer(x.get_T(), x.get_L()) << static_cast<u64_t>(x.get_exp() - low) * WordTraits<cdi>::bits;
}

// L words, the lowest and the top one not zero; the others are random, zeros or ones.
inline std::vector<cdi> random_mantissa(upL_t L, std::mt19937_64& rng) {
    std::vector<cdi> words(L);
    const u64_t kind = rng() % 4;
    for (cdi& w : words) {
        const bool ones = kind == 1 || (kind == 2 && (rng() & 1) != 0);
        w = ones ? ~cdi{0} : (kind == 2 ? cdi{0} : static_cast<cdi>(rng()));
    }
    if (words.back() == 0) words.back() = 1;
    if (words.front() == 0) words.front() = 1;
    return words;
}

inline ExactFloat exact(const std::vector<cdi>& words, s64_t exp) {
    const u64_t h = residue::hash_words(words.data(), words.size());
    const u64_t power = residue::word_power64(exp);
    return ExactFloat(words.data(), words.size(), exp, residue::mul(h, power));
}
inline BigFloat big(const std::vector<cdi>& words, s64_t exp, bool positive = true) {
    return BigFloat(words.data(), words.size(), exp, positive);
}

// A number in a buffer of exactly `size` words between guard words.
template <class Number>
class InBuffer {
  public:
    explicit InBuffer(upL_t size) : buffer_(size), x(buffer_.data(), size) {}

  private:
    GuardedWords<cdi> buffer_;

  public:
    Number x;
};
using ExactIn = InBuffer<ExactFloatR>;
using BigIn = InBuffer<BigFloatR>;

// Residue and words agree, and the number is normalised.
inline ::testing::AssertionResult consistent(const ExactFloat& x) {
    if (x.get_L() == 0 || x.get_T()[x.get_L() - 1] == 0)
        return ::testing::AssertionFailure() << "top word is zero";
    if (x.hash_error() != 0) return ::testing::AssertionFailure() << "residue and words differ";
    return ::testing::AssertionSuccess();
}

// Twiddle tables for every length that the FFT serves, built once.
inline const TableHolder& all_tables() {
    static constexpr u64_t limit_bits = 600000;
    struct Tables {
        GuardedArray<std::byte> memory = make_guarded_array<std::byte>(nullptr, table_size(limit_bits), 64);
        TableHolder holder;
        Tables() { build_tables(holder, limit_bits, memory.get()); }
    };
    static const Tables tables;
    return tables.holder;
}

// A work buffer of exactly so many bytes between guards, with the tables.
class Work {
  public:
    explicit Work(upL_t bytes) : work_(bytes) {}
    BasicParameters bp() {
        BasicParameters bp = work_.bp();
        bp.holder = &all_tables();
        return bp;
    }
    bool untouched() const { return work_.untouched(); }

  private:
    GuardedWork work_;
};

// The action throws BufferTooSmallException at the location, for the sizes in words.
template <class Action>
void expect_too_small(const char* location, upL_t needed, upL_t given, Action action) {
    SCOPED_TRACE(location);
    const auto e = caught<BufferTooSmallException>(action);
    EXPECT_STREQ(e.location, location);
    EXPECT_EQ(e.size_needed, needed);
    EXPECT_EQ(e.size_given, given);
}

}  // namespace znp::testing
