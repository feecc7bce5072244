#include "compute/euler_gamma_memory.hpp"

#include <algorithm>
#include <cmath>

#include "compute/drivers/shared_stages.hpp"
#include "compute/series_memory.hpp"
#include "compute/stages.hpp"
#include "multiply/dispatch.hpp"
#include "series/catalogue.hpp"
#include "series/euler_gamma_ab.hpp"

namespace znp {

namespace {

// Numbers between the stages: p + 2 words and a carry on either end.
upL_t number_bytes(upL_t p) {
    return HeapFloat::bytes(p + 4);
}

upL_t product_bytes(upL_t p, u64_t threads) {
    return heap_bytes(work_bytes_for<cdi>(2 * p + 8, threads));
}

// The sum of A and B to T, Q, R; Q^2, R + Q^2 and their product, which takes the place of Q; the quotient of
// T and it, with Q^2 and R + Q^2 beside it where the refinement wants them later.
upL_t ab_bytes(u32_t m, bool refined, upL_t p, u64_t threads) {
    const Series_EulerGamma_BM_AB series(m);
    const ABSumSizes sizes = ab_sum_sizes(series, make_ab_plan(series, p, 1.0), threads);
    const upL_t result = HeapFloat::bytes(sizes.results);
    const upL_t P = p + estimate_margin;
    const upL_t number = number_bytes(P);
    return std::max({3 * result + heap_words(sizes.nodes) + heap_bytes(sizes.work_bytes),
                     3 * result + 3 * number + product_bytes(P, threads),
                     result + (refined ? 3 : 1) * number + divide_bytes(P, threads)});
}

// Words to which C/B^2, about e^-4n in size, matters; 0 where it does not.
upL_t c_precision(u32_t m, upL_t p) {
    const double x = std::ldexp(4 * words_per_nat, static_cast<int>(m));
    const double w = std::min(x, static_cast<double>(p) - x) + 1;
    return w < 0 ? 0 : static_cast<upL_t>(w);
}

// Beside the quotient of A and B and the two numbers of B, cut to w words: the series C, then (P + Q) S^2 and
// Q R^2, then their quotient.
upL_t c_bytes(u32_t m, upL_t p, u64_t threads) {
    const upL_t w = c_precision(m, p);
    if (w == 0) return 0;
    const upL_t W = w + estimate_margin;
    const EulerGamma_BM_C series(m);
    const upL_t beside = HeapFloat::bytes(series_quotient_words(p + estimate_margin)) + 2 * number_bytes(W);
    const SeriesQuotient sum{1, 1, false, 1};
    const upL_t quotient =
        series_quotient_bytes(series, make_psr_plan(series, w, 1.0, 0, threads), sum, W, threads);
    return beside + std::max(quotient, 6 * number_bytes(W) + product_bytes(W, threads));
}

// ln 2 = 18 ArcCoth(26) - 2 ArcCoth(4801) + 8 ArcCoth(8749), added to what is there term by term.
upL_t log2_bytes(upL_t p, u64_t digits, u64_t threads) {
    const ArcCoth a(26), b(4801), c(8749);
    const SeriesTerm terms[] = {{&a, common_quotient(a, 1, 26)},
                                {&b, common_quotient(b, 1, 4801)},
                                {&c, common_quotient(c, 1, 8749)}};
    return series_memory(terms, p, digits, threads,
                         HeapFloat::bytes(series_quotient_words(p + estimate_margin)));
}

}  // namespace

upL_t euler_gamma_memory_B(u32_t m, bool refined, upL_t p, u64_t digits, u64_t threads) {
    const upL_t bytes = std::max(ab_bytes(m, refined, p, threads), log2_bytes(p, digits, threads));
    return refined ? std::max(bytes, c_bytes(m, p, threads)) : bytes;
}

}  // namespace znp
