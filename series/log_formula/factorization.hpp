// Numbers up to 2^33 in prime factors, and the exact proof of a formula by them.
#pragma once

#include <span>

#include "series/log_formula/machin_formula.hpp"

namespace znp {

// All primes below 2^16, which factor every number up to 2^32.
std::span<const u32_t> small_primes();

// Divides n (1 to 2^32) by the first base_count of the small primes as often as it goes, adds weight times
// each exponent to the factorization, and returns the cofactor that is left: 0 if the factorization is full.
u64_t factor(Factorization& factorization, u64_t n, upL_t base_count, s64_t weight);

// The same whole, cofactor and all. False if the factorization is full.
bool factor_whole(Factorization& factorization, u64_t n, s64_t weight);

// Whether the formula's sum is Log(n), n at least 1: with ArcCoth(x) = 1/2 Log((x + 1) / (x - 1)) the primes
// of all x + 1 and x - 1, as often as the coefficients say, make n^2. Proved in integers; all x from 2 to
// 2^32 - 1.
bool verify_formula(const MachinFormula& formula, u64_t n);

}  // namespace znp
