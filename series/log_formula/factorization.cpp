#include "series/log_formula/factorization.hpp"

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
    for (const u32_t p : base) {
        if (u64_t{p} * p > n) break;
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
