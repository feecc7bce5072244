// Inverse lemniscate sine of n/d: R(b) = (4b - 3)(2b - 1) n^4, P(b) = R(b), Q(b) = (4b + 1)(2b) d^4.
// Source: C. F. Gauss's series of the integral of dt / sqrt(1 - t^4).
#include <cmath>
#include <numbers>

#include "series/catalogue.hpp"
#include "series/terms/end_recursion.hpp"
#include "series/terms/parameter_range.hpp"
#include "series/terms/term_words.hpp"

namespace znp {

using namespace terms;

namespace {

// Of a part of the argument n/d, 0 < n < d.
u64_t fourth_power(u64_t x, u64_t low, u64_t high) {
    in_range(x, low, high, L"ArcSinlemn", L"The argument n/d is not between 0 and 1, with d up to 65535.");
    return x * x * x * x;
}

double log_of(u64_t x) {
    return std::log(static_cast<double>(x));
}

double log_of_ratio(u64_t x, u64_t y) {
    return std::log(static_cast<double>(x) / static_cast<double>(y));
}

Growth growth(u64_t n4, u64_t d4) {
    return {.terms_per_word = nats_per_word / log_of_ratio(d4, n4),
            .size_per_term = 3 * std::numbers::ln2 + log_of(d4),
            .factorials = 2,
            .offset = 0,
            .precision_per_term = log_of_ratio(d4, n4)};
}

}  // namespace

ArcSinlemn::ArcSinlemn(u64_t n_, u64_t d_)
    : ArcSinlemn(n_, d_, fourth_power(n_, 1, d_ - 1), fourth_power(d_, 2, 65535)) {}

ArcSinlemn::ArcSinlemn(u64_t n_, u64_t d_, u64_t n4_, u64_t d4_)
    : SteadySeries(false, 15, 8, growth(n4_, d4_)),
      n(n_),
      d(d_),
      n4(n4_),
      d4(d4_),
      log_n4(log_of(n4)),
      log_d4(log_of(d4)),
      log_ratio(log_of_ratio(d4, n4)) {}

void ArcSinlemn::BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                         u64_t b) const {
    if (b - a != 1) return end_recursion(*this, P, Q, R, t0, t1, a, b);

    constexpr const char* location = "ArcSinlemn_BSR_End1()";
    store(R, location, product(4 * b - 3, 2 * b - 1, n4));
    P.check_size(location, 3);
    P.set_bui(R);
    store(Q, location, product(4 * b + 1, 2 * b, d4));
}

}  // namespace znp
