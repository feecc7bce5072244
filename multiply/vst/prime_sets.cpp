#include "multiply/vst/prime_sets.hpp"

#include "foundation/fatal.hpp"
#include "multiply/vst/recovery_table.hpp"

namespace znp::vst {

namespace {

template <unsigned a>
struct alignas(32) RecoveryVectors {
    double vectors[sizeof(RecoveryTable<a>) / sizeof(double)];
};

// RecoveryTable<a> from the limbs.
template <unsigned a>
constexpr RecoveryVectors<a> recovery(const double* factors, const double* pair_products, double scale) {
    RecoveryVectors<a> table{};
    double* next = table.vectors;
    const auto put = [&next](double x) {
        for (unsigned lane = 0; lane < 4; ++lane) *next++ = x;
    };
    const double quotient_factor = scale * 0x1p-96;
    put(high_magic - pair_products[a - 1] * 0x1p48 - 0.2 / quotient_factor);
    put(quotient_factor);
    for (unsigned i = 0; i < a * (a - 1) + a; ++i) put(factors[i]);
    for (unsigned j = 0; j < a; ++j)
        put(pair_products[j] -
            (j == 0   ? 0
             : j == 1 ? low_excess
                      : both_excess) +
            (j == a - 1 ? low_magic : 0));
    return table;
}

#include "multiply/vst/prime_sets.inc"

}  // namespace

const PrimeSet& prime_set(unsigned a, unsigned b) {
    if (a < 4 || a > 9 || b % 2 == 0 || b > 7)
        assert_failure(fatal_category::invalid_parameters, L"VST", L"prime set");
    return sets[a - 4][b / 2];
}

// (p - 1) / (b 2^c) is -1 / (b 2^c) modulo p, and -2^max_c is 1 / multipliers[s].
double inverse_scale(const PrimeSet& set, unsigned s, unsigned c) {
    const auto p = static_cast<s64_t>(set.primes[s]);
    s128_t x = -(((p - 1) / set.b) >> c);
    x = x * static_cast<s64_t>(set.crt_inverses[s]) % p;
    for (unsigned i = 0; i < 2u * set.input_power; ++i) x = -(x << set.max_c) % p;
    const auto scale = static_cast<s64_t>(x);
    return static_cast<double>(scale > p / 2 ? scale - p : scale < -(p / 2) ? scale + p : scale);
}

}  // namespace znp::vst
