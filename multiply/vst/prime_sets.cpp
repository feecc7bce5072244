#include "multiply/vst/prime_sets.hpp"

#include "foundation/fatal.hpp"

namespace znp::vst {

namespace {

#include "multiply/vst/prime_sets.inc"

}  // namespace

const PrimeSet& prime_set(unsigned a, unsigned b) {
    if (a < 4 || a > 9 || b % 2 == 0 || b > 7)
        assert_failure(fatal_category::invalid_parameters, L"VST", L"prime set");
    return sets[a - 4][b / 2];
}

// (p - 1) / (b 2^c) is -1 / (b 2^c) modulo p.
double inverse_scale(const PrimeSet& set, unsigned s, unsigned c) {
    const auto p = static_cast<s64_t>(set.primes[s]);
    const s64_t inverse_points = -(((p - 1) / set.b) >> c);
    const auto scale =
        static_cast<s64_t>(static_cast<s128_t>(inverse_points) * static_cast<s64_t>(set.crt_inverses[s]) % p);
    return static_cast<double>(scale > p / 2 ? scale - p : scale < -(p / 2) ? scale + p : scale);
}

}  // namespace znp::vst
