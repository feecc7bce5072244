// Inverse lemniscate sine of n/d: R(b) = (4b - 3)(2b - 1) n^4, P(b) = R(b), Q(b) = (4b + 1)(2b) d^4.
// Source: C. F. Gauss's series of the integral of dt / sqrt(1 - t^4).
#include <cmath>

#include "series/catalogue.hpp"
#include "series/terms/end_recursion.hpp"
#include "series/terms/term_words.hpp"

namespace znp {

using namespace terms;

ArcSinlemn::ArcSinlemn(u64_t n_, u64_t d_)
    : zl_BSS_P2B3_Type0(false, 15, 8),
      n(n_),
      d(d_),
      n4(n * n * n * n),
      d4(d * d * d * d),
      log_n4(std::log(static_cast<double>(n4))),
      log_d4(std::log(static_cast<double>(d4))),
      log_ratio(std::log(static_cast<double>(d4) / static_cast<double>(n4))) {}

u64_t ArcSinlemn::terms(upL_t words) const {
    return static_cast<u64_t>(static_cast<double>(words) * (nats_per_word / log_ratio) + 2);
}

double ArcSinlemn::size_at(double x) const {
    return (2.0794415416798357 + log_d4) * x + 2 * log_factorial(x);
}

double ArcSinlemn::precision_of(u64_t a, u64_t b) const {
    return static_cast<double>(b - a) * log_ratio;
}

void ArcSinlemn::BSR_End(IntR& P, IntR& Q, IntR& R, IntR& t0, IntR& t1, u64_t a, u64_t b) const {
    if (b - a != 1) return end_recursion(*this, P, Q, R, t0, t1, a, b);

    constexpr const char* location = "ArcSinlemn_BSR_End1()";
    store(R, location, product(4 * b - 3, 2 * b - 1, n4));
    P.check_size(location, 3);
    P.set_bui(R);
    store(Q, location, product(4 * b + 1, 2 * b, d4));
}

}  // namespace znp
