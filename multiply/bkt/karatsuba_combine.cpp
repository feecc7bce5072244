#include "multiply/bkt/karatsuba_combine.hpp"

#include "multiply/kernels/carry_chains.hpp"

namespace znp::bkt {

// With L = L1 B^h + L0 the lower and U = U1 B^h + U0 the upper product, the words from h on become
//
//     L1 + U0 + L0 -+ M0      at h
//     L1 + U0 + U1 -+ M1      at 2h
//     U1                      at 3h
//
// Word i of the first two needs only word i of each part, so both are made in place by one loop with two
// accumulators. The carries are small (-1 to 2) and are added at 2h and 3h in the end. U1 has h words, or
// h - 2 if n is odd.
template <class word>
void combine_reference(word* T, const word* M, upL_t n, bool subtract) {
    using accumulator = typename WordTraits<word>::accumulator;
    constexpr unsigned bits = WordTraits<word>::bits;
    const upL_t h = (n + 1) / 2;
    const upL_t U1_length = 2 * n - 3 * h;
    accumulator low = 0;
    accumulator high = 0;
    for (upL_t i = 0; i < h; i++) {
        const accumulator common = static_cast<accumulator>(T[h + i]) + T[2 * h + i];
        const accumulator M0 = M[i];
        const accumulator M1 = M[h + i];
        low += common + T[i] + (subtract ? -M0 : M0);
        high += common + (i < U1_length ? T[3 * h + i] : 0) + (subtract ? -M1 : M1);
        T[h + i] = static_cast<word>(low);
        T[2 * h + i] = static_cast<word>(high);
        low >>= bits;
        high >>= bits;
    }
    ADDv2::add_ripple_reference(T + 2 * h, 2 * n - 2 * h, static_cast<s64_t>(low));
    ADDv2::add_ripple_reference(T + 3 * h, U1_length, static_cast<s64_t>(high));
}

template void combine_reference(c32i*, const c32i*, upL_t, bool);
template void combine_reference(c64i*, const c64i*, upL_t, bool);

void combine(c32i* T, c32i* M, upL_t n, bool subtract) {
    combine_reference<c32i>(T, M, n, subtract);
}

}  // namespace znp::bkt
