// The check of the floating-point FFT: its vector form against the plain one, its limit and its text.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <tuple>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/fft/fft_check.hpp"
#include "multiply/fft/fft_kernels.hpp"
#include "multiply/fft_test_support.hpp"
#include "multiply/multiply_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using fft::PlanRow;
using fft::testing::Buffer;
using fft::testing::row;

struct Result {
    explicit Result(const PlanRow& size)
        : N(size.N()),
          w(static_cast<unsigned>(size.w)),
          scale(std::ldexp(1.0, -static_cast<int>(size.p - 1))),
          bytes(8 * N),
          words(size.capacity_bits / 8) {}

    double* points() const { return reinterpret_cast<double*>(bytes.get()); }
    bool strays() const {
        s64_t carry[8];
        return fft::last_pass(words.get(), carry, points(), N, w, scale);
    }
    bool plain_strays() const { return fft::has_strays(points(), N, scale); }

    void clear() const { std::fill(points(), points() + N, 0.0); }

    upL_t N;
    unsigned w;
    double scale;
    Buffer bytes, words;
};

// One input of one step at a time, at any amplitude: the vector form sees what the plain form sees.
TEST(FftCheck, TheLastPassSeesTheStraysOfThePlainForm) {
    auto rng = testing::make_rng(60);
    unsigned seen = 0, passed = 0;
    for (const PlanRow& size : {row(1, 7, 16), row(1, 7, 20), row(1, 8, 9), row(1, 9, 19)}) {
        const Result image(size);
        image.clear();
        EXPECT_FALSE(image.strays());
        for (unsigned round = 0; round < 4000; ++round) {
            double& x = image.points()[rng() % image.N];
            const double mantissa = 1 + static_cast<double>(rng() % 1024) / 1024;
            x = std::ldexp(rng() % 2 == 0 ? mantissa : -mantissa, static_cast<int>(rng() % 12) - 5) /
                image.scale;
            const bool expected = image.plain_strays();
            EXPECT_EQ(image.strays(), expected) << x;
            ++(expected ? seen : passed);
            x = 0;
        }
    }
    EXPECT_GT(seen, 1000u);
    EXPECT_GT(passed, 1000u);
}

// Every step is looked at: a fault of one half in any input is seen.
TEST(FftCheck, EveryInputOfTheLastPassIsSeen) {
    for (const PlanRow& size : {row(1, 7, 16), row(1, 9, 19), row(1, 10, 11)}) {
        const Result image(size);
        image.clear();
        for (upL_t i = 0; i < image.N; ++i) {
            for (const double x :
                 {0.5, 1.0, 4.0, 0x1p51, 0x1p60, 0x1p400, -0x1p60, -0x1p400,
                  std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
                image.points()[i] = x / image.scale;
                EXPECT_TRUE(image.strays()) << i << " " << x;
                EXPECT_TRUE(image.plain_strays()) << i << " " << x;
                EXPECT_GT(fft::largest_distance(image.points(), image.N, image.scale), 0.25) << i << " " << x;
            }
            image.points()[i] = 0;
        }
    }
}

TEST(FftCheck, Limits) {
    EXPECT_EQ(fft::distance_limit(128, 16), 0.125);
    EXPECT_EQ(fft::distance_limit(384, 20), 0.453125);
    EXPECT_NEAR(fft::distance_limit(512, 19), 0.2652, 1e-4);
    // A limit is below one half, where digits become wrong, on every row.
    for (const auto plan : {fft::main_plan(), fft::exact_plan()})
        for (const PlanRow& size : plan) {
            const double limit = fft::distance_limit(size.N(), static_cast<unsigned>(size.w));
            EXPECT_GE(limit, 0.125);
            EXPECT_LE(limit, 0.453125);
        }
}

// The largest errors that bench/fft_sizes_bench has observed, of products that fill all points.
TEST(FftCheck, LimitsLeaveRoomForTheErrorsObserved) {
    std::ifstream file(ZELMAR_TEST_DATA "/../generators/fft_measurements.tsv");
    std::map<std::tuple<unsigned, unsigned, unsigned>, double> observed;
    std::string line;
    while (std::getline(file, line)) {
        std::istringstream field(line);
        std::string kind;
        unsigned k = 0, p = 0, w = 0;
        double product = 0, ring = 0;
        if (field >> kind >> k >> p >> w >> product >> ring && kind == "error") observed[{k, p, w}] = ring;
    }
    for (const auto plan : {fft::main_plan(), fft::exact_plan()})
        for (const PlanRow& size : plan) {
            const auto error = observed.find({size.k, size.p, size.w});
            ASSERT_NE(error, observed.end());
            EXPECT_LE(1.4 * error->second, fft::distance_limit(size.N(), static_cast<unsigned>(size.w)));
        }
}

TEST(FftCheck, TheTextOfTheCheck) {
    const Result image(row(1, 7, 16));
    image.clear();
    // A quarter of the first point: a step's outputs are 1/4 times 1, c, h, s.
    image.points()[0] = 0.25 / image.scale;
    const std::string output = testing::console_output([&] {
        const auto e = testing::caught<zn_exception>(
            [&] { fft::check_distances(image.points(), image.N, image.w, image.scale); });
        EXPECT_EQ(e.code, 1);
        EXPECT_STREQ(e.title, "Generic Exception");
    });
    EXPECT_EQ(output.rfind(testing::sent::R + "FFT Redundancy Check Failed:  0.2500 / 0.1250\n", 0), 0u)
        << output;
    EXPECT_NE(output.find("Error Code: 1\n"), std::string::npos);
    image.points()[0] = 0.125 / image.scale;
    EXPECT_EQ(
        testing::console_output([&] { fft::check_distances(image.points(), image.N, image.w, image.scale); }),
        "");
}

}  // namespace
}  // namespace znp
