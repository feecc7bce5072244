// Catalan's constant.
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"

namespace znp {

namespace {

constexpr std::array catalan_names{
    AlgorithmNames{"Lupas", "Lupas Formula", "Lupas Formula       (fastest)"},
    AlgorithmNames{"Huvent", "Huvent's Formula", "Huvent's Formula    (20% slower)"},
};

class zlr_Catalan final : public zlr_ListedConstant {
  public:
    zlr_Catalan() : zlr_ListedConstant(2, catalan_names) {}
    char get_color() const override { return 'B'; }
    std::string get_short_name() const override { return "Catalan"; }
    std::string get_name() const override { return "Catalan's Constant"; }
};

}  // namespace

std::unique_ptr<zlr_Constant> make_catalan() {
    return std::make_unique<zlr_Catalan>();
}

}  // namespace znp
