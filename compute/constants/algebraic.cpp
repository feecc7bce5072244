// Sqrt(n) and the Golden Ratio.
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"
#include "compute/drivers/algebraic.hpp"

namespace znp {

namespace {

constexpr std::array newton_names{
    AlgorithmNames{"Newton", "Newton's Method", "1st order Newton's Method"},
};

class zlr_Sqrt final : public zlr_ListedConstant {
  public:
    explicit zlr_Sqrt(u64_t radicand) : zlr_ListedConstant(1, newton_names), radicand_(radicand) {}
    char get_color() const override { return 'P'; }
    std::string get_short_name() const override { return with_argument("Sqrt", radicand_); }

  private:
    u64_t radicand_;
};

class zlr_GoldenRatio final : public zlr_ListedConstant {
  public:
    zlr_GoldenRatio() : zlr_ListedConstant(1, newton_names) {}
    char get_color() const override { return 'P'; }
    std::string get_short_name() const override { return "Golden Ratio"; }
};

}  // namespace

std::unique_ptr<zlr_Constant> make_sqrt(u64_t radicand) {
    return std::make_unique<zlr_Sqrt>(radicand);
}

std::unique_ptr<zlr_Constant> make_golden_ratio() {
    return std::make_unique<zlr_GoldenRatio>();
}

}  // namespace znp
