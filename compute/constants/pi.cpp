// Pi.
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"
#include "compute/drivers/pi.hpp"
#include "compute/drivers/shared_stages.hpp"

namespace znp {

namespace {

// The reduced-memory forms exist behind the algorithm count: they cannot be selected.
constexpr std::array pi_names{
    AlgorithmNames{"Chudnovsky", "Chudnovsky Formula", "Chudnovsky Formula      (fastest)\n"},
    AlgorithmNames{"Ramanujan", "Ramanujan's Formula", "Ramanujan's Formula     (~40% slower)\n"},
    AlgorithmNames{"Chudnovsky", "Chudnovsky Formula (reduced memory)",
                   "Chudnovsky Formula      (reduced memory)\n"
                   "            This form uses alternate parameters: it sums the series in\n"
                   "            smaller pieces. It needs less memory, and it is slower.\n"},
    AlgorithmNames{"Ramanujan", "Ramanujan's Formula (reduced memory)",
                   "Ramanujan's Formula     (reduced memory)\n"
                   "            This form uses alternate parameters: it sums the series in\n"
                   "            smaller pieces. It needs less memory, and it is slower.\n"},
};

class zlr_Pi final : public zlr_ListedConstant {
  public:
    zlr_Pi() : zlr_ListedConstant(2, pi_names) {}
    std::string get_short_name() const override { return "Pi"; }
    bool runs_B(s32_t algorithm) const override { return knows_algorithm(algorithm, 0); }
    void run_B(s32_t algorithm, RunTimeParameters& run) const override;

  private:
    upL_t memory_B(s32_t algorithm, upL_t p, u64_t digits, u64_t threads) const override {
        return pi_memory_B(algorithm, p, digits, threads);
    }
};

void zlr_Pi::run_B(s32_t algorithm, RunTimeParameters& run) const {
    const Time start = Time::now();
    HeapFloat number;
    pi_B(number, run, algorithm);
    output_B(run, "Pi", start, number);
}

}  // namespace

std::unique_ptr<zlr_Constant> make_pi() {
    return std::make_unique<zlr_Pi>();
}

}  // namespace znp
