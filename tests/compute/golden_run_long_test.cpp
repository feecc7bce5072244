// The larger golden sizes.
#include "golden_run.hpp"

namespace znp {
namespace {

using testing::GoldenRun;

TEST_P(GoldenRun, AMillionDigits) {
    check_sizes(1'000'000, 1'000'000, {1, 2, 3, 8});
}

TEST_P(GoldenRun, TenMillionDigits) {
    if (GetParam().constant.id == constant_id::golden_ratio) GTEST_SKIP() << "no golden digits of this size";
    if (GetParam().constant.parameter > 2) GTEST_SKIP() << "no golden digits of this size";
    check_sizes(10'000'000, 10'000'000, {2, 3});
}

INSTANTIATE_TEST_SUITE_P(Constants, GoldenRun, ::testing::ValuesIn(testing::computed_algorithms()),
                         testing::algorithm_name);

}  // namespace
}  // namespace znp
