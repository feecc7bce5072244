// Log(n).
#include "compute/constants/table_constant.hpp"
#include "foundation/fatal.hpp"

namespace znp {

namespace {

// The formulas and their names in full belong to the generator of formulas, which is still to come.
class zlr_Log final : public zlr_TableConstant {
  public:
    zlr_Log(const ConstantRow& row, u64_t parameter, upL_t p) : zlr_TableConstant(row, parameter) {
        zlr_Log::set_precision(p);
    }
    void set_precision(upL_t) override {
        if (const char* refusal = check_constant(constant_id::log, parameter())) fatal_exit(refusal);
    }
};

}  // namespace

std::unique_ptr<zlr_Constant> make_log(const ConstantRow& row, u64_t parameter, upL_t p) {
    return std::make_unique<zlr_Log>(row, parameter, p);
}

}  // namespace znp
