// The terms of a sum of ArcCoth series, as Log(n) and the log 2 of the Euler-Mascheroni constant are made of.
#pragma once

#include "compute/engine/stage_memory.hpp"

namespace znp {

// coefficient * ArcCoth(x), x from 2 to 4294967295, behind a line that tells the term on the console and in
// the log. The coefficient is not 0.
HeapFloat arccoth_term_B(StageMemory& memory, u64_t x, s64_t coefficient);

}  // namespace znp
