// Bits flipped in the buffers of a sum while its terms are made: in the sum so far, in the nodes, in the work
// buffer. The sum is right (the section was summed once more), or it is refused, or its residues tell.
#include <array>
#include <cstdio>
#include <functional>

#include "console_capture.hpp"
#include "foundation/repeat_once.hpp"
#include "series/partial_series.hpp"
#include "series/series_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::BigIn;
using testing::GuardedWords;
using testing::Integer;
using testing::value;
using testing::Work;

// A series that calls a hook once, before a chosen term is made.
class Struck final : public zl_BSS_P2B3_Type0 {
  public:
    Struck(const zl_BSS_P2B3_Type0& series, u64_t term, std::function<void()> strike)
        : zl_BSS_P2B3_Type0(series.alternating, series.memory_overhead, series.end_threshold),
          series_(series),
          term_(term),
          strike_(std::move(strike)) {}
    u64_t terms(upL_t words) const override { return series_.terms(words); }
    double size_at(double x) const override { return series_.size_at(x); }
    double precision_of(u64_t a, u64_t b) const override { return series_.precision_of(a, b); }
    bool can_be_truncated() const override { return series_.can_be_truncated(); }
    upL_t PrecisionAtIndex(u64_t a, u64_t b) const override { return series_.PrecisionAtIndex(a, b); }
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override {
        if (term_ >= a && term_ < b && !struck_) {
            struck_ = true;
            strike_();
        }
        series_.BSR_End(P, Q, R, t0, t1, a, b);
    }

  private:
    const zl_BSS_P2B3_Type0& series_;
    const u64_t term_;
    const std::function<void()> strike_;
    mutable bool struck_ = false;
};

struct Counts {
    int right = 0, repaired = 0, refused = 0, noticed = 0, wrong = 0;

    void print(const char* what) const {
        std::printf("%-24s %4d right, %4d repaired, %4d refused, %4d noticed, %d wrong and unnoticed\n", what,
                    right, repaired, refused, noticed, wrong);
    }
};

class SeriesFaults : public ::testing::Test {
  protected:
    // The words of a sum so far, or its buffer before there are any.
    static std::span<std::byte> live(const BigFloatR& x) {
        const upL_t words = x.is_zero() ? x.get_size() : x.get_L();
        return std::as_writable_bytes(std::span(x.word_ptr(0), words));
    }
    static void flip(std::span<std::byte> bytes, u64_t bit) {
        bytes[bit / 8 % bytes.size()] ^= static_cast<std::byte>(1u << bit % 8);
    }

    void strike_sums(const zl_BSS_P2B3_Type0& series, const PSRPlan& plan, int runs, unsigned bits,
                     Counts& counts, bool in_sum = true) {
        const testing::GuardedSum right(series, plan, 1);
        const SumSizes sizes = right.sizes;
        const s64_t low = std::min(right.P().get_exp(), right.Q().get_exp());
        for (int i = 0; i < runs; i++) {
            BigIn P(sizes.P), Q(sizes.Q);
            GuardedWords<cdi> nodes(sizes.nodes);
            Work work(sizes.work_bytes);
            const BasicParameters bp = work.bp();
            const u64_t first = plan.front().a, last = plan.back().b;
            const Struck struck(series, first + rng() % (last - first), [&] {
                const std::array buffers{live(P.x), live(Q.x),
                                         std::as_writable_bytes(std::span(nodes.data(), sizes.nodes)),
                                         std::span(bp.M, bp.ML)};
                const upL_t first_buffer = in_sum ? 0 : 2;
                for (unsigned bit = 0; bit < bits; bit++)
                    flip(buffers[first_buffer + rng() % (buffers.size() - first_buffer)], rng());
            });
            const u64_t before = RecoveredErrors::count();
            bool refused = false;
            const std::string text = testing::console_output([&] {
                try {
                    B_PSR(bp, struck, plan, P.x, Q.x, nodes.data(), nullptr, nullptr);
                } catch (const ArithmeticFailure&) {
                    refused = true;
                } catch (const UnsupportedValueException&) {
                    refused = true;
                }
            });
            if (refused) {
                counts.refused++;
            } else if (P.x.hash_error() != 0 || Q.x.hash_error() != 0) {
                counts.noticed++;
            } else if (value(P.x, low) != value(right.P(), low) || value(Q.x, low) != value(right.Q(), low)) {
                counts.wrong++;
            } else {
                (RecoveredErrors::count() > before ? counts.repaired : counts.right)++;
            }
        }
    }

    std::mt19937_64 rng = testing::make_rng(811);
};

TEST_F(SeriesFaults, NoFlippedBitGivesAWrongSumUnnoticed) {
    struct Case {
        const zl_BSS_P2B3_Type0& series;
        upL_t words;
    };
    const Pi_Chudnovsky chudnovsky;
    const Zeta3_AZ2 zeta3;
    const Catalan_Lupas lupas;
    for (const auto& [series, words] : {Case{chudnovsky, 400}, Case{zeta3, 150}, Case{lupas, 40}}) {
        for (const unsigned bits : {1u, 16u}) {
            Counts counts;
            strike_sums(series, make_psr_plan(series, words, 1.0), 150, bits, counts);
            counts.print(bits == 1 ? "one bit" : "sixteen bits");
            EXPECT_EQ(counts.wrong, 0) << bits;
            EXPECT_GT(counts.refused + counts.repaired + counts.noticed, 0) << bits;
        }
    }
}

TEST_F(SeriesFaults, ASectionThatFailsIsSummedOnceMore) {
    const Pi_Chudnovsky series;
    Counts counts;
    strike_sums(series, make_psr_plan(series, 400, 1.0), 60, 200, counts, false);
    counts.print("nodes, 200 bits");
    EXPECT_EQ(counts.wrong, 0);
    EXPECT_GT(counts.repaired, 10);
}

// Sections of truncated floats.
TEST_F(SeriesFaults, NorInSectionsOfTruncatedProducts) {
    const EulerGamma_BM_C series(10);
    const PSRPlan plan = make_psr_plan(series, 100, 1.0);
    ASSERT_TRUE(plan.front().asr);
    Counts counts;
    strike_sums(series, plan, 150, 1, counts);
    counts.print("truncated, one bit");
    EXPECT_EQ(counts.wrong, 0);
    EXPECT_GT(counts.refused + counts.repaired + counts.noticed, 0);
}

}  // namespace
}  // namespace znp
