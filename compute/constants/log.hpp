// Log(n): its two formulas are derived for the number and the precision.
#pragma once

#include "compute/constants/table_constant.hpp"
#include "series/log_formula/log_formula.hpp"

namespace znp {

class zlr_Log final : public zlr_TableConstant {
  public:
    // Says what it derives. An n out of range is a fatal error.
    zlr_Log(const ConstantRow& row, u64_t n, upL_t p);

    std::string get_algorithm_name(s32_t algorithm, upL_t p) const override;
    std::string get_algorithm_menu(s32_t algorithm, upL_t p) const override;
    // Derives the formulas anew, for which of them is the cheapest depends on the precision, and says
    // nothing.
    void set_precision(upL_t p) override;
    // First proves all formulas once more: one that fails is a fatal error.
    void run_B(s32_t algorithm, RunTimeParameters& run) const override;

    const std::vector<MachinFormula>& formulas() const { return formulas_; }

  protected:
    const Algorithm* find(s32_t algorithm) const override;
    FormulaInput formula_input(s32_t algorithm) const override;

  private:
    void derive(upL_t p, Announce announce);
    const MachinFormula& formula_of(s32_t algorithm) const {
        return formulas_[static_cast<upL_t>(algorithm)];
    }

    std::vector<MachinFormula> formulas_;  // by algorithm
};

// The formulas, at least one. That there is none is a fatal error.
std::vector<MachinFormula> formulas_or_exit(u64_t n, upL_t p, Announce announce);

// A formula that is not one of n is a fatal error.
void check_formulas(std::span<const MachinFormula> formulas, u64_t n);

}  // namespace znp
