// Catalan's constant by Lupas: R(b) = (4b)^2 b (4b - 2), P(b) = R(b) (40 b^2 + 56 b + 19),
// Q(b) = (4b + 1)^2 (4b + 3)^2. Source: A. Lupas, "Formulae for some classical constants", 2000.
#include "series/catalogue.hpp"
#include "series/terms/end_recursion.hpp"
#include "series/terms/term_words.hpp"

namespace znp {

using namespace terms;

Catalan_Lupas::Catalan_Lupas()
    : SteadySeries(true, 21, 10,
                   {.terms_per_word = 32.0,
                    .size_per_term = 5.545177444479562,
                    .factorials = 4,
                    .offset = 0,
                    .precision_per_term = 1.3862943611198906}) {}

void Catalan_Lupas::BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                            u64_t b) const {
    if (b - a != 1) return end_recursion(*this, P, Q, R, t0, t1, a, b);

    constexpr const char* location = "Catalan_Lupas_BSR_End1()";
    const Words<4> r = product(4 * b, 4 * b, b, 4 * b - 2);
    store(R, location, r);
    store(P, location, times(r, horner(b, 40, 56, 19)));
    store(Q, location, product(4 * b + 1, 4 * b + 1, 4 * b + 3, 4 * b + 3));
}

}  // namespace znp
