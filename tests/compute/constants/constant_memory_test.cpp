// The memory queries of the catalogue, and what the constants say whose formulas are still to come.
#include <gtest/gtest.h>

#include <string>

#include "compute/engine/stage_memory.hpp"
#include "compute/run/digit_output.hpp"
#include "compute/run/run_time_parameters.hpp"
#include "compute/settings/compute_parameters.hpp"
#include "console_capture.hpp"
#include "foundation/exceptions.hpp"

namespace znp {
namespace {

constexpr u32_t every_id[] = {constant_id::sqrt,
                              constant_id::golden_ratio,
                              constant_id::e,
                              constant_id::pi,
                              constant_id::arccoth,
                              constant_id::log,
                              constant_id::zeta3,
                              constant_id::lemniscate,
                              constant_id::catalan,
                              constant_id::euler_gamma,
                              constant_id::euler_gamma_override};
constexpr u64_t parameter = 5;
constexpr u64_t some_digits[] = {100, 1000, 5000, 20000, 50000, 1000000, 100000000};

upL_t memory_of(u32_t id, s32_t algorithm, u64_t dec, u64_t threads) {
    const upL_t p = precision_for(hex_digits_for(dec));
    upL_t bytes = 0;
    EXPECT_TRUE(make_constant(id, parameter, p)->get_memory_B(algorithm, p, dec, threads, bytes)) << id;
    return bytes;
}

TEST(ConstantMemory, APrecisionOf0AsksWhetherTheAlgorithmExists) {
    for (const u32_t id : every_id) {
        const auto constant = make_constant(id, parameter, 100);
        upL_t bytes = 77;
        for (s32_t algorithm = 0; algorithm < constant->algorithm_count(); algorithm++) {
            EXPECT_TRUE(constant->get_memory_B(algorithm, 0, 0, 1, bytes)) << id;
        }
        EXPECT_FALSE(constant->get_memory_B(4, 0, 0, 1, bytes)) << id;
        EXPECT_FALSE(constant->get_memory_B(4, 100, 1000, 1, bytes)) << id;
        EXPECT_FALSE(constant->get_memory_B(-1, 100, 1000, 1, bytes)) << id;
        EXPECT_EQ(bytes, 77u);
    }
}

// Only what has to be there.
class Nameless final : public zlr_Constant {
  public:
    Nameless() : zlr_Constant(1) {}
    std::string get_short_name() const override { return "short"; }
    std::string get_algorithm_short(s32_t, upL_t) const override { return "first"; }
};

TEST(ConstantDefaults, NamesColourAndLimit) {
    const Nameless constant;
    EXPECT_EQ(constant.get_max_digits(), 90'000'000'000'050u);
    EXPECT_EQ(constant.get_color(), 'G');
    EXPECT_EQ(constant.get_name(), "short");
    EXPECT_EQ(constant.get_algorithm_name(0, 100), "first");
    EXPECT_EQ(constant.get_algorithm_menu(0, 100), "first");
}

TEST(ConstantDefaults, MissingEstimatesSayTheirName) {
    const Nameless constant;
    upL_t bytes = 0;
    u64_t disk = 0;
    const auto told = [](const std::string& function) {
        return "\n" + testing::sent::R + function + " - Function not implemented\n" + testing::sent::W;
    };
    EXPECT_EQ(testing::console_output([&] { EXPECT_FALSE(constant.get_memory_B(0, 100, 1000, 1, bytes)); }),
              told("zlr_Constant::get_memory_B()"));
    EXPECT_EQ(testing::console_output([&] { EXPECT_FALSE(constant.get_memory_B(0, 0, 0, 1, bytes)); }), "");
    EXPECT_EQ(testing::console_output(
                  [&] { EXPECT_FALSE(constant.get_memory_S(0, 100, 1000, 0, 4096, 1, disk, bytes)); }),
              told("zlr_Constant::get_memory_S()"));
}

TEST(ConstantDefaultsDeathTest, MissingComputationsAreFatal) {
    const Nameless constant;
    RunTimeParameters run{RunSettings()};
    EXPECT_EXIT(testing::dying([&] { constant.run_B(0, run); }), ::testing::ExitedWithCode(1),
                "zlr_Constant::run_B\\(\\) - Function not implemented");
    EXPECT_EXIT(testing::dying([&] { constant.run_S(0, run); }), ::testing::ExitedWithCode(1),
                "zlr_Constant::run_S\\(\\) - Function not implemented");
}

TEST(ConstantMemory, GrowsWithTheDigits) {
    for (const u32_t id : every_id) {
        for (s32_t algorithm = 0; algorithm < 2; algorithm++) {
            if (!make_constant(id, parameter, 100)->knows_algorithm(algorithm, 100)) continue;
            upL_t last = 0;
            for (const u64_t dec : some_digits) {
                const upL_t bytes = memory_of(id, algorithm, dec, 1);
                EXPECT_GT(bytes, last) << id << " " << algorithm << " " << dec;
                last = bytes;
            }
        }
    }
}

// A run's numbers alone: the result, and the decimal words beside it.
TEST(ConstantMemory, HoldsTheOutputOfTheDigits) {
    for (const u32_t id : every_id) {
        for (const u64_t dec : some_digits) {
            RunSettings settings;
            settings.p = precision_for(hex_digits_for(dec));
            settings.dec = dec;
            settings.tds = 2;
            const upL_t output = count_bytes(settings, 0, [](StageMemory& memory) {
                const HeapFloat number = memory.number(memory.settings().p + 2);
                convert_and_write_B(memory, number);
            });
            EXPECT_GE(memory_of(id, 0, dec, 2), output) << id << " " << dec;
        }
    }
}

TEST(ConstantMemory, TheLargestRunHasAnEstimate) {
    constexpr u64_t most_digits = 90'000'000'000'050;
    const upL_t p = precision_for(hex_digits_for(most_digits));
    for (const u32_t id : {constant_id::sqrt, constant_id::e, constant_id::pi, constant_id::zeta3}) {
        ASSERT_EQ(make_constant(id, parameter, p)->get_max_digits(), most_digits);
        const upL_t bytes = memory_of(id, 0, most_digits, 256);
        EXPECT_GT(bytes / sizeof(cdi), 10 * p) << id;
        EXPECT_LT(bytes / sizeof(cdi), 30 * p) << id;
    }
}

// Two threads, 1.5 GiB in all.
TEST(ConstantMemory, AHundredMillionDigitsOfPiFitASmallMachine) {
    EXPECT_LT(memory_of(constant_id::pi, 0, 100'000'000, 2), upL_t{750} << 20);
}

TEST(ConstantMemory, SizesBeyondTheMultipliersAreAnError) {
    const auto pi = make_constant(constant_id::pi, 0, 100);
    upL_t bytes = 0;
    std::string message;
    testing::console_output([&] {
        try {
            pi->get_memory_B(0, upL_t{0x90000000000} / 2, 1000, 1, bytes);
        } catch (const zn_exception& exception) {
            message = exception.message;
        }
    });
    EXPECT_EQ(message, "Internal Error: Maximum Size Exceeded");
}

TEST(ConstantDrivers, WhichOnesThereAre) {
    for (const u32_t id : every_id) {
        const auto constant = make_constant(id, parameter, 100);
        for (s32_t algorithm = 0; algorithm < constant->algorithm_count(); algorithm++) {
            EXPECT_TRUE(constant->runs_B(algorithm)) << id;
        }
        EXPECT_FALSE(constant->runs_B(4)) << id;
        EXPECT_FALSE(constant->runs_B(-1)) << id;
    }
    EXPECT_TRUE(make_constant(constant_id::pi, 0, 100)->runs_B(3));
}

}  // namespace
}  // namespace znp
