// Bits flipped in transform images, in twiddle tables and in between: every fault ends in a failed
// convergence or a failed residue, or the result is the right one.
#include <algorithm>
#include <cstdio>
#include <functional>

#include "foundation/exceptions.hpp"
#include "multiply/fft/fft_tables.hpp"
#include "numbers/division.hpp"
#include "numbers/inverse_sqrt.hpp"
#include "numbers/newton_test_support.hpp"
#include "numbers/reciprocal.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::big;
using testing::BigIn;
using testing::console_output;
using testing::dying;
using testing::exact;
using testing::ExactIn;
using testing::FaultyTransform;
using testing::hard_operands;
using testing::ScratchWords;
using testing::Work;
using Fault = FaultyTransform::Fault;

struct Counts {
    int flips = 0, transform = 0, convergence = 0, residue = 0, harmless = 0, wrong = 0;

    void add(const Counts& other) {
        flips += other.flips;
        transform += other.transform;
        convergence += other.convergence;
        residue += other.residue;
        harmless += other.harmless;
        wrong += other.wrong;
    }
    void print(const char* what) const {
        std::printf(
            "%-28s %6d flips: %5d transform's check, %5d convergence, %5d residue, %5d harmless, %d wrong "
            "and unnoticed\n",
            what, flips, transform, convergence, residue, harmless, wrong);
    }
};

// A step's result: false where it failed.
using StepRun = std::function<bool(const transform&, std::vector<c64i>&)>;

std::vector<c64i> result_words(const BigFloat& x) {
    std::vector<c64i> words(x.get_T(), x.get_T() + x.get_L());
    words.push_back(static_cast<c64i>(x.get_exp()));
    return words;
}

// One run with a fault against the words of the run without.
void judge(Counts& counts, const std::vector<c64i>& right,
           const std::function<bool(std::vector<c64i>&)>& run) {
    std::vector<c64i> words;
    bool finished = false, by_transform = false;
    const std::string text = console_output([&] {
        try {
            finished = run(words);
        } catch (const zn_exception& e) {
            by_transform = e.code == error_code::action_1;
            EXPECT_TRUE(by_transform || e.code == error_code::numerical_result) << e.code;
        }
    });
    counts.flips++;
    if (by_transform) {
        EXPECT_NE(text.find(" Redundancy Check Failed:  "), std::string::npos) << text;
        counts.transform++;
    } else if (finished) {
        (words == right ? counts.harmless : counts.wrong)++;
    } else {
        const bool by_residue = text.find("Residue Check Failure") != std::string::npos;
        EXPECT_TRUE(by_residue || text.find("Failure") != std::string::npos ||
                    text.find("resulted in zero") != std::string::npos)
            << text;
        (by_residue ? counts.residue : counts.convergence)++;
    }
}

class NewtonFaults : public ::testing::Test {
  protected:
    // Flips in the images of a step whose transform is `t` with so many forwards and inverses.
    Counts flip_images(const transform& t, int forwards, int inverses, int flips, const StepRun& run) {
        std::vector<c64i> right;
        EXPECT_TRUE(run(t, right));
        Counts counts;
        // The first word of a BKT image is its length, which the algorithm checks by itself.
        const upL_t first = std::string(t.name()) == "BKT" ? 64 : 0;
        for (int i = 0; i < flips; i++) {
            const int step = static_cast<int>(rng() % static_cast<u64_t>(forwards + inverses));
            const upL_t bit = first + rng() % (8 * t.transform_bytes - first);
            judge(counts, right, [&](std::vector<c64i>& words) {
                FaultyTransform faulty(t);
                if (step < forwards) {
                    faulty.arm(Fault::after_forward, step, bit);
                } else {
                    faulty.arm(Fault::before_inverse, step - forwards, bit);
                }
                return run(faulty, words);
            });
        }
        return counts;
    }

    // Flips in the twiddle table in use, which make one product or several wrong.
    Counts flip_tables(const transform& t, int flips, const StepRun& run) {
        std::vector<c64i> right;
        EXPECT_TRUE(run(t, right));
        Counts counts;
        if (std::string(t.name()) != "FFT") return counts;
        // The two levels that stand first serve the transforms of all sizes here.
        auto* const tables = reinterpret_cast<unsigned char*>(
            const_cast<fft::BlockTwiddles*>(testing::all_tables().fft->level[2]));
        constexpr upL_t bytes = (4 + 16) * sizeof(fft::BlockTwiddles);
        for (int i = 0; i < flips; i++) {
            const upL_t byte = rng() % bytes;
            const auto mask = static_cast<unsigned char>(1u << rng() % 8);
            judge(counts, right, [&](std::vector<c64i>& words) {
                tables[byte] ^= mask;
                const auto restore = [&] { tables[byte] ^= mask; };
                try {
                    const bool finished = run(t, words);
                    restore();
                    return finished;
                } catch (...) {
                    restore();
                    throw;
                }
            });
        }
        return counts;
    }

    void inject(const char* what, const transform& t, int forwards, int inverses, const StepRun& run) {
        const Counts images = flip_images(t, forwards, inverses, 260, run);
        const Counts tables = flip_tables(t, 120, run);
        Counts all = images;
        all.add(tables);
        all.print(what);
        EXPECT_EQ(all.wrong, 0);
        EXPECT_GT(all.transform + all.convergence + all.residue, 0);
        total.add(all);
    }

    Counts total;
    std::mt19937_64 rng = testing::make_rng(111);
};

TEST_F(NewtonFaults, Reciprocal) {
    for (const upL_t p : testing::Lengths{20, 49, 100, 260}) {
        const auto words = hard_operands(p + 2, rng).back().words;
        const BigFloat x = big(words, 0);
        const upL_t h = newton::half_precision(p);
        Work work(rcp_work_bytes(p, 1));
        BigIn y0(h + 3), y(p + 3);
        ScratchWords scratch(rcp_scratch_words(p));
        zlp_rcp_B(work.bp(), y0.x, x, h, scratch.get());
        TransformSlot slot;
        inject("reciprocal", make_transform<c64i>(work.bp(), slot, p + 8), 3, 2,
               [&](const transform& t, std::vector<c64i>& result) {
                   rcp_step(work.bp(), t, y.x, x, y0.x.top_words(h), p, scratch.get());
                   result = result_words(y.x);
                   return true;
               });
    }
    EXPECT_GE(total.flips, 1000);
}

TEST_F(NewtonFaults, InverseSqrt) {
    for (const upL_t p : testing::Lengths{20, 51, 100, 260}) {
        const u64_t x = rng() | 2;
        const upL_t h = newton::half_precision(p);
        Work work(invsqrt_work_bytes(p, 1));
        BigIn y0(h + 4), y(p + 4);
        ScratchWords scratch(invsqrt_scratch_words(p));
        ASSERT_EQ(zlp_invsqrt_udw_B(work.bp(), y0.x, x, h, scratch.get()), 0);
        TransformSlot slot;
        inject("inverse square root", make_transform<c64i>(work.bp(), slot, p + 6), 2, 2,
               [&](const transform& t, std::vector<c64i>& result) {
                   invsqrt_step(work.bp(), t, y.x, x, y0.x.top_words(h), p, scratch.get());
                   result = result_words(y.x);
                   return true;
               });
    }
    EXPECT_GE(total.flips, 1000);
}

TEST_F(NewtonFaults, Division) {
    for (const upL_t p : testing::Lengths{20, 48, 100, 260}) {
        const auto a = hard_operands(p + 2, rng).back().words, b = hard_operands(p + 1, rng).back().words;
        const BigFloat A = big(a, 0), B = big(b, 0);
        const upL_t h = newton::half_precision(p);
        Work work(div_work_bytes(p, 1));
        BigIn r(h + 3), Q(p + 3);
        ScratchWords scratch(div_scratch_words(p));
        zlp_rcp_B(work.bp(), r.x, B, h, scratch.get());
        TransformSlot slot;
        inject("division", make_transform<c64i>(work.bp(), slot, p + 9), 4, 2,
               [&](const transform& t, std::vector<c64i>& result) {
                   zlp_div_t9_B(work.bp(), t, Q.x, A, B, r.x.top_words(h), p, scratch.get());
                   result = result_words(Q.x);
                   return true;
               });
    }
    EXPECT_GE(total.flips, 1000);
}

// Exact products carry a residue that is compared with the words afterwards.
TEST_F(NewtonFaults, ExactProducts) {
    Counts counts;
    for (const upL_t L : testing::Lengths{25, 60, 200, 500}) {
        const auto a = testing::random_mantissa(L, rng), b = testing::random_mantissa(L + 3, rng);
        Work work(work_bytes_for<c64i>(2 * L + 3, 1));
        const BasicParameters bp = work.bp();
        TransformSlot slot;
        const transform& t = make_transform<c64i>(bp, slot, 2 * L + 3);
        const WorkAreas areas = t.work_areas(bp.M);
        TransformScratch* const scratch = areas.scratch;
        const upL_t first = std::string(t.name()) == "BKT" ? 64 : 0;
        std::vector<c64i> right = testing::exact_product(a, b);
        if (right.back() == 0) right.pop_back();
        for (int i = 0; i < 300; i++) {
            FaultyTransform faulty(t);
            const upL_t bit = first + rng() % (8 * t.transform_bytes - first);
            if (i % 3 == 2) {
                faulty.arm(Fault::before_inverse, 0, bit);
            } else {
                faulty.arm(Fault::after_forward, i % 3, bit);
            }
            ExactIn T(2 * L + 3);
            ExactFloat::Transform A(exact(a, 0), faulty, areas.T1, scratch);
            const ExactFloat::Transform B(exact(b, 0), faulty, areas.T2, scratch);
            counts.flips++;
            bool by_transform = false;
            console_output([&] {
                try {
                    T.x.set_inverse_fmul(scratch, A, B);
                } catch (const zn_exception& e) {
                    EXPECT_EQ(e.code, error_code::action_1);
                    by_transform = true;
                }
            });
            counts.transform += by_transform;
            if (by_transform) continue;
            const bool same = std::vector<c64i>(T.x.get_T(), T.x.get_T() + T.x.get_L()) == right;
            if (T.x.hash_error() != 0) {
                counts.residue++;
                EXPECT_FALSE(same);
            } else {
                (same ? counts.harmless : counts.wrong)++;
            }
        }
    }
    counts.print("exact products");
    EXPECT_EQ(counts.wrong, 0);
    EXPECT_GT(counts.residue, 0);
}

using NewtonFaultsDeathTest = NewtonFaults;

TEST_F(NewtonFaultsDeathTest, AWrongLengthInAnImageEndsTheProgram) {
    const auto words = hard_operands(22, rng).back().words;
    const BigFloat x = big(words, 0);
    Work work(rcp_work_bytes(20, 1));
    BigIn y0(13), y(23);
    ScratchWords scratch(rcp_scratch_words(20));
    zlp_rcp_B(work.bp(), y0.x, x, 10, scratch.get());
    TransformSlot slot;
    FaultyTransform faulty(make_transform<c64i>(work.bp(), slot, 28));
    faulty.arm(Fault::before_inverse, 0, 40);
    EXPECT_EXIT(dying([&] { rcp_step(work.bp(), faulty, y.x, x, y0.x.top_words(10), 20, scratch.get()); }),
                ::testing::ExitedWithCode(1), "Convolution length is too small");
}

}  // namespace
}  // namespace znp
