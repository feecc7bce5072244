// The larger golden sizes, in blocks of exactly the estimate on any threads.
#include "compute/run/golden_run.hpp"

namespace znp {
namespace {

using testing::algorithms_with_golden_digits;

class AMillion : public testing::GoldenRun {};
class TenMillion : public testing::GoldenRun {};
class HundredMillion : public testing::GoldenRun {};

TEST_P(AMillion, DigitsOnAnyThreads) {
    check_sizes(1'000'000, 1'000'000, {1, 2, 3, 7, 16});
}
INSTANTIATE_TEST_SUITE_P(Constants, AMillion, ::testing::ValuesIn(algorithms_with_golden_digits(1'000'000)),
                         testing::algorithm_name);

TEST_P(TenMillion, DigitsOnAnyThreads) {
    check_sizes(10'000'000, 10'000'000, {1, 2, 3, 7, 16});
}
INSTANTIATE_TEST_SUITE_P(Constants, TenMillion,
                         ::testing::ValuesIn(algorithms_with_golden_digits(10'000'000)),
                         testing::algorithm_name);

TEST_P(HundredMillion, DigitsOnTwoThreads) {
    check_sizes(100'000'000, 100'000'000, {2});
}
INSTANTIATE_TEST_SUITE_P(Constants, HundredMillion,
                         ::testing::ValuesIn(algorithms_with_golden_digits(100'000'000)),
                         testing::algorithm_name);

}  // namespace
}  // namespace znp
