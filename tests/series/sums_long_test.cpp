// The sums of every series to hundreds of thousands of digits, which take the large transform.
#include <gtest/gtest.h>

#include "series/closed_sums.hpp"

namespace znp {
namespace {

TEST(SeriesLongSums, AgainstTheDigitsOfTheConstant) {
    testing::closed_sums::larger_tables = &testing::tables_up_to<u64_t{64} * 4 * 52000>();
    for (const u64_t digits : {100000u, 1000000u}) testing::closed_sums::expect_golden_digits(digits);
}

}  // namespace
}  // namespace znp
