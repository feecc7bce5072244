#include "series/log_formula/factorization.hpp"

#include <bit>
#include <vector>

namespace znp {

namespace {

constexpr u32_t prime_limit = 1 << 16;

std::vector<u32_t> sieve() {
    std::vector<bool> composite(prime_limit);
    std::vector<u32_t> primes;
    for (u32_t i = 2; i < prime_limit; i++) {
        if (composite[i]) continue;
        primes.push_back(i);
        for (u64_t j = u64_t{i} * i; j < prime_limit; j += i) composite[j] = true;
    }
    return primes;
}

// Enough trial divisions to ask whether the rest is a prime.
constexpr upL_t divisions_before_test = 54;

u64_t power_modulo(u64_t base, u64_t exponent, u64_t n) {
    u64_t result = 1;
    for (; exponent != 0; exponent /= 2) {
        if (exponent % 2 != 0) result = result * base % n;
        base = base * base % n;
    }
    return result;
}

// Of an odd n below 2^32 without a factor up to 61. G. Jaeschke, "On strong pseudoprimes to several bases",
// 1993: none below 4,759,123,141 is one to all of these.
bool is_prime(u64_t n) {
    const auto twos = static_cast<u32_t>(std::countr_zero(n - 1));
    const auto passes = [&](u64_t base) {
        u64_t x = power_modulo(base, (n - 1) >> twos, n);
        if (x == 1) return true;
        for (u32_t i = 0; i < twos; i++, x = x * x % n) {
            if (x == n - 1) return true;
        }
        return false;
    };
    return passes(2) && passes(7) && passes(61);
}

}  // namespace

std::span<const u32_t> small_primes() {
    static const std::vector<u32_t> primes = sieve();
    return primes;
}

u64_t factor(Factorization& factorization, u64_t n, upL_t base_count, s64_t weight) {
    const auto add = [&](u64_t p, s64_t exponent) {
        return formula_add(factorization, {p, weight * exponent}, Factorization::max_pairs);
    };
    const auto base = small_primes().first(base_count);
    for (upL_t i = 0; i < base.size(); i++) {
        const u32_t p = base[i];
        if (u64_t{p} * p > n || (i == divisions_before_test && is_prime(n))) break;
        s64_t exponent = 0;
        for (; n % p == 0; n /= p) exponent++;
        if (exponent != 0 && !add(p, exponent)) return 0;
    }
    // What is left here has no factor below its root, or is beyond the base.
    if (n > 1 && n <= base.back()) return add(n, 1) ? 1 : 0;
    return n;
}

bool factor_whole(Factorization& factorization, u64_t n, s64_t weight) {
    const u64_t prime = factor(factorization, n, small_primes().size(), weight);
    if (prime <= 1) return prime == 1;
    return formula_add(factorization, {prime, weight}, Factorization::max_pairs);
}

bool verify_formula(const MachinFormula& formula, u64_t n) {
    Factorization product;
    for (const auto& [x, c] : formula) {
        if (!factor_whole(product, x + 1, c) || !factor_whole(product, x - 1, -c)) return false;
    }
    compact(product);
    Factorization expected;
    return factor_whole(expected, n, 2) && product == expected;
}

}  // namespace znp
