#include "compute/constants/log.hpp"

#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "series/log_formula/factorization.hpp"
#include "shell/console.hpp"

namespace znp {

std::vector<MachinFormula> formulas_or_exit(u64_t n, upL_t p, Announce announce) {
    LogFormulas found = derive_log_formulas(n, log_formula_precision(p), announce);
    if (found.formulas.empty()) {
        Console::print_entry_error(found.failure);
        fatal_exit("Please report this as a bug.");
    }
    return std::move(found.formulas);
}

void check_formulas(std::span<const MachinFormula> formulas, u64_t n) {
    constexpr const char* failures[] = {"Formula 0 failed to pass verification.",
                                        "Formula 1 failed to pass verification."};
    for (upL_t i = 0; i < formulas.size(); i++) {
        if (!verify_formula(formulas[i], n)) fatal_exit(failures[i]);
    }
}

zlr_Log::zlr_Log(const ConstantRow& row, u64_t n, upL_t p) : zlr_TableConstant(row, n) {
    derive(p, Announce::yes);
}

void zlr_Log::set_precision(upL_t p) {
    derive(p, Announce::no);
}

void zlr_Log::derive(upL_t p, Announce announce) {
    if (const char* refusal = check_constant(constant_id::log, parameter())) fatal_exit(refusal);
    formulas_ = formulas_or_exit(parameter(), p, announce);
    set_algorithm_count(static_cast<s32_t>(formulas_.size()));
}

const Algorithm* zlr_Log::find(s32_t algorithm) const {
    return algorithm < algorithm_count() ? zlr_TableConstant::find(algorithm) : nullptr;
}

std::string zlr_Log::get_algorithm_name(s32_t algorithm, upL_t p) const {
    const std::string name = zlr_TableConstant::get_algorithm_name(algorithm, p);
    if (name.empty()) return name;
    return name + to_string_u64(formula_of(algorithm).count) + " terms)";
}

std::string zlr_Log::get_algorithm_menu(s32_t algorithm, upL_t p) const {
    if (find(algorithm) == nullptr) return "";
    return formula_text(formula_of(algorithm), parameter(), log_formula_precision(p));
}

FormulaInput zlr_Log::formula_input(s32_t algorithm) const {
    return {parameter(), &formula_of(algorithm)};
}

void zlr_Log::run_B(s32_t algorithm, RunTimeParameters& run) const {
    check_formulas(formulas_, parameter());
    zlr_TableConstant::run_B(algorithm, run);
}

std::unique_ptr<zlr_Constant> make_log(const ConstantRow& row, u64_t parameter, upL_t p) {
    return std::make_unique<zlr_Log>(row, parameter, p);
}

}  // namespace znp
