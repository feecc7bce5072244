// Formulas for Log(n), n an integer: Log(n) = c1 ArcCoth(x1) + c2 ArcCoth(x2) + ...
//
// The larger the x, the faster their series. Each n gets two different formulas, so that what one computes
// can be verified by the other: the primary one, from the tables or by a search, whichever costs less, and
// the secondary one, from tables of its own. Everything is found and proved before a run, in well below a
// second.
#pragma once

#include <string>
#include <vector>

#include "series/log_formula/formula_tables.hpp"
#include "series/log_formula/machin_formula.hpp"

namespace znp {

enum class Announce { no, yes };

// The precision of p words, as the costs count it: in nats.
double log_formula_precision(upL_t p);

// The cheapest formula for Log(n) that the tables and the search find, and its cost; cost_of_failure where
// there is none. D: log_formula_precision of the run. n = 0 is a fatal error. Says if the search beats the
// table.
double get_log_formula(MachinFormula& out, u64_t n, FormulaKind which, double D, Announce announce);

// What was found for a number, verified: the primary formula and the secondary one, where there is one.
struct LogFormulas {
    std::vector<MachinFormula> formulas;
    const char* failure = nullptr;  // why there is none
};

// n at least 1. With Announce::yes it prints what it does and how long that takes.
LogFormulas derive_log_formulas(u64_t n, double D, Announce announce);

// The formula as a table of its terms, with its cost.
std::string formula_text(const MachinFormula& formula, u64_t n, double D);

// The formula as input for a computer algebra system, in ArcCoth, and in logarithms of numbers.
std::string formula_input_text(const MachinFormula& formula, u64_t n);
std::string formula_parts_text(const MachinFormula& formula, u64_t n);

}  // namespace znp
