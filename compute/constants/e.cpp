// e.
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"
#include "compute/drivers/e.hpp"

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
};

}  // namespace

std::unique_ptr<zlr_Constant> make_e() {
    return std::make_unique<zlr_E>();
}

}  // namespace znp
