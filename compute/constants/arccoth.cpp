// ArcCoth(n).
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"

namespace znp {

namespace {

constexpr std::array arccoth_names{
    AlgorithmNames{"Taylor", "Taylor Series", "Taylor Series of ArcCoth(x)"},
};

class zlr_ArcCoth final : public zlr_ListedConstant {
  public:
    explicit zlr_ArcCoth(u64_t argument) : zlr_ListedConstant(1, arccoth_names), argument_(argument) {}
    std::string get_short_name() const override { return with_argument("ArcCoth", argument_); }

  private:
    u64_t argument_;
};

}  // namespace

std::unique_ptr<zlr_Constant> make_arccoth(u64_t argument) {
    return std::make_unique<zlr_ArcCoth>(argument);
}

}  // namespace znp
