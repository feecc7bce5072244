#include "compute/settings/constant_menu.hpp"

#include <gtest/gtest.h>

#include "tests/console_capture.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::without_colors;

class ConstantMenu : public ::testing::Test {
  protected:
    std::string choose(const std::string& input) {
        return without_colors(console_output([&] { choose_constant_menu(settings); }, input));
    }
    static bool contains(const std::string& text, const char* part) {
        return text.find(part) != std::string::npos;
    }

    ComputeParameters settings;
};

TEST_F(ConstantMenu, Screen) {
    const std::string screen = choose("3\n");
    EXPECT_TRUE(screen.starts_with(
        "Compute a Constant: (in ascending order of difficulty to compute)\n\n"
        "  #         Constant                      Value        Approximate Difficulty*\n\n"
        "Fast Constants:\n\n"
        "  0         Sqrt(n)                                         1.42\n"
        "  1         Golden Ratio                = 1.618034...       1.42\n\n"
        "Moderate Constants:\n\n"
        "  2         e                           = 2.718281...       4.02 / 4.02\n"
        "  3         Pi                          = 3.141592...       12.8 / 19.0\n"
        "  4         ArcCoth(n)                                      6.25 - 72.8\n"
        "  5         Log(n)                                        > 34.2\n"
        "  6         Zeta(3) (Apery's Constant)  = 1.202056...       61.9 / 64.8\n"
        "  7         Lemniscate                  = 5.244115...       121. / 150.\n\n"
        "Slow Constants:\n\n"
        "  8         Catalan's Constant          = 0.915965...       279. / 313.\n"
        "  9         Euler-Mascheroni Constant   = 0.577215...       355. / 528.\n\n"
        "*Actual numbers will vary. Radix conversion = 1.00\n\n"
        "Enter your choice:\noption: "))
        << screen;
}

TEST_F(ConstantMenu, EveryConstantWithoutAParameter) {
    for (const u32_t id : {constant_id::golden_ratio, constant_id::e, constant_id::pi, constant_id::zeta3,
                           constant_id::lemniscate, constant_id::catalan, constant_id::euler_gamma}) {
        choose(std::to_string(id) + "\n");
        EXPECT_EQ(settings.id(), id);
        EXPECT_EQ(settings.param(), 0u);
    }
}

TEST_F(ConstantMenu, PerfectSquaresAreAskedAgain) {
    const std::string screen = choose("0\n1\n4\n144\n2\n");
    EXPECT_TRUE(contains(screen, "Square Root of n\nn = "));
    EXPECT_TRUE(contains(
        screen, "\nThis number is a perfect square.\nPlease choose something more interesting :)\n"));
    EXPECT_EQ(settings.id(), constant_id::sqrt);
    EXPECT_EQ(settings.param(), 2u);
}

TEST_F(ConstantMenu, RadicandsHaveNoUpperLimit) {
    choose("0\n9223372036854775807\n");
    EXPECT_EQ(settings.param(), 9223372036854775807u);
}

TEST_F(ConstantMenu, ArgumentsAreAskedAgainUntilTheyAreInRange) {
    EXPECT_TRUE(contains(choose("4\n1\n4294967296\n4294967295\n"), "ArcCoth(n)\nn = "));
    EXPECT_EQ(settings.id(), constant_id::arccoth);
    EXPECT_EQ(settings.param(), 4294967295u);
    EXPECT_TRUE(contains(choose("5\n1\n2147483648\n2147483647\n"), "Log(n)\nn = "));
    EXPECT_EQ(settings.id(), constant_id::log);
    EXPECT_EQ(settings.param(), 2147483647u);
}

// The prompt accepts the unlisted number, which is refused behind its own prompt.
TEST_F(ConstantMenu, TheUnlistedTenEndsInAnError) {
    const std::string screen = choose("11\n10\n1\n20\n\n");
    EXPECT_TRUE(contains(screen, "Select a parameter:\nn = 2^"));
    EXPECT_TRUE(
        contains(screen, "Error: Invalid constant, or not yet implemented.\n\nPress ENTER to continue"));
    EXPECT_EQ(settings.id(), constant_id::pi);
}

}  // namespace
}  // namespace znp
