#include "compute/constants/memory_query.hpp"

#include "foundation/fail.hpp"
#include "foundation/fatal.hpp"
#include "multiply/selection.hpp"

namespace znp {

namespace {

// The longest product of a run has twice the precision and a few guard words.
constexpr upL_t guard_words = 256;

}  // namespace

void check_precision(upL_t p) {
    if (p <= (memory_table<cdi>().back().max_words - guard_words) / 2) return;
    fail(zn_exception(error_code::unspecified, "Internal Error: Maximum Size Exceeded"));
}

void refuse_B(const zlr_Constant& constant) {
    not_available_yet("The computation of " + constant.get_short_name());
}

}  // namespace znp
