// A constant as its row of the table says.
#pragma once

#include "compute/constants/constant_row.hpp"

namespace znp {

class zlr_TableConstant : public zlr_Constant {
  public:
    zlr_TableConstant(const ConstantRow& row, u64_t parameter)
        : zlr_Constant(row.selectable), row_(row), parameter_(parameter) {}

    char get_color() const override { return row_.color; }
    std::string get_short_name() const override;
    std::string get_name() const override;
    std::string get_algorithm_short(s32_t algorithm, upL_t p) const override;
    std::string get_algorithm_name(s32_t algorithm, upL_t p) const override;
    std::string get_algorithm_menu(s32_t algorithm, upL_t p) const override;

    bool get_memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads, upL_t& bytes) const override;
    bool runs_B(s32_t algorithm) const override;
    void run_B(s32_t algorithm, RunTimeParameters& run) const override;

    // The formula from its start to its digits, in memory or counted.
    void carry_out(s32_t algorithm, StageMemory& memory) const;

  protected:
    // Null for a number that the class does not know.
    virtual const Algorithm* find(s32_t algorithm) const;
    virtual FormulaInput formula_input(s32_t) const { return {parameter_, nullptr}; }
    void set_parameter(u64_t parameter) { parameter_ = parameter; }
    u64_t parameter() const { return parameter_; }

  private:
    const ConstantRow& row_;
    u64_t parameter_;
};

std::unique_ptr<zlr_Constant> make_table_constant(const ConstantRow& row, u64_t parameter, upL_t p);
std::unique_ptr<zlr_Constant> make_log(const ConstantRow& row, u64_t parameter, upL_t p);
std::unique_ptr<zlr_Constant> make_euler_gamma(const ConstantRow& row, u64_t parameter, upL_t p);
std::unique_ptr<zlr_Constant> make_euler_gamma_override(const ConstantRow& row, u64_t exponent, upL_t p);

}  // namespace znp
