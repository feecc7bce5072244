// What the tests of the radix conversion share: fractions, conversions in buffers of exactly the promised
// bytes, and the same value by an independent library.
#pragma once

#include <gmp.h>
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "multiply/kernels/digit_conversion.hpp"
#include "numbers/float_test_support.hpp"
#include "numbers/radix_conversion.hpp"
#include "test_seed.hpp"

namespace znp::testing {

using CdiArray = std::vector<cdi>;
inline constexpr cdi ten19 = 10'000'000'000'000'000'000u;

// floor(F radix^n / 2^(64 L)) in n words; rest_is_near_one: the rest is above 1 - 2^-40.
struct Expected {
    CdiArray words;
    bool rest_is_near_one;

    Expected(const CdiArray& F, upL_t n, cdi radix) : words(n) {
        mpz_t x, rest;
        mpz_inits(x, rest, nullptr);
        mpz_ui_pow_ui(rest, radix, n);
        mpz_import(x, F.size(), -1, sizeof(cdi), 0, 0, F.data());
        mpz_mul(x, x, rest);
        mpz_fdiv_r_2exp(rest, x, 64 * F.size());
        mpz_fdiv_q_2exp(x, x, 64 * F.size());
        mpz_fdiv_q_2exp(rest, rest, 64 * F.size() - 40);
        rest_is_near_one = mpz_get_ui(rest) == (u64_t{1} << 40) - 1;
        split(x, n, 0, radix);
        mpz_clears(x, rest, nullptr);
    }

    // One more at the lowest word; false if all words are the greatest ones.
    bool increment(cdi radix) {
        for (cdi& word : words) {
            if (++word != radix) return true;
            word = 0;
        }
        return false;
    }

  private:
    void split(mpz_t x, upL_t n, upL_t at, cdi radix) {
        if (n == 1) {
            words[at] = mpz_get_ui(x);
            return;
        }
        const upL_t h = n / 2;
        mpz_t power, high;
        mpz_inits(power, high, nullptr);
        mpz_ui_pow_ui(power, radix, h);
        mpz_fdiv_qr(high, x, x, power);
        split(high, n - h, at + h, radix);
        split(x, h, at, radix);
        mpz_clears(power, high, nullptr);
    }
};

// Twiddle tables for every product of a conversion of these tests and its check.
inline const TableHolder& radix_tables() {
    static constexpr u64_t limit_bits = 64 * 70'000;
    struct Tables {
        GuardedArray<std::byte> memory = make_guarded_array<std::byte>(nullptr, table_size(limit_bits), 64);
        TableHolder holder;
        Tables() { build_tables(holder, limit_bits, memory.get()); }
    };
    static const Tables tables;
    return tables.holder;
}

// A work buffer of exactly so many bytes between guards, with these tables.
class RadixWork : public Work {
  public:
    explicit RadixWork(upL_t bytes, u64_t threads = 1) : Work(bytes), threads_(threads) {}
    BasicParameters bp() {
        BasicParameters bp = Work::bp();
        bp.holder = &radix_tables();
        bp.tds = threads_;
        return bp;
    }

  private:
    u64_t threads_;
};

// A conversion whose result and work buffer are exactly as large as promised, between guards.
inline CdiArray converted(const CdiArray& F, upL_t n, u64_t threads = 1, cdi radix = ten19) {
    RadixWork work(cbr_table_size(radix, n, threads), threads);
    GuardedWords<cdi> out(n);
    EXPECT_EQ(convert(work.bp(), radix, out.data(), n, F.data(), F.size()), 0);
    return CdiArray(out.data(), out.data() + n);
}

// The conversion is right: the truncated value, or one more if what was cut off is nearly a whole one.
inline ::testing::AssertionResult converts(const CdiArray& F, upL_t n, u64_t threads = 1, cdi radix = ten19) {
    const CdiArray actual = converted(F, n, threads, radix);
    Expected expected(F, n, radix);
    if (actual == expected.words) return ::testing::AssertionSuccess();
    if (expected.rest_is_near_one && expected.increment(radix) && actual == expected.words) {
        return ::testing::AssertionSuccess();
    }
    upL_t wrong = 0;
    while (wrong < n && actual[wrong] == expected.words[wrong]) wrong++;
    return ::testing::AssertionFailure()
           << n << " words on " << threads << " threads: wrong from word " << wrong << " on";
}

inline CdiArray random_words(upL_t L, std::mt19937_64& rng) {
    CdiArray F(L);
    for (cdi& word : F) word = rng();
    return F;
}

// Fraction words that a conversion of n words can use, and a few more.
inline upL_t enough_words(upL_t n) {
    return n + 4;
}

// round down((k 10^(-19 j)) 2^(64 L)) + delta.
inline CdiArray decimal_point(upL_t L, cdi k, upL_t j, long delta) {
    mpz_t x, power;
    mpz_inits(x, power, nullptr);
    mpz_set_ui(x, k);
    mpz_mul_2exp(x, x, 64 * L);
    mpz_ui_pow_ui(power, ten19, j);
    mpz_fdiv_q(x, x, power);
    if (delta >= 0) {
        mpz_add_ui(x, x, static_cast<unsigned long>(delta));
    } else {
        mpz_sub_ui(x, x, static_cast<unsigned long>(-delta));
    }
    CdiArray F(L, 0);
    mpz_export(F.data(), nullptr, -1, sizeof(cdi), 0, 0, x);
    mpz_clears(x, power, nullptr);
    return F;
}

}  // namespace znp::testing
