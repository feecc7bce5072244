#include "series/terms/end_recursion.hpp"

#include <algorithm>

#include "series/classes/type0.hpp"

namespace znp::terms {

namespace {

struct Operands {
    BasicIntR &P, &Q, &R;
};

}  // namespace

// A product may not overlap its operands, and the results must end up at the start of P, Q and R without a
// copy. So no operand lies where a product before its last use is written:
//
//              P         Q         R         t0        t1
//    left      Rl                            Pl        Ql
//    behind    Pr        Rr                  Qr        t
//
// with the scratch of each half in the two columns that it leaves free.
void end_recursion(const zl_BSS_P2B3_Type0& series, BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0,
                   BasicIntR& t1, u64_t a, u64_t b) {
    const u64_t m = (a + b) >> 1;

    BasicIntR Pl = t0, Ql = t1, Rl = P;
    series.BSR_End(Pl, Ql, Rl, Q, R, a, m);

    const upL_t left = std::max({Pl.get_L(), Ql.get_L(), Rl.get_L()});
    for (const BasicIntR* x : {&P, &Q, &R, &t0, &t1}) x->check_size("zl_BSS_P2B3_Type0::BSR_End()", left);
    BasicIntR Pr, Qr, Rr, s0, s1;
    Pr.set(left, P);
    Qr.set(left, t0);
    Rr.set(left, Q);
    s0.set(left, R);
    s1.set(left, t1);
    series.BSR_End(Pr, Qr, Rr, s0, s1, m, b);

    BasicIntR t;
    t.set(Ql.get_L(), t1);
    merge_type0(IntegerArithmetic(), {P, Q, &t, &R}, Operands{Pl, Ql, Rl}, Operands{Pr, Qr, Rr},
                series.subtracts(a, m));
}

}  // namespace znp::terms
