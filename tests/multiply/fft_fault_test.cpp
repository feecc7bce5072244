// Faults injected into a floating-point FFT: its own check or the residue of the product against those of the
// operands must see every wrong result.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/fft_fault_campaign.hpp"
#include "multiply/fft_test_support.hpp"
#include "multiply/kernels/residue.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using fft::testing::Buffer;
using fft::testing::random_words;
using fft::testing::row;
using fft::testing::Words;

struct Outcomes {
    unsigned by_check = 0;   // the FFT's check fired
    unsigned caught = 0;     // wrong product, wrong residue
    unsigned harmless = 0;   // the product is right all the same: the flip was lost in the rounding
    unsigned unnoticed = 0;  // wrong product, right residue
};

void flip(std::mt19937_64& rng, std::byte* p, upL_t bytes) {
    p[rng() % bytes] ^= std::byte{static_cast<unsigned char>(1u << (rng() % 8))};
}

// Flips one bit of a part of the computation in each of the rounds.
enum class Where { first_image, second_image, twiddles, result };

Outcomes inject(Where where, unsigned rounds, std::mt19937_64& rng) {
    const unsigned depth = 4;
    const Buffer memory(fft::tables_bytes(depth));
    TableHolder holder;
    fft::build_tables(holder.fft, depth, memory.get());
    const upL_t header = sizeof(FFTTables);
    const FFT t(&holder, row(1, 9, 19));
    const Buffer T1(t.transform_bytes), T2(t.transform_bytes), scratch(t.work_bytes);
    const upL_t L = t.bits / 64;
    Words R(2 * L), right(2 * L);
    Outcomes outcomes;
    for (unsigned round = 0; round < rounds; ++round) {
        const Words A = random_words(rng, L), B = random_words(rng, L);
        const auto multiply = [&](Words& result, bool fault) {
            if (fault && where == Where::twiddles) {
                fft::build_tables(holder.fft, depth, memory.get());
                flip(rng, memory.get() + header, memory.size() - header);
            }
            t.forward(T1, {A.data(), L}, scratch);
            t.forward(T2, {B.data(), L}, scratch);
            if (fault && where == Where::first_image) flip(rng, T1.get(), T1.size());
            if (fault && where == Where::second_image) flip(rng, T2.get(), T2.size());
            t.inverse_fmul({result.data(), 0, 2 * L}, T1, T2, scratch);
            if (fault && where == Where::result)
                flip(rng, reinterpret_cast<std::byte*>(result.data()), 4 * result.size());
        };
        fft::build_tables(holder.fft, depth, memory.get());
        multiply(right, false);
        s32_t code = 0;
        const std::string output = testing::console_output([&] {
            try {
                multiply(R, true);
            } catch (const zn_exception& e) {
                code = e.code;
            }
        });
        if (code != 0) {
            EXPECT_EQ(code, 1);
            EXPECT_NE(output.find("FFT Redundancy Check Failed:  "), std::string::npos);
            ++outcomes.by_check;
            continue;
        }
        const u64_t expected =
            residue::mul(residue::hash_words(A.data(), L), residue::hash_words(B.data(), L));
        EXPECT_EQ(residue::hash_words(right.data(), 2 * L), expected);
        if (R == right)
            ++outcomes.harmless;
        else if (residue::hash_words(R.data(), 2 * L) != expected)
            ++outcomes.caught;
        else
            ++outcomes.unnoticed;
    }
    return outcomes;
}

void check(Where where, const char* name, unsigned rounds, bool words) {
    auto rng = testing::make_rng(40 + static_cast<unsigned>(where));
    const Outcomes o = inject(where, rounds, rng);
    std::printf(
        "[ OUTCOME  ] %u flips in the %s: %u seen by the check, %u by the residue, %u without effect, "
        "%u wrong and unnoticed\n",
        rounds, name, o.by_check, o.caught, o.harmless, o.unnoticed);
    EXPECT_EQ(o.unnoticed, 0u);
    EXPECT_EQ(o.by_check + o.caught + o.harmless, rounds);
    // Half of an image's bits lie far below the rounding; no bit of a result does.
    EXPECT_GT(words ? o.caught : o.by_check, words ? rounds - 1 : rounds / 10);
}

TEST(FftFaults, FlipsInTheFirstImage) {
    check(Where::first_image, "first image", 2000, false);
}

TEST(FftFaults, FlipsInTheSecondImage) {
    check(Where::second_image, "second image", 1000, false);
}

TEST(FftFaults, FlipsInTheTwiddleTables) {
    check(Where::twiddles, "twiddle tables", 1000, false);
}

TEST(FftFaults, FlipsInTheResult) {
    check(Where::result, "result", 1000, true);
}

// A short campaign; fft_fault_long_test.cpp has the long one.
TEST(FftFaults, FlipsBetweenTheSteps) {
    auto rng = testing::make_rng(45);
    for (const fft::PlanRow& size :
         {row(1, 7, 16), row(3, 7, 20), row(1, 8, 20), row(5, 8, 18), row(1, 9, 19)})
        fft::testing::run_flip_campaign(size, 4000, rng);
}

}  // namespace
}  // namespace znp
