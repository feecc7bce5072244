// Zeta(3).
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"

namespace znp {

namespace {

constexpr std::array zeta3_names{
    AlgorithmNames{"Amdeberhan-Zeiberger 2", "Amdeberhan-Zeiberger Formula 2",
                   "Amdeberhan-Zeiberger Formula 2      (fastest)"},
    AlgorithmNames{"Amdeberhan-Zeiberger 1", "Amdeberhan-Zeiberger Formula 1",
                   "Amdeberhan-Zeiberger Formula 1      (slightly slower)"},
};

class zlr_Zeta3 final : public zlr_ListedConstant {
  public:
    zlr_Zeta3() : zlr_ListedConstant(2, zeta3_names) {}
    std::string get_short_name() const override { return "Zeta(3)"; }
    std::string get_name() const override { return "Zeta(3) - Apery's Constant"; }
};

}  // namespace

std::unique_ptr<zlr_Constant> make_zeta3() {
    return std::make_unique<zlr_Zeta3>();
}

}  // namespace znp
