#include "compute/series_memory.hpp"

#include <algorithm>

#include "compute/drivers/shared_stages.hpp"

namespace znp {

upL_t series_memory(const zl_BSS& series, const SeriesQuotient& formula, upL_t p, u64_t digits,
                    u64_t threads) {
    const SeriesTerm term{&series, formula};
    return series_memory(std::span(&term, 1), p, digits, threads);
}

upL_t series_memory(std::span<const SeriesTerm> terms, upL_t p, u64_t digits, u64_t threads, upL_t beside) {
    const upL_t P = p + estimate_margin;
    const upL_t number = HeapFloat::bytes(series_quotient_words(P));
    upL_t bytes = number + output_bytes(p, digits, threads);
    upL_t running_sum = beside;
    for (const SeriesTerm& term : terms) {
        const PSRPlan plan = make_psr_plan(*term.series, p, 1.0, 0, threads);
        bytes = std::max(bytes,
                         running_sum + series_quotient_bytes(*term.series, plan, term.formula, P, threads));
        running_sum = number;
    }
    // A sum has two numbers beside its result.
    return std::max(bytes, 3 * number);
}

}  // namespace znp
