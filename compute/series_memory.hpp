// What the computation of a constant by series takes of the run's heap, in bytes, for the memory queries of
// the constants whose formulas are sums of series and nothing else.
//
// The stages that are counted are those of compute/drivers/series_sum.hpp, so that the formulas which are
// built on it need exactly this.
#pragma once

#include <span>

#include "compute/drivers/series_sum.hpp"

namespace znp {

// One series and its closing formula, output included.
upL_t series_memory(const zl_BSS& series, const SeriesQuotient& formula, upL_t p, u64_t digits,
                    u64_t threads);

// A sum of several series, each closed by a formula of its own: the running sum lives beside every further
// one.
struct SeriesTerm {
    const zl_BSS* series;
    SeriesQuotient formula;
};
upL_t series_memory(std::span<const SeriesTerm> terms, upL_t p, u64_t digits, u64_t threads,
                    upL_t beside = 0);

}  // namespace znp
