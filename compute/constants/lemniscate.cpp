// The Lemniscate constant.
#include <array>

#include "compute/constants/constants.hpp"
#include "compute/constants/listed_constant.hpp"

namespace znp {

namespace {

constexpr std::array lemniscate_names{
    AlgorithmNames{"Gauss", "Gauss formula",
                   "Gauss Formula       (fastest)\n\n"
                   "            Lemniscate = 8 * ArcSinlemn(1/2) + 4 * ArcSinLemn(7/23)\n"},
    AlgorithmNames{"Sebah", "Sebah's formula",
                   "Sebah's Formula     (20% slower)\n\n"
                   "            Lemniscate = 8 * ArcSinlemn(2/3) - 4 * ArcSinLemn(7/137)\n"},
};

class zlr_Lemniscate final : public zlr_ListedConstant {
  public:
    zlr_Lemniscate() : zlr_ListedConstant(2, lemniscate_names) {}
    std::string get_short_name() const override { return "Lemniscate"; }
};

}  // namespace

std::unique_ptr<zlr_Constant> make_lemniscate() {
    return std::make_unique<zlr_Lemniscate>();
}

}  // namespace znp
