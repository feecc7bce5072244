// 10,000 faults in products of the large transform.
#include "multiply/vst_fault_campaign.hpp"

namespace znp {
namespace {

TEST(VSTFaults, TenThousandFlips) {
#ifndef NDEBUG
    GTEST_SKIP() << "assertions see the faults first";
#endif
    testing::run_fault_campaign({9, 1, 11}, 1, {1500, 500, 300, 100, 100}, 1);
    testing::run_fault_campaign({6, 3, 12}, 1, {1500, 500, 300, 100, 100}, 2);
    testing::run_fault_campaign({8, 7, 11}, 2, {1500, 500, 300, 100, 100}, 3);
    testing::run_fault_campaign({7, 1, 14}, 2, {1500, 500, 300, 100, 100}, 4);
}

}  // namespace
}  // namespace znp
