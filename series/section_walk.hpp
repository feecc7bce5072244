// What the sums by a plan have in common, whatever the numbers of a node are.
#pragma once

#include <string>

#include "foundation/strings.hpp"
#include "series/merge.hpp"
#include "series/partial_series.hpp"
#include "series/recursion_progress.hpp"
#include "series/truncated_merge.hpp"

namespace znp {

// Words of an object's buffer: the next one starts aligned.
constexpr upL_t aligned_words(upL_t words) {
    return (words + 3) & ~upL_t{3};
}

inline Float as_float(const Exact& x) {
    return Float(x.get_T(), x.get_L(), x.get_exp());
}

// work(row, progress) for the rows from the last to the first, each with the part of the line that its length
// gives it.
template <class Work>
void for_each_section(const PSRPlan& plan, StatusLine* status, Work work) {
    double all = 0;
    for (const SectionRow& row : plan) all += static_cast<double>(row.length);
    double done = 0;
    for (upL_t i = plan.size(); i-- != 0;) {
        const double share = static_cast<double>(plan[i].length) / all;
        const std::string heading = plan.size() == 1 ? "" : "Series: " + to_string_u64(i) + "  ";
        work(plan[i], RecursionProgress(status, heading.c_str(), done, done + share));
        done += share;
    }
}

}  // namespace znp
