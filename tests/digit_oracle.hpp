// Digits of constants by GMP and formulas of their own, truncated: "3.14159...".
//
// Plain fixed-point arithmetic with guard bits; a call for d digits costs about d^2.
#pragma once

#include <gmp.h>

#include <cstddef>
#include <string>
#include <vector>

namespace znp::testing {

class DigitOracle {
  public:
    explicit DigitOracle(unsigned long digits) : digits_(digits) { mpz_init(x_); }
    ~DigitOracle() { mpz_clear(x_); }
    DigitOracle(const DigitOracle&) = delete;
    DigitOracle& operator=(const DigitOracle&) = delete;

    std::string sqrt(unsigned long n, unsigned radix) {
        mpz_set_ui(x_, n);
        set_root();
        return text(radix);
    }
    std::string golden_ratio(unsigned radix) {  // (1 + sqrt 5) / 2
        mpz_set_ui(x_, 5);
        set_root();
        mpz_t one;
        set_one(one);
        mpz_add(x_, x_, one);
        mpz_clear(one);
        mpz_fdiv_q_2exp(x_, x_, 1);
        return text(radix);
    }
    std::string e(unsigned radix) {  // sum of 1 / k!
        mpz_t term;
        set_one(term);
        mpz_set(x_, term);
        for (unsigned long k = 1; mpz_sgn(term) != 0; k++) {
            mpz_fdiv_q_ui(term, term, k);
            mpz_add(x_, x_, term);
        }
        mpz_clear(term);
        return text(radix);
    }
    std::string pi(unsigned radix) {  // 16 arctan(1/5) - 4 arctan(1/239), J. Machin
        mpz_set_ui(x_, 0);
        add_arctan(16, 5, false);
        add_arctan(4, 239, true);
        return text(radix);
    }

  private:
    static constexpr unsigned long guard_bits = 128;

    unsigned long bits() const { return digits_ * 4 + guard_bits; }
    void set_one(mpz_t& one) const {
        mpz_init_set_ui(one, 1);
        mpz_mul_2exp(one, one, bits());
    }
    void set_root() {
        mpz_mul_2exp(x_, x_, 2 * bits());
        mpz_sqrt(x_, x_);
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
    std::string text(unsigned radix) {
        mpz_t scale;
        mpz_init(scale);
        mpz_ui_pow_ui(scale, radix, digits_);
        mpz_mul(scale, scale, x_);
        mpz_fdiv_q_2exp(scale, scale, bits());
        std::vector<char> buffer(mpz_sizeinbase(scale, static_cast<int>(radix)) + 2);
        mpz_get_str(buffer.data(), static_cast<int>(radix), scale);
        mpz_clear(scale);
        std::string digits(buffer.data());
        digits.insert(digits.end() - static_cast<std::ptrdiff_t>(digits_), '.');
        return digits;
    }

    unsigned long digits_;
    mpz_t x_;  // the constant times 2^bits()
};

}  // namespace znp::testing
