#include "system/fault_campaign.hpp"

namespace znp {
namespace {

TEST(FaultCampaign, RunsEndInRightDigitsOrInAMessage) {
    testing::expect_nothing_wrong_unnoticed(
        {10'000,
         {{1'000'000, 10}, {2'000'000, 5}, {5'000'000, 2}, {10'000'000, 1}},
         {{200'000, 5}, {1'000'000, 2}}});
}

}  // namespace
}  // namespace znp
