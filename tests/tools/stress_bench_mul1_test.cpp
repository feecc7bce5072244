#include "tools/stress_bench_mul1.hpp"

#include <gtest/gtest.h>

#include "shell/console.hpp"
#include "tests/console_capture.hpp"
#include "tools/stress_fakes.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::without_colors;

std::string rate_text(double rate) {
    return Console::format_int(static_cast<u64_t>(rate), Console::IntFormat::commas);
}

TEST(BenchMul1, SaysWhatItMeasured) {
    double rate32 = 0;
    double rate64 = 0;
    const std::string output = without_colors(console_output([&] {
        rate32 = bench_mul1<c32i>(3, 0.001);
        rate64 = bench_mul1<c64i>(2, 0.001);
    }));
    EXPECT_GT(rate32, 0);
    EXPECT_GT(rate64, 0);
    EXPECT_EQ(output, "        bench_mul1<32>(3):  " + rate_text(rate32) +
                          " Multiplies / sec\n"
                          "        bench_mul1<64>(2):  " +
                          rate_text(rate64) + " Multiplies / sec\n");
}

}  // namespace
}  // namespace znp
