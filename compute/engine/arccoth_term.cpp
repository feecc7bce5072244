#include "compute/engine/arccoth_term.hpp"

#include "compute/engine/series_stage.hpp"
#include "compute/engine/stage_lines.hpp"
#include "foundation/strings.hpp"
#include "series/catalogue.hpp"

namespace znp {

HeapFloat arccoth_term_B(StageMemory& memory, u64_t x, s64_t coefficient) {
    tell_term(memory, std::to_string(coefficient) + " ArcCoth( " + to_string_u64(x) + " )");
    return sum_series_B(memory, ArcCoth(x), 1, x, coefficient);
}

}  // namespace znp
