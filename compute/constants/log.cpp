// Log(n).
#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"
#include "compute/constants/memory_query.hpp"
#include "foundation/fatal.hpp"

namespace znp {

namespace {

// The long names tell the number of terms and the menu texts the formulas themselves. Both belong to the
// formula generator; without it the short names stand in through the defaults of zlr_Constant.
class zlr_Log final : public zlr_Constant {
  public:
    zlr_Log(u64_t argument, upL_t p) : zlr_Constant(2), argument_(argument) { zlr_Log::set_precision(p); }
    std::string get_short_name() const override { return with_argument("Log", argument_); }
    std::string get_algorithm_short(s32_t algorithm, upL_t) const override {
        if (algorithm == 0) return "Machin 1";
        if (algorithm == 1) return "Machin 2";
        return {};
    }
    // The terms of the formula, which the generator finds, decide: without it there is no estimate.
    bool get_memory_B(s32_t algorithm, upL_t p, u64_t, u64_t, upL_t&) const override {
        return p == 0 && knows_algorithm(algorithm, p);
    }
    void run_B(s32_t, RunTimeParameters&) const override { refuse_B(*this); }
    void set_precision(upL_t) override {
        if (!log_parameter_ok(argument_)) fatal_exit(parameter_out_of_range_text);
    }

  private:
    u64_t argument_;
};

}  // namespace

std::unique_ptr<zlr_Constant> make_log(u64_t argument, upL_t p) {
    return std::make_unique<zlr_Log>(argument, p);
}

}  // namespace znp
