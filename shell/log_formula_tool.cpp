#include "shell/log_formula_tool.hpp"

#include "compute/constants/constant_row.hpp"
#include "compute/settings/compute_parameters.hpp"
#include "series/log_formula/log_formula.hpp"
#include "shell/console.hpp"

namespace znp {

void log_formula_generator() {
    const ConstantRow& log = constant_rows()[constant_id::log];
    Console::println("Log(n) Formula Generator\n", 'P');
    const auto n = static_cast<u64_t>(Console::ask_int_range(log.parameter.prompt, 2, log.parameter.high));
    Console::print_newline();

    const upL_t p = precision_for(hex_digits_for(ComputeParameters::default_digits));
    const double D = log_formula_precision(p);
    const LogFormulas found = derive_log_formulas(n, D, Announce::yes);
    for (const MachinFormula& formula : found.formulas) {
        Console::print_newline();
        Console::println(formula_text(formula, n, D));
        Console::print_newline();
        Console::println(formula_input_text(formula, n));
        Console::println(formula_parts_text(formula, n));
    }
    Console::print_entry_error(found.failure);
}

}  // namespace znp
