// Zeta(3), first series: R(b) = b^5, P(b) = R(b) (205 b^2 + 250 b + 77), Q(b) = (4b + 2)^5.
// Source: T. Amdeberhan, D. Zeilberger, "Hypergeometric series acceleration via the WZ method", 1997.
#include "series/catalogue.hpp"
#include "series/terms/end_recursion.hpp"
#include "series/terms/term_words.hpp"

namespace znp {

using namespace terms;

Zeta3_AZ1::Zeta3_AZ1()
    : SteadySeries(true, 24, 12,
                   {.terms_per_word = 6.3999999999999995,
                    .size_per_term = 6.931471805599453,
                    .factorials = 5,
                    .offset = 1,
                    .precision_per_term = 6.931471805599453}) {}

void Zeta3_AZ1::BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                        u64_t b) const {
    if (b - a != 1) return end_recursion(*this, P, Q, R, t0, t1, a, b);

    constexpr const char* location = "Zeta3_AZ1_BSR_End1()";
    const u64_t c = 4 * b + 2;
    const Words<5> r = product(b, b, b, b, b);
    const Words<3> polynomial = horner(b, 205, 250, 77);
    store(R, location, r);
    store(P, location, times(r, polynomial));
    store(Q, location, product(c, c, c, c, c));
}

}  // namespace znp
