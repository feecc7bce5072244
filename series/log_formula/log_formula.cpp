#include "series/log_formula/log_formula.hpp"

#include <array>

#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "foundation/time.hpp"
#include "series/bss.hpp"
#include "series/log_formula/factorization.hpp"
#include "series/log_formula/formula_search.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

struct KindToDerive {
    FormulaKind which;
    const char* label;
};
constexpr std::array<KindToDerive, 2> kinds{{
    {FormulaKind::primary, "Generating Primary Formula...        "},
    {FormulaKind::secondary, "Generating Secondary Formula...      "},
}};

double take_known_formula(MachinFormula& out, u64_t n, FormulaKind which, double D) {
    const FormulaRow* const row = find_known_formula(which, n);
    if (row == nullptr) return cost_of_failure;
    for (upL_t i = 0; i < row->count; i++) {
        formula_add(out, {row->arguments[i], row->coefficients[i]}, MachinFormula::max_pairs);
    }
    return formula_cost(out, D);
}

// Null, or why the formula is none.
const char* derive(MachinFormula& formula, u64_t n, FormulaKind which, double D, Announce announce) {
    if (get_log_formula(formula, n, which, D, announce) >= cost_of_failure)
        return "Unable to derive formula.";
    if (!verify_formula(formula, n)) return "Unable to verify correctness of formula.";
    return nullptr;
}

}  // namespace

double log_formula_precision(upL_t p) {
    return static_cast<double>(p) * nats_per_word;
}

double get_log_formula(MachinFormula& out, u64_t n, FormulaKind which, double D, Announce announce) {
    out = {};
    if (n == 0) fatal_exit("Error: Log(0)");
    if (n == 1) return 0;
    double best = take_known_formula(out, n, which, D);
    const bool is_known = best < cost_of_failure;
    for (upL_t k = BaseFormulas::least_k; k <= BaseFormulas::most_k; k++) {
        const SearchResult found = search_formula(n, k, which, D);
        if (found.cost >= best) continue;
        if (is_known && announce == Announce::yes) {
            Console::print_newline();
            Console::println("The heuristic has found a better formula than the table entry.");
        }
        best = found.cost;
        out = found.formula;
    }
    compact(out);
    return best;
}

LogFormulas derive_log_formulas(u64_t n, double D, Announce announce) {
    LogFormulas found;
    for (const KindToDerive& kind : kinds) {
        if (announce == Announce::yes) Console::print(kind.label);
        const Time start = Time::now();
        MachinFormula formula;
        const char* const failure = derive(formula, n, kind.which, D, announce);
        if (announce == Announce::yes) {
            Console::println(Console::format_seconds(seconds_between(start, Time::now()), 3) + " seconds");
        }
        if (failure != nullptr) {
            found.failure = failure;
            return found;
        }
        found.formulas.push_back(formula);
    }
    return found;
}

std::string formula_text(const MachinFormula& formula, u64_t n, double D) {
    std::string text = "Log[" + to_string_u64(n) + "] = \n";
    for (const auto& [x, c] : formula) {
        const std::string size = std::to_string(c);
        text += std::string(20, ' ') + (c < 0 ? " -" + size.substr(1) : " +" + size) + " * ArcCoth[" +
                to_string_u64(x) + "]\n";
    }
    return text + "\n        Cost = " + Console::format_seconds(formula_cost(formula, D), 0);
}

std::string formula_input_text(const MachinFormula& formula, u64_t n) {
    std::string text = "\tLog[" + to_string_u64(n) + "] = ";
    const char* separator = "";
    for (const auto& [x, c] : formula) {
        text += separator + std::to_string(c) + "*ArcCoth[" + to_string_u64(x) + "]";
        separator = " + ";
    }
    return text;
}

std::string formula_parts_text(const MachinFormula& formula, u64_t n) {
    std::string text = "\tLog[" + to_string_u64(n) + "] = ";
    const char* separator = "";
    for (const auto& [x, c] : formula) {
        const double quotient = static_cast<double>(x + 1) / static_cast<double>(x - 1);
        text += separator + std::to_string(c) + " /2*Log[" + format_printf(32, "%.7f", quotient) + "]";
        separator = " + ";
    }
    return text;
}

}  // namespace znp
