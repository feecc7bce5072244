// Pi by Chudnovsky: R(b) = (6b - 5)(2b - 1)(6b - 1), P(b) = R(b) (545140134 b + 13591409),
// Q(b) = 640320^3 / 24 b^3. Source: D. and G. Chudnovsky, "Approximations and complex multiplication
// according to Ramanujan", 1988.
#include "series/catalogue.hpp"
#include "series/terms/end_recursion.hpp"
#include "series/terms/term_words.hpp"

namespace znp {

using namespace terms;

Pi_Chudnovsky::Pi_Chudnovsky()
    : SteadySeries(true, 19, 8,
                   {.terms_per_word = 1.3585106930018276,
                    .size_per_term = 36.93111616078457,
                    .factorials = 3,
                    .offset = 0,
                    .precision_per_term = 32.65445004176851}) {}

void Pi_Chudnovsky::BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                            u64_t b) const {
    if (b - a != 1) return end_recursion(*this, P, Q, R, t0, t1, a, b);

    const Words<3> r = product(6 * b - 5, 2 * b - 1, 6 * b - 1);
    store(R, "Pi_Chudnovsky_BSR_End_PR1()", r);
    store(P, "Pi_Chudnovsky_BSR_End_PR1()", times(r, two_words(u128_t{545140134} * b + 13591409)));
    store(Q, "Pi_Chudnovsky_BSR_End_Q1()", product(10939058860032000, b, b, b));
}

}  // namespace znp
