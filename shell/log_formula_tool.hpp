#pragma once

namespace znp {

// Asks for n and shows the formulas for Log(n), as tables and as input for a computer algebra system. Their
// costs are those of a computation of the default size.
void log_formula_generator();

}  // namespace znp
