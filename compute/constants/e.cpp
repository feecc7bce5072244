// e.
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"
#include "compute/drivers/e.hpp"
#include "compute/drivers/shared_stages.hpp"

namespace znp {

namespace {

constexpr std::array e_names{
    AlgorithmNames{"exp(1)", "Taylor Series of exp(1)", "Taylor Series of exp(1)"},
    AlgorithmNames{"exp(-1)", "Taylor Series of exp(-1)", "Taylor Series of exp(-1)   (same speed)"},
};

class zlr_E final : public zlr_ListedConstant {
  public:
    zlr_E() : zlr_ListedConstant(2, e_names) {}
    std::string get_short_name() const override { return "e"; }
    bool runs_B(s32_t algorithm) const override { return knows_algorithm(algorithm, 0); }
    void run_B(s32_t algorithm, RunTimeParameters& run) const override;

  private:
    upL_t memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads) const override {
        return e_memory_B(algorithm, p, digits, threads);
    }
};

void zlr_E::run_B(s32_t algorithm, RunTimeParameters& run) const {
    const Time start = Time::now();
    HeapFloat number;
    e_B(number, run, algorithm);
    output_B(run, "e", start, number);
}

}  // namespace

std::unique_ptr<zlr_Constant> make_e() {
    return std::make_unique<zlr_E>();
}

}  // namespace znp
