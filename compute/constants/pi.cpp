// Pi.
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"
#include "compute/drivers/pi.hpp"

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
};

}  // namespace

std::unique_ptr<zlr_Constant> make_pi() {
    return std::make_unique<zlr_Pi>();
}

}  // namespace znp
