// The recursion over terms: forks, signs, memory, exact results at every division.
#include "series/recursion.hpp"

#include "console_capture.hpp"
#include "foundation/fail.hpp"
#include "foundation/thread_counter.hpp"
#include "series/classes/type0.hpp"
#include "series/series_test_support.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::exact_sum;
using testing::ExactSum;
using testing::GuardedWords;
using testing::Integer;
using testing::SmallSeries;
using testing::ThreadCounter;
using testing::value;
using testing::Work;

// P, Q, R of a range in buffers of exactly what a memory plan gives.
class RangeSum {
  public:
    RangeSum(const zl_BSS_P2B3_Type0& series, u64_t a, u64_t b, u64_t level, u64_t threads,
             const MemoryPlan& plan)
        : buffers_{GuardedWords<cdi>(plan.words), GuardedWords<cdi>(plan.words),
                   GuardedWords<cdi>(plan.words), GuardedWords<cdi>(plan.words)} {
        upL_t i = 0;
        for (ExactFloatR* x : Type0Rules::Node::all(node)) x->set_base(buffers_[i++].data(), plan.words);
        Work work(plan.bytes);
        BasicParameters bp = work.bp();
        bp.tds = threads;
        sum_range(bp, Type0Rules{series, true}, node, a, b, level, RecursionProgress());
    }
    bool is(const ExactSum& sum) const {
        return value(node.P, 0) == sum.P && value(node.Q, 0) == sum.Q && value(node.R, 0) == sum.R;
    }

    Type0Rules::Node node;

  private:
    std::array<GuardedWords<cdi>, 4> buffers_;
};

RangeSum sum_of(const zl_BSS_P2B3_Type0& series, u64_t a, u64_t b, u64_t level, u64_t threads) {
    const upL_t L = series.words_of(a, b);
    const MemoryPlan plan =
        level > 0 ? level_memory_plan(L, series.memory_overhead, level, threads)
                  : parallel_memory_plan(L, series.memory_overhead, range_tasks(threads), threads);
    return RangeSum(series, a, b, level, threads, plan);
}

int forks(u64_t terms, u64_t threads) {
    const SmallSeries series(true);
    const ThreadCounter counter;
    const RangeSum sum = sum_of(series, 5, 5 + terms, 0, threads);
    EXPECT_TRUE(sum.is(exact_sum(series, 5, 5 + terms)));
    return counter.created();
}

TEST(Recursion, ARangeOf1000TermsForksAndOneOf999DoesNot) {
    EXPECT_EQ(forks(999, 2), 0);
    EXPECT_EQ(forks(1000, 2), 1);
    EXPECT_EQ(forks(1000, 16), 1);
}

TEST(Recursion, OneThreadNeverForks) {
    EXPECT_EQ(forks(1000, 1), 0);
    EXPECT_EQ(forks(5000, 1), 0);
}

TEST(Recursion, TwiceTheThreadsAreForked) {
    EXPECT_EQ(forks(9000, 2), 3);  // four tasks
    EXPECT_EQ(forks(9000, 3), 5);  // six: three and three, each two and one
}

TEST(Recursion, EqualParitiesAddAndDifferentOnesSubtract) {
    const SmallSeries plain(false), alternating(true);
    EXPECT_FALSE(plain.subtracts(3, 8));
    EXPECT_FALSE(alternating.subtracts(3, 7));
    EXPECT_FALSE(alternating.subtracts(4, 8));
    EXPECT_TRUE(alternating.subtracts(3, 8));
    EXPECT_TRUE(alternating.subtracts(4, 7));
}

TEST(Recursion, SumsAreExactForEveryLengthUpToAFewLevels) {
    for (const bool alternating : {false, true}) {
        const SmallSeries series(alternating);
        for (u64_t a = 0; a < 3; a++) {
            for (u64_t b = a + 1; b < a + 140; b++) {
                EXPECT_TRUE(sum_of(series, a, b, 0, 1).is(exact_sum(series, a, b))) << a << ' ' << b;
            }
        }
    }
}

TEST(Recursion, SumsAreExactOnManyThreadsAndLevels) {
    auto rng = testing::make_rng(312);
    for (const u64_t threads : {1u, 2u, 3u, 7u, 16u}) {
        for (const u64_t level : {0u, 1u, 3u}) {
            const SmallSeries series(rng() % 2 == 0);
            const u64_t a = rng() % 1000;
            const u64_t b = a + 1000 + rng() % 9000;
            EXPECT_TRUE(sum_of(series, a, b, level, threads).is(exact_sum(series, a, b)))
                << a << ' ' << b << ", " << threads << " threads, " << level << " levels";
        }
    }
}

// Terms that do not shrink at all, in sums that are just above one: the left half of an odd count of terms
// stays below one, and the right half, with a term more, reaches above it by a word.
class FlatSeries final : public zl_BSS_P2B3_Type0 {
  public:
    explicit FlatSeries(u64_t terms) : zl_BSS_P2B3_Type0(false, 12, 8), terms_(terms) {}
    u64_t terms(upL_t) const override { return terms_; }
    double size_at(double x) const override { return x * nats_per_word; }
    double precision_of(u64_t, u64_t) const override { return 0; }
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override {
        if (b - a != 1) return terms::end_recursion(*this, P, Q, R, t0, t1, a, b);
        P.set_uW(~cdi{0} / terms_ * 2);
        Q.set_uW(~cdi{0});
        R.set_uW(~cdi{0});
    }

  private:
    u64_t terms_;
};

TEST(Recursion, ARightHalfMayReachAboveTheLeftOne) {
    for (const u64_t terms : {9u, 15u, 17u, 61u, 63u, 99u}) {
        const FlatSeries series(terms);
        const u64_t m = terms / 2;
        const ExactSum left = exact_sum(series, 0, m);
        const ExactSum right = exact_sum(series, m, terms);
        ASSERT_LT((left.P * right.Q).log2(), 64.0 * static_cast<double>(terms));
        ASSERT_GT((left.R * right.P).log2(), 64.0 * static_cast<double>(terms));
        EXPECT_TRUE(sum_of(series, 0, terms, 0, 1).is(exact_sum(series, 0, terms))) << terms;
    }
}

TEST(Recursion, LastRangesLeaveOutTheirR) {
    const SmallSeries series(true);
    for (const u64_t b : {8u, 50u, 700u}) {
        const ExactSum sum = exact_sum(series, 0, b);
        const MemoryPlan plan = serial_memory_plan(series.words_of(0, b), series.memory_overhead);
        std::vector<cdi> words(4 * plan.words);
        Type0Rules::Node node;
        cdi* at = words.data();
        for (ExactFloatR* x : Type0Rules::Node::all(node)) {
            x->set_base(at, plan.words);
            at += plan.words;
        }
        Work work(plan.bytes);
        sum_range(work.bp(), Type0Rules{series, false}, node, 0, b, 0, RecursionProgress());
        EXPECT_TRUE(value(node.P, 0) == sum.P);
        EXPECT_TRUE(value(node.Q, 0) == sum.Q);
    }
}

// A failure on a thread of a fork reaches the caller.
class FailingSeries final : public SmallSeries {
  public:
    explicit FailingSeries(u64_t at) : SmallSeries(false), at_(at) {}
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override {
        if (b == at_) fail(zn_exception(77, nullptr, {}, {}, action::throw_silently));
        SmallSeries::BSR_End(P, Q, R, t0, t1, a, b);
    }

  private:
    u64_t at_;
};

TEST(Recursion, AFailureOnAnyThreadReachesTheCaller) {
    for (const u64_t at : {1u, 4000u}) {  // in the leftmost and the rightmost task
        testing::console_output([&] {
            const FailingSeries series(at);
            const auto e = testing::caught<zn_exception>([&] { sum_of(series, 0, 4000, 0, 2); });
            EXPECT_EQ(e.code, 77);
        });
    }
}

}  // namespace
}  // namespace znp
