// Zeta(3), second series: R(b) = b^5 (2b - 1)^3, Q(b) = 24 (3b + 1)(3b + 2)(4b + 1)^3 (4b + 3)^3,
// P(b) = R(b) (126392 b^5 + 412708 b^4 + 531578 b^3 + 336367 b^2 + 104000 b + 12463).
// Source: T. Amdeberhan, D. Zeilberger, "Hypergeometric series acceleration via the WZ method", 1997.
#include "series/catalogue.hpp"
#include "series/terms/end_recursion.hpp"
#include "series/terms/term_words.hpp"

namespace znp {

using namespace terms;

Zeta3_AZ2::Zeta3_AZ2()
    : SteadySeries(true, 37, 6,
                   {.terms_per_word = 3.819780944022216,
                    .size_per_term = 13.693044574403508,
                    .factorials = 8,
                    .offset = 1,
                    .precision_per_term = 11.613603032723672}) {}

void Zeta3_AZ2::BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                        u64_t b) const {
    if (b - a != 1) return end_recursion(*this, P, Q, R, t0, t1, a, b);

    const u64_t o = 2 * b - 1;
    store(R, "Zeta3_AZ2_BSR_End_R1()", product(b, b, b, b, b, o, o, o));

    P.check_size("Zeta3_AZ2_BSR_End_P1()", 14);
    Words<6> words = horner(b, 126392, 412708, 531578, 336367, 104000, 12463);
    BasicIntR polynomial(words.data(), words.size());
    polynomial.set_LN(words.size());
    P.set_mulB(R, polynomial);

    const u64_t f = 4 * b + 1;
    const u64_t g = 4 * b + 3;
    const Words<8> q = product(3 * b + 1, 3 * b + 2, f, f, f, g, g, g);
    store(Q, "Zeta3_AZ2_BSR_End_Q1()", times(q, 24));
}

}  // namespace znp
