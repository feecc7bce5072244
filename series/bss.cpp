#include "series/bss.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/fail.hpp"

namespace znp {

namespace {

// The smallest x in (a, b] for which enough(x) holds; b if none below does. enough is monotone.
template <class Predicate>
u64_t first_index(u64_t a, u64_t b, Predicate enough) {
    while (b - a > 1) {
        const u64_t m = a + (b - a) / 2;
        (enough(m) ? b : a) = m;
    }
    return b;
}

}  // namespace

double log_factorial(double x) {
    constexpr double half_log_two_pi_and_half = 1.4189385332046727;
    return x <= 1 ? 0 : (std::log(x) - 1) * (x + 0.5) + half_log_two_pi_and_half;
}

upL_t zl_BSS::PrecisionAtIndex(u64_t, u64_t) const {
    fail(zn_exception(error_code::unspecified, "zl_BSS::PrecisionAtIndex() is required to use ASR."));
}

MemoryPlan zl_BSS::memory_plan(upL_t L, u64_t level, u64_t threads) const {
    return level_memory_plan(L, memory_overhead, level, threads);
}

u64_t zl_BSS::split(u64_t a, u64_t b) const {
    const double half = (size_at(static_cast<double>(a)) + size_at(static_cast<double>(b))) / 2;
    return first_index(a, b - 1, [&](u64_t m) { return size_at(static_cast<double>(m)) >= half; });
}

u64_t zl_BSS::divide(u64_t a, u64_t b) const {
    return b - a > 100 ? split(a, b) : (a + b) >> 1;
}

upL_t zl_BSS::words_of(u64_t a, u64_t b) const {
    const double size = size_at(static_cast<double>(b)) - size_at(static_cast<double>(a));
    return static_cast<upL_t>(size * words_per_nat + 2);
}

u64_t zl_BSS::digits_of(u64_t a, u64_t b) const {
    const double size = size_at(static_cast<double>(b)) - size_at(static_cast<double>(a));
    return static_cast<u64_t>(size * digits_per_nat + 1);
}

u64_t zl_BSS::section_end(u64_t a, u64_t b, double target) const {
    const double start = size_at(static_cast<double>(a));
    return first_index(a, b, [&](u64_t x) {
        return std::min(target, precision_of(x, b)) <= size_at(static_cast<double>(x)) - start;
    });
}

u64_t zl_BSS::section_end_asr(u64_t a, u64_t b, double target) const {
    const double start = size_at(static_cast<double>(a));
    return first_index(a, b, [&](u64_t x) { return size_at(static_cast<double>(x)) - start >= target; });
}

}  // namespace znp
