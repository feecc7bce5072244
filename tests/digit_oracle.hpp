// Digits of constants by GMP and formulas of their own, truncated: "3.14159...".
//
// Plain fixed-point arithmetic with guard bits; a constant to d digits costs about d^2.
#pragma once

#include <gmp.h>

#include <cstddef>
#include <string>
#include <vector>

namespace znp::testing {

class DigitOracle {
  public:
    // Room for so many digits in radix 16, or any smaller radix.
    explicit DigitOracle(unsigned long digits) : bits_(digits * 4 + guard_bits) { mpz_init(x_); }
    ~DigitOracle() { mpz_clear(x_); }
    DigitOracle(const DigitOracle&) = delete;
    DigitOracle& operator=(const DigitOracle&) = delete;

    DigitOracle& sqrt(unsigned long n) {
        mpz_set_ui(x_, n);
        mpz_mul_2exp(x_, x_, 2 * bits_);
        mpz_sqrt(x_, x_);
        return *this;
    }
    DigitOracle& golden_ratio() {  // (1 + sqrt 5) / 2
        sqrt(5);
        mpz_t one;
        set_one(one);
        mpz_add(x_, x_, one);
        mpz_clear(one);
        mpz_fdiv_q_2exp(x_, x_, 1);
        return *this;
    }
    DigitOracle& e() {  // sum of 1 / k!
        mpz_t term;
        set_one(term);
        mpz_set(x_, term);
        for (unsigned long k = 1; mpz_sgn(term) != 0; k++) {
            mpz_fdiv_q_ui(term, term, k);
            mpz_add(x_, x_, term);
        }
        mpz_clear(term);
        return *this;
    }
    DigitOracle& pi() {  // 16 arctan(1/5) - 4 arctan(1/239), J. Machin
        mpz_set_ui(x_, 0);
        add_arctan(16, 5, false);
        add_arctan(4, 239, true);
        return *this;
    }
    DigitOracle& arccoth(unsigned long n) {  // the sum of 1 / ((2k + 1) n^(2k + 1))
        mpz_t power, term;
        set_one(power);
        mpz_init(term);
        mpz_set_ui(x_, 0);
        mpz_fdiv_q_ui(power, power, n);
        for (unsigned long k = 1; mpz_sgn(power) != 0; k += 2) {
            mpz_fdiv_q_ui(term, power, k);
            mpz_add(x_, x_, term);
            mpz_fdiv_q_ui(power, power, n);
            mpz_fdiv_q_ui(power, power, n);
        }
        mpz_clears(power, term, nullptr);
        return *this;
    }
    // The number that is given by more decimal digits than will be asked for.
    DigitOracle& decimal(std::string text) {
        const std::size_t point = text.find('.');
        const auto digits = static_cast<unsigned long>(text.size() - point - 1);
        text.erase(point, 1);
        mpz_t scale;
        mpz_init(scale);
        mpz_ui_pow_ui(scale, 10, digits);
        mpz_set_str(x_, text.c_str(), 10);
        mpz_mul_2exp(x_, x_, bits_);
        mpz_fdiv_q(x_, x_, scale);
        mpz_clear(scale);
        return *this;
    }

    // The integer part, a point, and so many digits.
    std::string text(unsigned long digits, int radix = 10) const {
        mpz_t scale;
        mpz_init(scale);
        mpz_ui_pow_ui(scale, static_cast<unsigned long>(radix), digits);
        mpz_mul(scale, scale, x_);
        mpz_fdiv_q_2exp(scale, scale, bits_);
        std::vector<char> buffer(mpz_sizeinbase(scale, radix) + 2);
        mpz_get_str(buffer.data(), radix, scale);
        mpz_clear(scale);
        std::string result(buffer.data());
        if (result.size() <= digits) result.insert(0, digits + 1 - result.size(), '0');
        result.insert(result.end() - static_cast<std::ptrdiff_t>(digits), '.');
        return result;
    }

  private:
    static constexpr unsigned long guard_bits = 128;

    void set_one(mpz_t& one) const {
        mpz_init_set_ui(one, 1);
        mpz_mul_2exp(one, one, bits_);
    }
    void add_arctan(unsigned long factor, unsigned long inverse, bool subtract) {
        mpz_t power, term;
        set_one(power);
        mpz_init(term);
        mpz_mul_ui(power, power, factor);
        mpz_fdiv_q_ui(power, power, inverse);
        for (unsigned long k = 1; mpz_sgn(power) != 0; k += 2) {
            mpz_fdiv_q_ui(term, power, k);
            if ((k % 4 == 3) != subtract) {
                mpz_sub(x_, x_, term);
            } else {
                mpz_add(x_, x_, term);
            }
            mpz_fdiv_q_ui(power, power, inverse * inverse);
        }
        mpz_clears(power, term, nullptr);
    }

    unsigned long bits_;
    mpz_t x_;  // the constant times 2^bits_
};

}  // namespace znp::testing
