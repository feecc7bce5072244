// ArcCoth of x: the terms 1 / ((2k + 1) x2^(k - a)), x2 = x^2, for k from a + 1 to b.
//
// R is the product of the odd factors, and Q = R x2^(b - a). A range is built up term by term; there are no
// halves to merge.
#include <cmath>
#include <numbers>

#include "multiply/kernels/word_arrays.hpp"
#include "multiply/kernels/word_multiply.hpp"
#include "multiply/kernels/word_primitives.hpp"
#include "series/catalogue.hpp"
#include "series/terms/parameter_range.hpp"
#include "series/terms/term_words.hpp"

namespace znp {

namespace {

// x *= w. The word above the value takes the carry.
void multiply(cdi* x, upL_t& L, u64_t w) {
    const cdi carry = MulW(x, L, w);
    if (carry != 0) x[L++] = carry;
}

// x += y, y no longer than x.
void add(cdi* x, upL_t& L, const cdi* y, upL_t Ly) {
    bool carry = add_words(x, x, y, Ly);
    carry = copy_add_carry(x + Ly, x + Ly, L - Ly, carry);
    if (carry) x[L++] = 1;
}

// The steps k = a + 1 to b. step(x, L, c) multiplies by c x2.
template <class Step>
void sum_terms(BasicIntR& P, BasicIntR& Q, BasicIntR& R, u64_t a, u64_t b, u64_t x2, const char* location,
               Step step) {
    P.check_size(location, (b - a) * 2 + 1);
    Q.check_size(location, (b - a) * 2 + 1);
    R.check_size(location, b - a + 1);
    cdi* p = P.get_T();
    cdi* q = Q.get_T();
    cdi* r = R.get_T();

    const u64_t first = 2 * a + 3;
    p[0] = 1;
    r[0] = first;
    const u128_t start = Mul64(first, x2);
    q[0] = static_cast<cdi>(start);
    q[1] = static_cast<cdi>(start >> 64);
    upL_t Lp = 1, Lq = q[1] != 0 ? 2 : 1, Lr = 1;
    for (u64_t k = a + 2; k <= b; k++) {
        const u64_t c = 2 * k + 1;
        step(p, Lp, c);  // now at least r: both are products of the odd factors, p with x2 besides
        add(p, Lp, r, Lr);
        step(q, Lq, c);
        multiply(r, Lr, c);
    }
    P.set_LN(Lp);
    Q.set_LN(Lq);
    R.set_LN(Lr);
}

// (2b + 1) x2 fits a word.
void ArcCoth_BSR_End_small(BasicIntR& P, BasicIntR& Q, BasicIntR& R, u64_t a, u64_t b, u64_t x2) {
    sum_terms(P, Q, R, a, b, x2, "ArcCoth_BSR_End_small()",
              [x2](cdi* x, upL_t& L, u64_t c) { multiply(x, L, c * x2); });
}

void ArcCoth_BSR_End_large(BasicIntR& P, BasicIntR& Q, BasicIntR& R, u64_t a, u64_t b, u64_t x2) {
    if ((Mul64(2 * b + 1, x2) >> 64) == 0) return ArcCoth_BSR_End_small(P, Q, R, a, b, x2);

    sum_terms(P, Q, R, a, b, x2, "ArcCoth_BSR_End_large()", [x2](cdi* x, upL_t& L, u64_t c) {
        multiply(x, L, c);
        multiply(x, L, x2);
    });
}

u64_t square(u64_t x) {
    terms::in_range(x, 2, 4294967295, L"ArcCoth", L"The argument is not from 2 to 4294967295.");
    return x * x;
}

Growth growth(double log_x2) {
    return {.terms_per_word = nats_per_word / log_x2,
            .size_per_term = std::numbers::ln2 + log_x2,
            .factorials = 1,
            .offset = 0,
            .precision_per_term = log_x2};
}

}  // namespace

ArcCoth::ArcCoth(u64_t x) : ArcCoth(Square{square(x)}) {}

ArcCoth::ArcCoth(Square x_squared)
    : SteadySeries(false, 11, 16, growth(std::log(static_cast<double>(x_squared.x2)))),
      x2(x_squared.x2),
      log_x2(std::log(static_cast<double>(x2))) {}

void ArcCoth::BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR&, BasicIntR&, u64_t a,
                      u64_t b) const {
    ArcCoth_BSR_End_large(P, Q, R, a, b, x2);
}

}  // namespace znp
