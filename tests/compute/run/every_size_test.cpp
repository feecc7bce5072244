// Runs at every small size, and at sizes and thread counts that meet the boundaries of the memory plans, in
// blocks of exactly the estimate: digits against an oracle, guard words behind every array.
#include <algorithm>
#include <array>

#include "compute/run/computed_run.hpp"
#include "digit_oracle.hpp"
#include "golden.hpp"
#include "sha256.hpp"

namespace znp {
namespace {

using testing::ComputedAlgorithm;
using testing::ComputedRun;
using testing::settings_for;

// Made by the program itself, once, and right because the golden digits say so.
std::string golden_digits(const testing::ConstantRow& constant) {
    constexpr u64_t dec = 100'000;
    ComputeParameters settings = settings_for({constant, 0}, dec, 2);
    const std::string digits = testing::compute(settings).decimal;
    for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
        if (golden.constant == constant.name && golden.dec == dec) {
            EXPECT_EQ(testing::sha256(digits), golden.sha256);
            return digits;
        }
    }
    ADD_FAILURE() << constant.name << " has no golden digits";
    return digits;
}

void set_oracle(testing::DigitOracle& oracle, const testing::ConstantRow& constant) {
    switch (constant.id) {
        case constant_id::sqrt:
            oracle.sqrt(constant.parameter);
            break;
        case constant_id::golden_ratio:
            oracle.golden_ratio();
            break;
        case constant_id::e:
            oracle.e();
            break;
        case constant_id::pi:
            oracle.pi();
            break;
        default:
            oracle.decimal(golden_digits(constant));
    }
}

class EverySize : public ::testing::TestWithParam<ComputedAlgorithm> {
  protected:
    void SetUp() override {
        ASSERT_TRUE(settings_for(GetParam(), 100, 1).constant().runs_B(GetParam().algorithm));
        ask_oracle(12'000);
    }

    void ask_oracle(u64_t most_digits) {
        const u64_t most_hex = hex_digits_for(most_digits);
        testing::DigitOracle oracle(most_hex);
        set_oracle(oracle, GetParam().constant);
        decimal_ = oracle.text(most_digits);
        hexadecimal_ = oracle.text(most_hex, 16);
    }

    void check(ComputeParameters settings) const {
        SCOPED_TRACE(std::to_string(settings.dec()) + " decimal, " + std::to_string(settings.hex()) +
                     " hexadecimal digits, threads: " + std::to_string(settings.tds()));
        const ComputedRun result = testing::compute(settings);
        EXPECT_EQ(result.decimal, prefix(decimal_, settings.dec()));
        EXPECT_EQ(result.hexadecimal, settings.hex() == 0 ? "" : prefix(hexadecimal_, settings.hex()));
        const std::string& last = result.state->last_digits;
        const u64_t index = settings.dec() <= 100 ? 0 : (settings.dec() - 51) / 50 * 50;
        EXPECT_EQ(result.state->last_digits_index, index);
        ASSERT_EQ(last.size(), settings.dec() - index);
        EXPECT_EQ(last, result.decimal.substr(result.decimal.size() - last.size()));
        EXPECT_GE(result.state->peak_working_bytes, settings.ML() / 2) << "the estimate is wasteful";
    }

  private:
    static std::string prefix(const std::string& digits, u64_t count) {
        return digits.substr(0, digits.find('.') + 1 + count);
    }

    std::string decimal_, hexadecimal_;
};

TEST_P(EverySize, From100To400Digits) {
    for (u64_t dec = 100; dec <= 400; dec++) check(settings_for(GetParam(), dec, 1 + dec % 3));
}

// With the hexadecimal digits given, the decimal ones follow, and the last word is full, one digit over it or
// one short of it.
TEST_P(EverySize, FullAndOverfullLastWords) {
    for (const u64_t words : {6u, 7u, 40u, 41u, 200u}) {
        for (const u64_t hex : {16 * words - 1, 16 * words, 16 * words + 1}) {
            ComputeParameters settings = settings_for(GetParam(), 100, 1);
            ASSERT_EQ(settings.set_hex(hex), nullptr);
            check(std::move(settings));
        }
    }
}

TEST_P(EverySize, WithoutHexadecimalDigits) {
    for (const u64_t dec : {100u, 101u, 999u, 5000u}) {
        ComputeParameters settings = settings_for(GetParam(), dec, 2);
        ASSERT_EQ(settings.set_hex(0), nullptr);
        check(std::move(settings));
    }
}

TEST_P(EverySize, MemoryIsExactlyTheEstimateOnAnyThreads) {
    for (const u64_t threads : {1u, 2u, 3u, 7u, 16u}) {
        for (const u64_t dec : {100u, 285u, 304u, 608u, 1000u, 1216u, 2280u, 3333u, 5000u, 7777u, 10'000u}) {
            check(settings_for(GetParam(), dec, threads));
        }
    }
}

// Across the length at which the large transform takes over.
TEST_P(EverySize, LargerSizesOnAnyThreads) {
    ask_oracle(99'900);
    constexpr std::array<u64_t, 5> all_threads{1, 2, 3, 7, 16};
    upL_t turn = 0;
    for (const u64_t dec : {30'000u, 50'000u, 75'000u, 96'694u, 96'695u, 99'900u}) {
        // Of a slow constant each size on one number of threads.
        const u64_t one = all_threads[turn++ % all_threads.size()];
        for (const u64_t threads : all_threads) {
            if (!testing::is_fast(GetParam().constant) && threads != one) continue;
            ComputeParameters settings = settings_for(GetParam(), dec, threads);
            ASSERT_EQ(run_refusal(settings), "");
            check(std::move(settings));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Constants, EverySize, ::testing::ValuesIn(testing::computed_algorithms()),
                         testing::algorithm_name);

}  // namespace
}  // namespace znp
