// Faults injected into products of the floating-point FFT, as failing hardware does: one bit, at a random
// place, at a random moment of the work: before a transform, between two of its passes, before the last one.
// What the program has against them are the check of the last pass (fft_check.hpp) and, in the classes above,
// residues.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

#include "multiply/fft/fft_carry.hpp"
#include "multiply/fft/fft_check.hpp"
#include "multiply/fft/fft_kernels.hpp"
#include "multiply/fft_test_support.hpp"
#include "multiply/fft_watched_trees.hpp"
#include "multiply/kernels/residue.hpp"

namespace znp::fft::testing {

// The guard residue modulo a prime in which 2 has a large order: no periodic error hides from it.
inline u64_t prime_residue(const c32i* words, upL_t L) {
    constexpr u64_t low = (u64_t{1} << 63) - 1;
    u64_t h = 0;
    for (upL_t i = L; i-- > 0;) {
        const u128_t x = (u128_t{h} << 32) + words[i];
        const u64_t folded = static_cast<u64_t>(x & low) + 165 * static_cast<u64_t>(x >> 63);
        h = (folded & low) + 165 * (folded >> 63);
    }
    return h >= low - 164 ? h - (low - 164) : h;
}

inline u64_t prime_product(u64_t a, u64_t b) {
    return static_cast<u64_t>(u128_t{a} * b % ((u64_t{1} << 63) - 165));
}

enum class FlipPlace { product, first_image, second_image, operand_image, tables };
inline constexpr const char* flip_place_names[] = {"image under the inverse", "first image", "second image",
                                                   "image under the forward", "tables"};

struct FlipOutcomes {
    u64_t by_check = 0;    // the FFT's own check fires
    u64_t in_vain = 0;     // of these, with the right product all the same
    u64_t by_residue = 0;  // wrong product, which only the residues see
    u64_t by_prime = 0;    // of these, those that the one modulo 2^61 - 1 does not see
    u64_t harmless = 0;    // right product, no alarm
    u64_t unnoticed = 0;   // wrong product that nothing sees
    u64_t blind = 0;       // all wrong products that the residue modulo 2^61 - 1 does not see

    u64_t all() const { return by_check + by_residue + harmless + unnoticed; }
};

class FlipCampaign {
  public:
    FlipCampaign(const PlanRow& size, std::mt19937_64& rng)
        : rng_(rng),
          memory_(tables_bytes(bottom_depth(static_cast<unsigned>(size.p)))),
          t_(&holder_, size),
          C_(t_.p % 2 != 0 ? t_.k : 2 * t_.k),
          scale_(2.0 * C_ / static_cast<double>(t_.N)),
          digits_(t_.transform_bytes),
          image_a_(t_.transform_bytes),
          image_b_(t_.transform_bytes),
          T1_(t_.transform_bytes),
          T2_(t_.transform_bytes),
          scratch_(t_.work_bytes),
          R_(t_.bits / 32) {
        build_tables(holder_.fft, bottom_depth(t_.p), memory_.get());
        Fault none = {0, nullptr, {}};
        forward_tree(points(T1_), t_.N, C_, *holder_.fft, none);
        steps_ = static_cast<u64_t>(-none.steps);
        new_operands();
    }

    void new_operands() {
        A_ = operand();
        B_ = operand();
        t_.forward(image_a_, A_, scratch_);
        t_.forward(image_b_, B_, scratch_);
        std::memcpy(T1_.get(), image_a_.get(), T1_.size());
        Words R(t_.bits / 32);
        t_.ring_fmul(R.data(), T1_, image_b_);
        right_ = R;
        expected_ = residue::mul(residue::hash_words(A_.data(), A_.size()),
                                 residue::hash_words(B_.data(), B_.size()));
        EXPECT_EQ(residue::hash_words(R.data(), R.size()), expected_);
        expected_prime_ =
            prime_product(prime_residue(A_.data(), A_.size()), prime_residue(B_.data(), B_.size()));
        EXPECT_EQ(prime_residue(R.data(), R.size()), expected_prime_);
        // What the first pass leaves of A: forward_tree makes the image of it.
        first_pass(points(digits_), t_.N, t_.w, streams_of(A_));
    }

    void inject(FlipPlace place, FlipOutcomes& outcomes) {
        const std::byte bit{static_cast<unsigned char>(1u << (rng_() % 8))};
        const s64_t moment = static_cast<s64_t>(rng_() % (steps_ + 1));
        Fault fault = {moment, nullptr, bit};
        const auto within = [&](const Buffer& buffer) { return buffer.get() + rng_() % buffer.size(); };
        switch (place) {
            case FlipPlace::product:
                fault.at = within(T1_);
                break;
            case FlipPlace::first_image:
                fault = {0, within(T1_), bit};
                break;
            case FlipPlace::second_image:
                fault.at = within(T2_);
                break;
            case FlipPlace::operand_image:
                fault.at = within(T1_);
                return forward_and_inverse(fault, outcomes);
            case FlipPlace::tables:
                fault.at = memory_.get() + sizeof(FFTTables) + rng_() % (memory_.size() - sizeof(FFTTables));
                rng_() % 2 == 0 ? inverse_of_images(fault, outcomes) : forward_and_inverse(fault, outcomes);
                return fault.flip();
        }
        inverse_of_images(fault, outcomes);
    }

  private:
    static double* points(const Buffer& image) { return reinterpret_cast<double*>(image.get()); }

    // Half of the points, so that the product does not wrap. One of eight is of nearly maximal digits.
    Words operand() {
        Words A = random_words(rng_, t_.bits / 64);
        if (rng_() % 8 == 0) std::fill(A.begin() + 1, A.end() - 1, ~c32i{0});
        return A;
    }

    DigitStreams streams_of(const Words& A) {
        zeros_.assign(t_.bits / 64 + 16, std::byte{0});
        stream_.assign(t_.bits / 16 + 16, std::byte{0});
        std::memcpy(stream_.data(), A.data(), 4 * A.size());
        DigitStreams digits = {};
        for (unsigned s = 0; s < 4; ++s) digits.begin[s] = stream_.data() + s * (t_.bits / 64);
        for (unsigned s = 4; s < 8; ++s) digits.begin[s] = zeros_.data();
        return digits;
    }

    void forward_and_inverse(Fault& fault, FlipOutcomes& outcomes) {
        std::memcpy(T1_.get(), digits_.get(), T1_.size());
        if (fault.steps == 0) fault.flip();
        forward_tree(points(T1_), t_.N, C_, *holder_.fft, fault);
        Fault none = {0, nullptr, {}};
        inverse_tree(points(T1_), points(image_b_), t_.N, C_, *holder_.fft, none);
        judge(outcomes);
    }

    void inverse_of_images(Fault& fault, FlipOutcomes& outcomes) {
        std::memcpy(T1_.get(), image_a_.get(), T1_.size());
        std::memcpy(T2_.get(), image_b_.get(), T2_.size());
        if (fault.steps == 0) fault.flip();
        inverse_tree(points(T1_), points(T2_), t_.N, C_, *holder_.fft, fault);
        judge(outcomes);
    }

    // As FFT::inverse ends, but that an alarm is counted.
    void judge(FlipOutcomes& outcomes) {
        auto* const words = reinterpret_cast<std::byte*>(R_.data());
        s64_t carry[8];
        const bool strays = last_pass(words, carry, points(T1_), t_.N, t_.w, scale_);
        const bool fires = strays && largest_distance(points(T1_), t_.N, scale_) > distance_limit(t_.N, t_.w);
        const u32_t top = resolve_carries(words, carry, t_.bits);
        const bool right = R_ == right_ && top == 0;
        if (right) {
            ++(fires ? outcomes.by_check : outcomes.harmless);
            outcomes.in_vain += fires;
            return;
        }
        // The top bit is a part of the value that is verified.
        const u64_t top_value = top == 0 ? 0 : residue::sub(t_.modulus(), 1);
        const bool blind = residue::add(residue::hash_words(R_.data(), R_.size()), top_value) == expected_;
        outcomes.blind += blind;
        if (fires) {
            ++outcomes.by_check;
        } else if (top != 0 || prime_residue(R_.data(), R_.size()) != expected_prime_) {
            ++outcomes.by_residue;
            outcomes.by_prime += blind;
        } else {
            ++outcomes.unnoticed;
        }
    }

    std::mt19937_64& rng_;
    Buffer memory_;
    TableHolder holder_;
    FFT t_;
    unsigned C_;
    double scale_;
    Buffer digits_, image_a_, image_b_, T1_, T2_, scratch_;
    std::vector<std::byte> zeros_, stream_;
    Words A_, B_, R_, right_;
    u64_t expected_ = 0, expected_prime_ = 0, steps_ = 0;
};

inline void print_outcomes(const char* where, const FlipOutcomes& o) {
    const auto n = [](u64_t x) { return static_cast<unsigned long long>(x); };
    std::printf(
        "[ OUTCOME  ] %s: %llu flips, %llu seen by the check (%llu with the right product), %llu by the "
        "residues alone (%llu not modulo 2^61 - 1), %llu harmless, %llu wrong and unnoticed; %llu wrong "
        "ones escape the residue modulo 2^61 - 1\n",
        where, n(o.all()), n(o.by_check), n(o.in_vain), n(o.by_residue), n(o.by_prime), n(o.harmless),
        n(o.unnoticed), n(o.blind));
}

// So many flips, spread over the places; new operands after every 100.
inline FlipOutcomes run_flip_campaign(const PlanRow& size, u64_t flips, std::mt19937_64& rng) {
    FlipCampaign campaign(size, rng);
    FlipOutcomes outcomes[5], sum;
    for (u64_t i = 0; i < flips; ++i) {
        if (i % 100 == 99) campaign.new_operands();
        const auto place = rng() % 5;
        campaign.inject(static_cast<FlipPlace>(place), outcomes[place]);
    }
    std::printf("[ OUTCOME  ] (k %d, p %d, w %d)\n", size.k, size.p, size.w);
    for (unsigned place = 0; place < 5; ++place) {
        const FlipOutcomes& o = outcomes[place];
        print_outcomes(flip_place_names[place], o);
        sum.by_check += o.by_check, sum.in_vain += o.in_vain, sum.by_residue += o.by_residue;
        sum.by_prime += o.by_prime, sum.harmless += o.harmless, sum.unnoticed += o.unnoticed;
        sum.blind += o.blind;
    }
    EXPECT_EQ(sum.all(), flips);
    EXPECT_EQ(sum.unnoticed, 0u);
    EXPECT_GT(sum.by_check, flips / 10);
    return sum;
}

}  // namespace znp::fft::testing
