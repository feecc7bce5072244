// Integers modulo a prime below 2^48, for what is computed once: tables and the constants of a product.
//
// A product's quotient is at most one off when it is taken in doubles, which is several times faster than a
// division of 128 bits.
#pragma once

#include "foundation/types.hpp"

namespace znp::vst {

class Field {
  public:
    explicit Field(double p) : p_(static_cast<u64_t>(p)), inverse_(1.0 / p) {}
    u64_t from(double balanced) const {
        return balanced < 0 ? p_ - static_cast<u64_t>(-balanced) : static_cast<u64_t>(balanced);
    }
    double balanced(u64_t x) const {
        return x > p_ / 2 ? -static_cast<double>(p_ - x) : static_cast<double>(x);
    }
    u64_t add(u64_t x, u64_t y) const { return (x + y) % p_; }
    u64_t sub(u64_t x, u64_t y) const { return (x + p_ - y) % p_; }
    u64_t mul(u64_t x, u64_t y) const {
        const auto q = static_cast<s64_t>(static_cast<double>(x) * static_cast<double>(y) * inverse_);
        const auto p = static_cast<s64_t>(p_);
        const auto r = static_cast<s64_t>(x * y - static_cast<u64_t>(q) * p_);  // -p <= r < 2 p
        return static_cast<u64_t>(r < 0 ? r + p : r >= p ? r - p : r);
    }
    u64_t power(u64_t x, u64_t e) const {
        u64_t result = 1;
        for (; e != 0; e >>= 1, x = mul(x, x)) {
            if ((e & 1) != 0) result = mul(result, x);
        }
        return result;
    }
    u64_t invert(u64_t x) const { return power(x, p_ - 2); }

  private:
    u64_t p_;
    double inverse_;
};

}  // namespace znp::vst
