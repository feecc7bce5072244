#include "system/fault_campaign.hpp"

namespace znp {
namespace {

TEST(FaultCampaign, ShortRunsEndInRightDigitsOrInAMessage) {
    testing::expect_nothing_wrong_unnoticed(
        {90, {{100'000, 10}, {200'000, 5}, {500'000, 2}, {1'000'000, 1}}, {{30'000, 5}, {100'000, 5}}});
}

}  // namespace
}  // namespace znp
