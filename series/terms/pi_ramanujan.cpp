// Pi by Ramanujan: R(b) = (4b - 3)(2b - 1)(4b - 1), P(b) = R(b) (26390 b + 1103), Q(b) = 3073907232 b^3.
// Source: S. Ramanujan, "Modular equations and approximations to pi", 1914.
#include "series/catalogue.hpp"
#include "series/terms/end_recursion.hpp"
#include "series/terms/term_words.hpp"

namespace znp {

using namespace terms;

Pi_Ramanujan::Pi_Ramanujan()
    : SteadySeries(false, 19, 12,
                   {.terms_per_word = 2.413507209966306,
                    .size_per_term = 21.846215303338088,
                    .factorials = 3,
                    .offset = 0,
                    .precision_per_term = 18.38047940053836}) {}

void Pi_Ramanujan::BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                           u64_t b) const {
    if (b - a != 1) return end_recursion(*this, P, Q, R, t0, t1, a, b);

    const Words<3> r = product(4 * b - 3, 2 * b - 1, 4 * b - 1);
    store(R, "Pi_Ramanujan_BSR_End_R1()", r);
    store(P, "Pi_Ramanujan_BSR_End_P1()", times(r, two_words(u128_t{26390} * b + 1103)));
    store(Q, "Pi_Ramanujan_BSR_End_Q1()", product(3073907232, b, b, b));
}

}  // namespace znp
