#include "series/log_formula/formula_sweep.hpp"

namespace znp {
namespace {

TEST(DeriveLogFormulas, ManyNumbersAtManyPrecisions) {
    auto rng = testing::make_rng(6);
    for (const double D : {221.8, 2.3e4, 2.3e6, 2.3e9, 2.3e13}) {
        testing::FormulaSweep sweep;
        for (u64_t n = 2; n <= 2'000; n++) sweep.derive(n, D);
        for (int i = 0; i < 3'000; i++) sweep.derive(2 + rng() % 2147483646, D);
        sweep.report();
        EXPECT_EQ(sweep.derived, sweep.tried);
    }
}

// The largest numbers: the fewest of them are near a smooth one.
TEST(DeriveLogFormulas, TheLargestNumbers) {
    testing::FormulaSweep sweep;
    for (u64_t n = 2147483647; n > 2147483647 - 3'000; n--) sweep.derive(n, testing::some_precision);
    sweep.report();
    EXPECT_EQ(sweep.derived, sweep.tried);
}

}  // namespace
}  // namespace znp
