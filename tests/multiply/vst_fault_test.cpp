// A short campaign of faults; vst_fault_long_test.cpp has the long one.
#include "multiply/vst_fault_campaign.hpp"

namespace znp {
namespace {

TEST(VSTFaults, NoWrongProductGoesUnnoticed) {
#ifndef NDEBUG
    GTEST_SKIP() << "assertions see the faults first";
#endif
    testing::run_fault_campaign({9, 1, 11}, 1, {100, 30, 30, 30, 20}, 1);
}

}  // namespace
}  // namespace znp
