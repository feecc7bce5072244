// Faults injected into products of the large transform, as failing hardware does: one bit, at a random place
// and at a random moment of the product, by a second thread. What the program has against them are the
// redundancy check of every inverse and, in the number classes above, the residue of the product.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "multiply/kernels/residue.hpp"
#include "multiply/vst/vst_transform.hpp"
#include "multiply/vst_test_support.hpp"
#include "page_trap.hpp"
#include "test_seed.hpp"

namespace znp::testing {

enum class FaultPlace { image, tables, operand, scratch, result };
inline constexpr const char* fault_place_names[] = {"image", "tables", "operand", "scratch", "result"};

struct FaultOutcomes {
    unsigned by_check = 0;    // the redundancy check fired
    unsigned by_residue = 0;  // wrong product, wrong residue
    unsigned harmless = 0;    // the product is right all the same
    unsigned unnoticed = 0;   // wrong product, right residue
    unsigned during = 0;      // of all: flips before or during the work

    unsigned all() const { return by_check + by_residue + harmless + unnoticed; }
};

class FaultCampaign {
  public:
    FaultCampaign(const vst::Geometry& g, u64_t threads, std::mt19937_64& rng)
        : rng_(rng),
          tables_(std::span(&g, 1)),
          vst_(&tables_.holder, g, threads),
          length_(vst_.capacity / 128),
          arena_(2 * TrapArena::whole_pages(vst_.transform_bytes) + TrapArena::whole_pages(vst_.work_bytes) +
                 TrapArena::whole_pages(8 * length_) + TrapArena::whole_pages(16 * length_)),
          T1_(arena_.take(vst_.transform_bytes)),
          T2_(arena_.take(vst_.transform_bytes)),
          scratch_(arena_.take(vst_.work_bytes)),
          A_(reinterpret_cast<c64i*>(arena_.take(8 * length_))),
          R_(reinterpret_cast<c64i*>(arena_.take(16 * length_))),
          original_(random_words<c64i>(rng, length_)),
          B_(random_words<c64i>(rng, length_)),
          right_(gmp_product(original_, B_)),
          expected_(residue::mul(residue::hash_words(original_.data(), length_),
                                 residue::hash_words(B_.data(), length_))) {
        for (const bool in_one : {false, true}) {
            std::copy(original_.begin(), original_.end(), A_);
            std::fill_n(R_, 2 * length_, 0);
            multiply(in_one);
            EXPECT_TRUE(std::equal(right_.begin(), right_.end(), R_));
        }
        EXPECT_EQ(residue::hash_words(R_, 2 * length_), expected_);
    }

    // The bit flips before the product or when the work has come to one to three pages, one after the other;
    // if it has not, behind it.
    void inject(FaultPlace place, FaultOutcomes& outcomes) {
        std::copy(original_.begin(), original_.end(), A_);
        std::fill_n(R_, 2 * length_, 0);
        std::byte* const target = address(place);
        const auto bit = static_cast<std::byte>(1u << (rng_() % 8));
        std::vector<std::byte*> pages(rng_() % 4);
        for (std::byte*& page : pages) page = arena_.page_at(rng_() % arena_.pages());
        const bool in_one = rng_() % 2 == 0;
        bool fired = false, sprung = false;
        {
            const PageTrap trap(pages, target, bit);
            try {
                multiply(in_one);
            } catch (const zn_exception& e) {
                EXPECT_EQ(e.code, 1);
                fired = true;
            }
            sprung = trap.sprung();
        }
        outcomes.during += sprung;
        if (!sprung) *target = *target ^ bit;
        if (place == FaultPlace::tables) *target = *target ^ bit;
        if (fired) {
            ++outcomes.by_check;
        } else if (std::equal(right_.begin(), right_.end(), R_)) {
            ++outcomes.harmless;
        } else {
            const bool residue_right = residue::hash_words(R_, 2 * length_) == expected_;
            ++(residue_right ? outcomes.unnoticed : outcomes.by_residue);
        }
    }

  private:
    // In one or by steps.
    void multiply(bool in_one) {
        const WorkAreas work{image_at(T1_), image_at(T2_), scratch_at(scratch_)};
        const WordSpan<c64i> A{A_, length_};
        if (in_one) {
            vst_.product({R_, 0, 2 * length_}, A, B_, work);
            return;
        }
        vst_.forward(work.T1, A, work.scratch);
        vst_.forward(work.T2, B_, work.scratch);
        vst_.inverse_fmul({R_, 0, 2 * length_}, work.T1, work.T2, work.scratch);
    }

    std::byte* address(FaultPlace place) {
        const auto within = [&](std::byte* start, upL_t bytes) { return start + rng_() % bytes; };
        switch (place) {
            case FaultPlace::image:
                return within(rng_() % 2 == 0 ? T1_ : T2_, vst_.transform_bytes);
            case FaultPlace::tables:
                return table_byte();
            case FaultPlace::operand:
                return within(reinterpret_cast<std::byte*>(A_), 8 * length_);
            case FaultPlace::scratch:
                return within(scratch_, vst_.work_bytes);
            default:
                return within(reinterpret_cast<std::byte*>(R_), 16 * length_);
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
    upL_t length_;  // of an operand
    TrapArena arena_;
    std::byte *T1_, *T2_, *scratch_;
    c64i *A_, *R_;
    std::vector<c64i> original_, B_, right_;
    u64_t expected_;
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
            "[ OUTCOME  ] (%u, %u, %u), %u flips in the %s, %u not behind the work: %u caught by the check, "
            "%u by the residue, %u harmless, %u wrong and unnoticed\n",
            g.a, g.b, g.c, flips[p], fault_place_names[p], outcomes.during, outcomes.by_check,
            outcomes.by_residue, outcomes.harmless, outcomes.unnoticed);
        EXPECT_EQ(outcomes.unnoticed, 0u);
        EXPECT_EQ(outcomes.all(), flips[p]);
        sum.by_check += outcomes.by_check;
        sum.by_residue += outcomes.by_residue;
    }
    EXPECT_GT(sum.by_check, 0u);
    EXPECT_GT(sum.by_residue, 0u);
}

}  // namespace znp::testing
