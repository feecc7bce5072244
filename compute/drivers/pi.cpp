#include "compute/drivers/pi.hpp"

#include <algorithm>

#include "compute/drivers/series_sum.hpp"
#include "compute/drivers/shared_stages.hpp"
#include "series/catalogue.hpp"

namespace znp {

namespace {

struct PiFormula {
    cdi a, b;
    u64_t n;
    bool subtract;

    SeriesQuotient quotient() const { return {a, 1, subtract, b, true}; }
};

constexpr PiFormula chudnovsky{13591409, 4270934400, 10005, true};
constexpr PiFormula ramanujan{1103, 9801, 8, false};

constexpr bool is_chudnovsky(s32_t algorithm) {
    return algorithm % 2 == 0;
}
constexpr bool in_less_memory(s32_t algorithm) {
    return algorithm >= 2;
}
constexpr double section_ratio(s32_t algorithm) {
    return in_less_memory(algorithm) ? 0.5 : 1.0;
}

// f(series, formula) for the algorithm's.
template <class F>
auto with_series(s32_t algorithm, F f) {
    if (is_chudnovsky(algorithm)) return f(Pi_Chudnovsky(), chudnovsky);
    return f(Pi_Ramanujan(), ramanujan);
}

}  // namespace

void pi_B(HeapFloat& out, RunTimeParameters& run, s32_t algorithm) {
    const upL_t p = run.p;
    with_series(algorithm, [&](const zl_BSS& series, const PiFormula& formula) {
        HeapFloat quotient;
        series_quotient_B(quotient, run, series,
                          make_psr_plan(series, p, section_ratio(algorithm), 0, run.tds), formula.quotient(),
                          p);
        HeapFloat root;
        inv_sqrt_B(root, formula.n, p, run);
        final_multiply_B(out, run, quotient, root, p, in_less_memory(algorithm));
    });
    out.settle();
}

upL_t pi_memory_B(s32_t algorithm, upL_t p, u64_t dec, u64_t threads) {
    return with_series(algorithm, [&](const zl_BSS& series, const PiFormula& formula) {
        const PSRPlan plan = make_psr_plan(series, p, section_ratio(algorithm), 0, threads);
        const upL_t P = p + estimate_margin;
        const upL_t quotient = HeapFloat::bytes(series_quotient_words(P));
        const upL_t root = HeapFloat::bytes(inv_sqrt_words(P));
        return std::max({series_quotient_bytes(series, plan, formula.quotient(), P, threads),
                         quotient + inv_sqrt_bytes(P, threads),
                         quotient + root + final_multiply_bytes(P, threads, in_less_memory(algorithm)),
                         HeapFloat::bytes(final_multiply_words(P)) + output_bytes(p, dec, threads)});
    });
}

}  // namespace znp
