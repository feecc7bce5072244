// 100,000,000 flips in images and tables of the floating-point FFT.
#include "multiply/fft_fault_campaign.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

TEST(FftFaults, AHundredMillionFlips) {
    using fft::testing::row;
    auto rng = testing::make_rng(50);
    fft::testing::FlipOutcomes sum;
    const auto run = [&](const fft::PlanRow& size, u64_t flips) {
        const auto o = fft::testing::run_flip_campaign(size, flips, rng);
        sum.by_check += o.by_check, sum.in_vain += o.in_vain, sum.by_residue += o.by_residue;
        sum.by_prime += o.by_prime, sum.harmless += o.harmless, sum.unnoticed += o.unnoticed;
        sum.blind += o.blind;
    };
    run(row(1, 7, 16), 20000000);
    run(row(1, 7, 20), 20000000);
    run(row(1, 8, 20), 20000000);
    run(row(3, 7, 20), 15000000);
    run(row(1, 9, 19), 15000000);
    run(row(5, 7, 19), 5000000);
    run(row(3, 8, 19), 4000000);
    run(row(1, 11, 18), 1000000);
    fft::testing::print_outcomes("all", sum);
    EXPECT_EQ(sum.unnoticed, 0u);
    EXPECT_EQ(sum.all(), 100000000u);
}

}  // namespace
}  // namespace znp
