#include "multiply/vst/prime_sets.hpp"

#include "foundation/fatal.hpp"
#include "multiply/vst/field.hpp"
#include "multiply/vst/recovery_table.hpp"

namespace znp::vst {

namespace {

template <unsigned a>
struct alignas(vector_bytes) RecoveryVectors {
    double vectors[sizeof(RecoveryTable<a>) / sizeof(double)];
};

// RecoveryTable<a>. factors: crt_factors. pair_products: a limbs of minus the products of the limbs of
// neighbouring P / p. scale: -2^(48 a) / P.
template <unsigned a>
constexpr RecoveryVectors<a> recovery(const double* factors, const double* pair_products, double scale) {
    RecoveryVectors<a> table{};
    double* next = table.vectors;
    const auto put = [&next](double x) {
        for (unsigned lane = 0; lane < vector_doubles; ++lane) *next++ = x;
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
    const Field f(set.primes[s]);
    const auto minus = static_cast<u64_t>(set.primes[s] - 1) / set.b >> c;
    u64_t x = f.mul(f.sub(0, minus), f.from(set.crt_inverses[s]));
    for (unsigned i = 0; i < 2u * set.input_power; ++i) x = f.sub(0, f.mul(x, u64_t{1} << set.max_c));
    return f.balanced(x);
}

}  // namespace znp::vst
