#include "compute/drivers/e.hpp"

#include <algorithm>

#include "compute/drivers/series_sum.hpp"
#include "compute/drivers/shared_stages.hpp"
#include "series/catalogue.hpp"

namespace znp {

namespace {

constexpr bool is_inverse(s32_t algorithm) {
    return algorithm == 1;
}

// The terms from 1 on sum to e - 2, and with alternating signs to 1/e. Their numbers grow so slowly that
// sections gain nothing: one does.
PSRPlan e_plan(const Series_E_Taylor& series, upL_t p) {
    return make_single_section(series, 1, series.terms(p));
}

constexpr SeriesQuotient e_quotient(s32_t algorithm) {
    return {0, 1, false, 1, is_inverse(algorithm)};
}

}  // namespace

void e_B(HeapFloat& out, RunTimeParameters& run, s32_t algorithm) {
    const Series_E_Taylor series(is_inverse(algorithm));
    series_quotient_B(out, run, series, e_plan(series, run.p), e_quotient(algorithm), run.p);
    if (!is_inverse(algorithm)) out.add_ip(2, 0);
}

upL_t e_memory_B(s32_t algorithm, upL_t p, u64_t dec, u64_t threads) {
    const Series_E_Taylor series(is_inverse(algorithm));
    const upL_t P = p + estimate_margin;
    return std::max(series_quotient_bytes(series, e_plan(series, p), e_quotient(algorithm), P, threads),
                    HeapFloat::bytes(series_quotient_words(P)) + output_bytes(p, dec, threads));
}

}  // namespace znp
