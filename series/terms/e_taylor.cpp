// e and 1/e: 1/(a+1) + 1/((a+1)(a+2)) + ... over [a, b), with the signs +, -, +, ... when alternating.
#include <array>

#include "multiply/kernels/word_multiply.hpp"
#include "series/classes/taylor.hpp"
#include "series/terms/bisection.hpp"

namespace znp {

using namespace terms;

namespace {

constexpr upL_t stack_words = 17;

struct Operands {
    BasicIntR &P, &Q;
};

// Q = (a + 1)(a + 2) ... b. A value of k terms takes k words while it is built up.
void begin(BasicIntR& P, BasicIntR& Q, u64_t a, u64_t b, const char* location) {
    P.check_size(location, b - a);
    Q.check_size(location, b - a);
    cdi* T = Q.get_T();
    T[0] = a + 1;
    upL_t L = 1;
    for (u64_t i = a + 2; i <= b; i++, L++) T[L] = MulW(T, L, i);
    Q.set_LN(L);
}

void E_Taylor1_BSR_End_PQ1(BasicIntR& P, BasicIntR& Q, u64_t a, u64_t b) {
    begin(P, Q, a, b, "E_Taylor1_BSR_End_PQ1()");
    cdi* T = P.get_T();
    T[0] = b - a == 1 ? 1 : a + 3;
    upL_t L = 1;
    for (u64_t i = a + 3; i <= b; i++, L++) T[L] = MulW(T, L, i, 1);
    P.set_LN(L);
}

void E_Taylor2_BSR_End_PQ1(BasicIntR& P, BasicIntR& Q, u64_t a, u64_t b) {
    begin(P, Q, a, b, "E_Taylor2_BSR_End_PQ1()");
    cdi* T = P.get_T();
    T[0] = b - a == 1 ? 1 : a + 1;
    upL_t L = 1;
    // Two steps at a time, which needs no subtraction: (P i + 1)(i + 1) - 1 = P i (i + 1) + i.
    u64_t i = a + 3;
    for (; i < b; i += 2, L += 2) {
        T[L] = MulW(T, L, i);
        T[L + 1] = MulW(T, L + 1, i + 1, i);
    }
    if (i == b) {
        T[L] = MulW(T, L, i, 1);
        L++;
    }
    P.set_LN(L);
}

}  // namespace

u64_t Series_E_Taylor::terms(upL_t words) const {
    const double target = nats_per_word * static_cast<double>(words) + 1;
    const auto size = [](u64_t x) { return log_factorial(static_cast<double>(x)); };
    return first_at_least(2, doubling_bound(2, target, size), target, size) + 2;
}

double Series_E_Taylor::size_at(double x) const {
    return log_factorial(x);
}

double Series_E_Taylor::precision_of(u64_t a, u64_t b) const {
    return log_factorial(static_cast<double>(b)) - log_factorial(static_cast<double>(a));
}

void Series_E_Taylor::BSR_End(BasicIntR& P, BasicIntR& Q, u64_t a, u64_t b) const {
    if (b - a < 8) return alternating ? E_Taylor2_BSR_End_PQ1(P, Q, a, b) : E_Taylor1_BSR_End_PQ1(P, Q, a, b);

    const u64_t m = (a + b) >> 1;
    std::array<std::array<cdi, stack_words>, 4> words;
    BasicIntR Pl(words[0].data(), stack_words), Ql(words[1].data(), stack_words);
    BasicIntR Pr(words[2].data(), stack_words), Qr(words[3].data(), stack_words);
    BSR_End(Pl, Ql, a, m);
    BSR_End(Pr, Qr, m, b);
    TaylorRules::merge_by(IntegerArithmetic(), MergeResults<BasicIntR>{P, Q}, Operands{Pl, Ql},
                          Operands{Pr, Qr}, subtracts(a, m));
}

}  // namespace znp
