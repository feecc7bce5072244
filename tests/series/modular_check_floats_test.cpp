// The checks of sections over exact floats: residues that account for the exponent, and single wrong bits.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/kernels/residue.hpp"
#include "numbers/exact_float.hpp"
#include "series/modular_check.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

class ModularCheckOfFloats : public ::testing::Test {};

// A random number in a buffer of its own.
struct Number {
    std::vector<cdi> words;
    ExactFloatR value;

    Number(upL_t L, s64_t exp, std::mt19937_64& rng) : words(L + 1), value(words.data(), L + 1) {
        for (cdi& w : words) w = static_cast<cdi>(rng() | 1);
        value.set_L(L, exp);
    }
};

TEST(ModularCheckOfFloatsAt, ExponentOneAndMantissaOneHasHash8) {
    c64i words[2];
    ExactFloatR x(words, 2);
    x.set_uW(1, 1);
    EXPECT_EQ(x.get_hash(), 8u);
    EXPECT_EQ(x.hash_error(), 0u);
}

TEST_F(ModularCheckOfFloats, RightNumbersOfAnyExponentPass) {
    auto rng = testing::make_rng(3401);
    for (const s64_t exp : {0, 1, -1, 7, -64, 1000}) {
        Number a(1 + rng() % 40, exp, rng);
        Number b(1 + rng() % 40, -exp, rng);
        const std::string printed = testing::console_output([&] {
            check2(nullptr, 1, 2, a.value, b.value);
            check4(nullptr, 1, 2, a.value, b.value, a.value, b.value);
        });
        EXPECT_EQ(printed, "");
    }
}

TEST_F(ModularCheckOfFloats, ASingleFlippedBitFailsWithItsHashNonZero) {
    auto rng = testing::make_rng(3402);
    for (int round = 0; round < 50; ++round) {
        Number a(1 + rng() % 30, static_cast<s64_t>(rng() % 9) - 4, rng);
        Number b(1 + rng() % 30, static_cast<s64_t>(rng() % 9) - 4, rng);
        const bool in_a = rng() % 2 == 0;
        Number& wrong = in_a ? a : b;
        wrong.words[rng() % wrong.value.get_L()] ^= cdi{1} << rng() % WordTraits<cdi>::bits;

        std::string text;
        const std::string printed = testing::console_output([&] {
            try {
                check2(nullptr, 1, 2, a.value, b.value);
            } catch (const zl_BSRModularCheckFailed& failure) {
                text = failure.text;
            }
        });
        const std::string right_line = in_a ? "\nhashB = 0" : "\nhashA = 0\n";
        const std::string wrong_line = in_a ? "\nhashA = 0\n" : "\nhashB = 0";
        EXPECT_NE(text.find(right_line), std::string::npos) << text;
        EXPECT_EQ(text.find(wrong_line), std::string::npos) << text;
        EXPECT_NE(printed.find("Modular Redundancy Check Failed:"), std::string::npos);
    }
}

}  // namespace
}  // namespace znp
