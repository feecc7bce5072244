// Faults injected into products of the large transform, as failing hardware does: one bit, at a random place
// and at a random moment of the product, by a second thread. What the program has against them are the
// redundancy check of every inverse and, in the number classes above, the residue of the product.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <random>
#include <thread>
#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/vst/vst_transform.hpp"
#include "multiply/vst_test_support.hpp"
#include "test_seed.hpp"

namespace znp::testing {

enum class FaultPlace { image, tables, operand, scratch, result };
inline constexpr const char* fault_place_names[] = {"image", "tables", "operand", "scratch", "result"};

struct FaultOutcomes {
    unsigned by_check = 0;    // the redundancy check fired
    unsigned by_residue = 0;  // wrong product, wrong residue
    unsigned harmless = 0;    // the product is right all the same
    unsigned unnoticed = 0;   // wrong product, right residue

    unsigned all() const { return by_check + by_residue + harmless + unnoticed; }
};

class FaultCampaign {
  public:
    FaultCampaign(const vst::Geometry& g, u64_t threads, std::mt19937_64& rng)
        : rng_(rng),
          tables_(std::span(&g, 1)),
          vst_(&tables_.holder, g, threads),
          T1_(make_guarded_array<std::byte>(nullptr, vst_.transform_bytes, 64)),
          T2_(make_guarded_array<std::byte>(nullptr, vst_.transform_bytes, 64)),
          scratch_(make_guarded_array<std::byte>(nullptr, vst_.work_bytes, 64)),
          A_(random_words<c64i>(rng, vst_.capacity / 128)),
          B_(random_words<c64i>(rng, vst_.capacity / 128)),
          right_(gmp_product(A_, B_)),
          expected_(residue::mul(residue::hash_words(A_.data(), A_.size()),
                                 residue::hash_words(B_.data(), B_.size()))) {
        std::vector<c64i> R(right_.size());
        const auto start = std::chrono::steady_clock::now();
        for (unsigned k = 0; k < 8; ++k) multiply(A_, R);
        nanoseconds_ = static_cast<u64_t>((std::chrono::steady_clock::now() - start).count()) / 8;
        EXPECT_EQ(R, right_);
        EXPECT_EQ(residue::hash_words(R.data(), R.size()), expected_);
    }

    void inject(FaultPlace place, FaultOutcomes& outcomes) {
        std::vector<c64i> A = A_, R(right_.size());
        std::byte* const target = address(place, A, R);
        const auto bit = static_cast<std::byte>(1u << (rng_() % 8));
        // An operand is read early and a result written late: two of three such faults come before or behind.
        const bool outside = rng_() % 3 != 0;
        const bool before = outside && (place == FaultPlace::operand || place == FaultPlace::tables);
        const bool behind = outside && place == FaultPlace::result;
        const auto delay = std::chrono::nanoseconds(rng_() % nanoseconds_);
        std::atomic<bool> ready = false, started = false;
        std::thread fault([&] {
            if (before) flip(target, bit);
            ready = true;
            while (!started) std::this_thread::yield();
            const auto moment = std::chrono::steady_clock::now() + delay;
            while (std::chrono::steady_clock::now() < moment)
                std::atomic_signal_fence(std::memory_order_seq_cst);
            if (!before && !behind) flip(target, bit);
        });
        while (!ready) std::this_thread::yield();
        bool fired = false;
        started = true;
        try {
            multiply(A, R);
        } catch (const zn_exception& e) {
            EXPECT_EQ(e.code, 1);
            fired = true;
        }
        fault.join();
        if (behind) flip(target, bit);
        if (place == FaultPlace::tables) flip(target, bit);
        const bool residue_right = residue::hash_words(R.data(), R.size()) == expected_;
        if (fired) {
            ++outcomes.by_check;
        } else if (R == right_) {
            ++outcomes.harmless;
        } else {
            ++(residue_right ? outcomes.unnoticed : outcomes.by_residue);
        }
    }

  private:
    // By steps or, every other time, in one.
    void multiply(const std::vector<c64i>& A, std::vector<c64i>& R) {
        const WorkAreas work{image_at(T1_.get()), image_at(T2_.get()), scratch_at(scratch_.get())};
        in_one_ = !in_one_;
        if (in_one_) {
            vst_.product({R.data(), 0, R.size()}, A, B_, work);
            return;
        }
        vst_.forward(work.T1, A, work.scratch);
        vst_.forward(work.T2, B_, work.scratch);
        vst_.inverse_fmul({R.data(), 0, R.size()}, work.T1, work.T2, work.scratch);
    }

    // Not seen by thread checkers: the fault is no part of the program.
    __attribute__((no_sanitize("thread"))) static void flip(std::byte* target, std::byte bit) {
        volatile std::byte* const at = target;
        *at = *at ^ bit;
    }

    std::byte* address(FaultPlace place, std::vector<c64i>& A, std::vector<c64i>& R) {
        const auto within = [&](std::byte* start, upL_t bytes) { return start + rng_() % bytes; };
        switch (place) {
            case FaultPlace::image:
                return within(rng_() % 2 == 0 ? T1_.get() : T2_.get(), vst_.transform_bytes);
            case FaultPlace::tables:
                return table_byte();
            case FaultPlace::operand:
                return within(reinterpret_cast<std::byte*>(A.data()), 8 * A.size());
            case FaultPlace::scratch:
                return within(scratch_.get(), vst_.work_bytes);
            default:
                return within(reinterpret_cast<std::byte*>(R.data()), 8 * R.size());
        }
    }

    // A byte of the twiddles of a prime, not of the pointers to them.
    std::byte* table_byte() {
        const vst::PrimeTables& prime = vst_.record->prime[rng_() % vst_.geometry.a];
        const double* const twiddles = prime.twiddles[rng_() % 2];
        auto* const bytes = reinterpret_cast<std::byte*>(const_cast<double*>(twiddles));
        return bytes + rng_() % (8 * vst_.record->table_nodes);
    }

    std::mt19937_64& rng_;
    VSTTablesOf tables_;
    VST vst_;
    GuardedArray<std::byte> T1_, T2_, scratch_;
    std::vector<c64i> A_, B_, right_;
    u64_t expected_;
    u64_t nanoseconds_ = 0;
    bool in_one_ = false;
};

// So many flips at each place.
inline void run_fault_campaign(const vst::Geometry& g, u64_t threads, const unsigned (&flips)[5],
                               u64_t stream) {
    std::mt19937_64 rng = make_rng(stream);
    FaultCampaign campaign(g, threads, rng);
    FaultOutcomes sum;
    for (unsigned p = 0; p < 5; ++p) {
        FaultOutcomes outcomes;
        console_output([&] {
            for (unsigned k = 0; k < flips[p]; ++k) campaign.inject(static_cast<FaultPlace>(p), outcomes);
        });
        std::printf(
            "[ OUTCOME  ] (%u, %u, %u), %u flips in the %s: %u caught by the check, %u by the residue, "
            "%u harmless, %u wrong and unnoticed\n",
            g.a, g.b, g.c, flips[p], fault_place_names[p], outcomes.by_check, outcomes.by_residue,
            outcomes.harmless, outcomes.unnoticed);
        EXPECT_EQ(outcomes.unnoticed, 0u);
        EXPECT_EQ(outcomes.all(), flips[p]);
        sum.by_check += outcomes.by_check;
        sum.by_residue += outcomes.by_residue;
    }
    EXPECT_GT(sum.by_check, 0u);
    EXPECT_GT(sum.by_residue, 0u);
}

}  // namespace znp::testing
