#include "compute/settings/precision.hpp"

namespace znp {
namespace {

constexpr double log16_of_10 = 0.8304820237218407;

}  // namespace

u64_t hex_digits_for(u64_t decimal_digits) {
    return static_cast<u64_t>(log16_of_10 * static_cast<double>(decimal_digits)) + 1;
}

u64_t decimal_digits_for(u64_t hex_digits) {
    const double digits = static_cast<double>(hex_digits) / log16_of_10;
    if (digits >= 18446744073709551616.0) return ~u64_t{0};
    return static_cast<u64_t>(digits);
}

upL_t precision_for(u64_t hex_digits) {
    return hex_digits / 16 + 2;
}

}  // namespace znp
