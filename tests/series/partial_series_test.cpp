// Plans of sections and sums by them, against exact sums.
#include "series/partial_series.hpp"

#include <algorithm>
#include <cctype>
#include <memory>
#include <new>

#include "console_capture.hpp"
#include "foundation/event_log.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/fail.hpp"
#include "series/euler_gamma_ab.hpp"
#include "series/series_test_support.hpp"

namespace znp {
namespace {

using testing::agreement;
using testing::exact_sum;
using testing::Fraction;
using testing::GuardedSum;
using testing::SmallSeries;

Fraction exact(const zl_BSS& series, u64_t a, u64_t b) {
    if (const auto* type0 = dynamic_cast<const zl_BSS_P2B3_Type0*>(&series)) {
        return exact_sum(*type0, a, b).fraction();
    }
    if (const auto* bbp = dynamic_cast<const zl_BSS_P2B2_BBP*>(&series)) return exact_sum(*bbp, a, b);
    return exact_sum(dynamic_cast<const Series_E_Taylor&>(series), a, b);
}

struct Named {
    const char* name;
    std::shared_ptr<const zl_BSS> series;
    upL_t longest;  // words of precision that a test can afford
};

std::vector<Named> catalogue() {
    return {{"Chudnovsky", std::make_shared<Pi_Chudnovsky>(), 600},
            {"Ramanujan", std::make_shared<Pi_Ramanujan>(), 400},
            {"ArcCoth 2", std::make_shared<ArcCoth>(2), 100},
            {"ArcCoth 4294967295", std::make_shared<ArcCoth>(4294967295), 600},
            {"Zeta(3) 1", std::make_shared<Zeta3_AZ1>(), 150},
            {"Zeta(3) 2", std::make_shared<Zeta3_AZ2>(), 300},
            {"ArcSinlemn 1/2", std::make_shared<ArcSinlemn>(1, 2), 200},
            {"ArcSinlemn 7/137", std::make_shared<ArcSinlemn>(7, 137), 300},
            {"Lupas", std::make_shared<Catalan_Lupas>(), 40},
            {"Huvent", std::make_shared<Catalan_Huvent>(), 40},
            {"C of Euler's constant", std::make_shared<EulerGamma_BM_C>(9), 40},
            {"e", std::make_shared<Series_E_Taylor>(false), 500},
            {"1/e", std::make_shared<Series_E_Taylor>(true), 500},
            {"small terms", std::make_shared<SmallSeries>(false), 100},
            {"small terms, alternating", std::make_shared<SmallSeries>(true), 400}};
}

constexpr u64_t thread_counts[] = {1, 2, 3, 7, 16};

// ---- The plan

TEST(SectionPlan, RowsFollowEachOtherAndEndWithTheSeries) {
    for (const auto& [name, series, longest] : catalogue()) {
        SCOPED_TRACE(name);
        for (const double ratio : {1.0, 0.5}) {
            for (const upL_t p : {upL_t{0}, upL_t{1}, upL_t{10}, longest}) {
                const PSRPlan plan = make_psr_plan(*series, p, ratio);
                const u64_t n = series->terms(p);
                ASSERT_FALSE(plan.empty());
                EXPECT_EQ(plan.front().a, 0u);
                EXPECT_EQ(plan.back().b, n);
                EXPECT_EQ(plan.back().next_precision, 0u);
                for (upL_t i = 0; i < plan.size(); i++) {
                    const SectionRow& row = plan[i];
                    EXPECT_LT(row.a, row.b);
                    EXPECT_EQ(row.length, series->words_of(row.a, row.b));
                    EXPECT_EQ(row.precision,
                              static_cast<upL_t>(series->precision_of(row.a, n) * words_per_nat + 2));
                    if (i + 1 == plan.size()) break;
                    EXPECT_EQ(row.b, plan[i + 1].a);
                    EXPECT_EQ(row.next_precision, plan[i + 1].precision);
                    if (!row.asr) {
                        EXPECT_EQ(row.b, series->section_end(row.a, n,
                                                             static_cast<double>(p) * ratio * nats_per_word));
                    }
                }
            }
        }
    }
}

TEST(SectionPlan, TheLastSectionIsShortAndNotLongerThanTheFirst) {
    const Pi_Chudnovsky series;
    for (const upL_t p : {100u, 1000u, 10000u}) {
        const PSRPlan plan = make_psr_plan(series, p, 1.0);
        const SectionRow& last = plan.back();
        EXPECT_LE(last.b - last.a, 1000u);
        EXPECT_LE(last.length, plan.front().length);
        EXPECT_GT(plan.size(), 1u);
    }
}

TEST(SectionPlan, SectionsOfHalfTheRatioAreShorter) {
    const Catalan_Lupas series;
    const PSRPlan whole = make_psr_plan(series, 100, 1.0);
    const PSRPlan half = make_psr_plan(series, 100, 0.5);
    EXPECT_GT(half.size(), whole.size());
    EXPECT_LT(half.front().length, whole.front().length);
    EXPECT_LE(half.front().length, 55u);
}

TEST(SectionPlan, OnlyASeriesWithPrecisionAtAnIndexIsTruncated) {
    for (const SectionRow& row : make_psr_plan(Pi_Chudnovsky(), 500, 1.0, 1 << 20)) EXPECT_FALSE(row.asr);

    const EulerGamma_BM_C series(12);
    const PSRPlan plan = make_psr_plan(series, 300, 1.0);
    EXPECT_TRUE(plan.front().asr);
    EXPECT_FALSE(plan.back().asr);
    for (const SectionRow& row : plan) {
        if (row.asr) {
            EXPECT_LE(row.length, plan.front().length + 3);
        }
    }
}

TEST(SectionPlan, AMemoryLimitHoldsTruncationBackUntilARowFits) {
    const EulerGamma_BM_C series(12);
    EXPECT_FALSE(make_psr_plan(series, 300, 1.0, 1).front().asr);

    const PSRPlan exact_plan = make_psr_plan(series, 300, 1.0, 1);
    ASSERT_GT(exact_plan.size(), 3u);
    const SectionRow& second = exact_plan[1];
    const MemoryPlan need = series.memory_plan(second.length, 1, 1);
    const upL_t bytes = 16 * second.precision + need.bytes + 40 * need.words;
    EXPECT_TRUE(make_psr_plan(series, 300, 1.0, bytes + 1)[1].asr);
    EXPECT_FALSE(make_psr_plan(series, 300, 1.0, bytes + 1)[0].asr);
    EXPECT_FALSE(make_psr_plan(series, 300, 1.0, bytes)[1].asr);
}

TEST(SectionPlan, ThePlanIsPrintedAsATable) {
    const PSRPlan plan = {{300, 230, 200, 0, 400, true}, {200, 12345678901, 0, 400, 1600, false}};
    const std::string printed = testing::console_output([&] { print_psr_plan(plan); });
    EXPECT_NE(printed.find("   #         Precision                 b             Terms  ASR\n"),
              std::string::npos);
    EXPECT_NE(printed.find("   0               300               400               400  yes   75%\n"),
              std::string::npos)
        << printed;
    EXPECT_NE(printed.find("   1               200              1600              1200   no    0%\n"),
              std::string::npos);
}

// ---- Sums

TEST(PartialSeries, SumsByPlansOfManyRowsInTheirPromisedBuffers) {
    for (const auto& [name, series, longest] : catalogue()) {
        SCOPED_TRACE(name);
        for (const upL_t p : {upL_t{0}, upL_t{1}, upL_t{2}, upL_t{7}, upL_t{20}, longest}) {
            const Fraction sum = exact(*series, 0, series->terms(p));
            for (const u64_t threads : thread_counts) {
                for (const double ratio : {1.0, 0.5}) {
                    const GuardedSum result(*series, make_psr_plan(*series, p, ratio, 0, threads), threads);
                    EXPECT_GE(agreement(result.fraction(), sum), 64 * static_cast<double>(p) + 48)
                        << p << " words, " << threads << " threads, ratio " << ratio;
                }
            }
        }
    }
}

TEST(PartialSeries, OneRowIsOneExactRecursion) {
    for (const auto& [name, series, longest] : catalogue()) {
        SCOPED_TRACE(name);
        const u64_t n = std::min<u64_t>(series->terms(longest), 2500);
        for (const auto& [a, b] : {std::pair<u64_t, u64_t>{0, 1}, {0, 2}, {1, n}, {n / 2, n}}) {
            const PSRPlan plan = make_single_section(*series, a, b);
            ASSERT_EQ(plan.size(), 1u);
            const Fraction sum = exact(*series, a, b);
            for (const u64_t threads : thread_counts) {
                const Fraction result = GuardedSum(*series, plan, threads).fraction();
                EXPECT_TRUE(result.p * sum.q == result.q * sum.p) << a << ' ' << b << ", " << threads;
            }
        }
    }
}

// Products beyond the floating-point transform, in sections and in the merges with the sum on their right.
TEST(PartialSeries, LongSumsInTheirPromisedBuffers) {
    const Pi_Chudnovsky series;
    constexpr upL_t p = 9000;
    const Fraction sum = exact_sum(series, 0, series.terms(p)).fraction();
    for (const u64_t threads : {1u, 3u, 16u}) {
        const GuardedSum result(series, make_psr_plan(series, p, 1.0, 0, threads), threads, nullptr, nullptr,
                                testing::tables_up_to<64 * 4 * p>());
        EXPECT_GE(agreement(result.fraction(), sum), 64 * static_cast<double>(p) + 48) << threads;
    }
}

// Where terms are long the halves, the numbers above Q and the end routines need the most beside the size
// functions' account.
TEST(PartialSeries, RangesOfLateTermsFitTheirPromisedBuffers) {
    for (const auto& [name, series, longest] : catalogue()) {
        SCOPED_TRACE(name);
        if (std::string(name) == "C of Euler's constant") continue;  // ends where its terms are smallest
        for (const u64_t a : {u64_t{1000}, u64_t{1} << 20, u64_t{1000000000000}}) {
            if (dynamic_cast<const zl_BSS_P2B2_BBP*>(series.get()) != nullptr && a > u64_t{1} << 20) continue;
            for (const u64_t terms : {1u, 8u, 15u, 31u, 101u}) {
                const Fraction sum = exact(*series, a, a + terms);
                for (const u64_t threads : {1u, 3u}) {
                    const Fraction result =
                        GuardedSum(*series, make_single_section(*series, a, a + terms), threads).fraction();
                    EXPECT_TRUE(result.p * sum.q == result.q * sum.p) << a << " + " << terms;
                }
            }
        }
    }
}

TEST(PartialSeries, AlternatingSumsCountTheirFirstTermPositive) {
    const SmallSeries plus(false), minus(true);
    for (const u64_t b : {1u, 2u, 3u, 50u, 1001u}) {
        const GuardedSum sum(minus, make_single_section(minus, 0, b), 2);
        EXPECT_EQ(sum.P().get_sign(), 1);
        EXPECT_EQ(sum.Q().get_sign(), 1);
        EXPECT_EQ(agreement(sum.fraction(), exact_sum(minus, 0, b).fraction()), INFINITY);
        if (b > 1) {
            EXPECT_LT(agreement(sum.fraction(), exact_sum(plus, 0, b).fraction()), 3);
        }
    }
}

TEST(PartialSeries, TruncatedProductsKeepThePrecisionThatIsAskedFor) {
    for (const u32_t m : {6u, 10u, 12u}) {
        const EulerGamma_BM_C series(m);
        for (const upL_t p : {1u, 5u, 30u, 100u, 300u}) {
            const u64_t n = series.terms(p);
            if (n > 4000) continue;
            const double needed =
                std::min(64 * static_cast<double>(p), series.precision_of(0, n) / std::log(2) - 64);
            const Fraction sum = exact_sum(series, 0, n).fraction();
            for (const u64_t threads : thread_counts) {
                const PSRPlan plan = make_psr_plan(series, p, 1.0, 0, threads);
                EXPECT_TRUE(plan.front().asr);
                EXPECT_GE(agreement(GuardedSum(series, plan, threads).fraction(), sum), needed)
                    << m << ' ' << p << ", " << threads;
            }
        }
    }
}

// Small terms, with the words that stand right of an index.
class TruncatedSeries final : public SmallSeries {
  public:
    explicit TruncatedSeries(bool alternating_) : SmallSeries(alternating_) {}
    bool can_be_truncated() const override { return true; }
    upL_t PrecisionAtIndex(u64_t a, u64_t b) const override {
        return static_cast<upL_t>(precision_of(a, b) * words_per_nat + 2);
    }
};

TEST(PartialSeries, TruncatedSectionsForkAndAlternate) {
    for (const bool alternating : {false, true}) {
        const TruncatedSeries series(alternating);
        const u64_t n = series.terms(400);
        const Fraction sum = exact_sum(series, 0, n).fraction();
        for (const u64_t threads : thread_counts) {
            const PSRPlan plan = make_psr_plan(series, 400, 1.0, 0, threads);
            ASSERT_TRUE(plan.front().asr && plan.front().b >= 1000);
            EXPECT_GE(agreement(GuardedSum(series, plan, threads).fraction(), sum), 64 * 400.0);

            PSRPlan one = make_single_section(series, 0, n);
            one.front().asr = true;
            EXPECT_GE(agreement(GuardedSum(series, one, threads).fraction(), sum), 64 * 400.0);
        }
    }
}

TEST(PartialSeries, AClassWithThreeResultsIsRefused) {
    testing::console_output([] {
        const Series_EulerGamma_BM_AB series(6);
        const PSRPlan plan = make_ab_plan(series, 5, 1.0);
        testing::caught<zn_exception>([&] { GuardedSum(series, plan, 1); });
    });
}

// ---- Buffers that are too small

TEST(PartialSeries, AWorkBufferThatIsTooShortThrows) {
    const Pi_Chudnovsky series;
    const PSRPlan plan = make_psr_plan(series, 500, 1.0);
    const SumSizes sizes = sum_sizes(series, plan, 1);
    testing::BigIn P(sizes.P), Q(sizes.Q);
    testing::GuardedWords<cdi> nodes(sizes.nodes);
    testing::Work work(2000);
    EventLog log;
    testing::console_output([&] {
        const auto e = testing::caught<BufferTooSmallException>(
            [&] { B_PSR(work.bp(), series, plan, P.x, Q.x, nodes.data(), &log, nullptr); });
        EXPECT_STREQ(e.location, "TransformHelper::TransformHelper()");
    });
    EXPECT_NE(log.text().find("\tBSR Merge Failure: "), std::string::npos);
}

// ---- Failures inside a section

// Its end routine throws at an index: an exception of the family, or another one.
class FailingSeries final : public SmallSeries {
  public:
    enum class Throws { in_the_family, outside };
    FailingSeries(u64_t at, Throws how) : SmallSeries(true), at_(at), how_(how) {}
    void BSR_End(BasicIntR& P, BasicIntR& Q, BasicIntR& R, BasicIntR& t0, BasicIntR& t1, u64_t a,
                 u64_t b) const override {
        if (b == at_ && how_ == Throws::outside) throw std::bad_alloc();
        if (b == at_) fail(zn_exception(77, nullptr, {}, {}, action::throw_silently));
        SmallSeries::BSR_End(P, Q, R, t0, t1, a, b);
    }

  private:
    u64_t at_;
    Throws how_;
};

std::string failure_line(const SectionRow& row) {
    return "\tBSR Merge Failure: " + std::to_string(row.a) + " : " + std::to_string(row.b) + "\r\n";
}

TEST(PartialSeries, AFailureInsideASectionLeavesTheRangeOfTheSectionInTheLog) {
    const PSRPlan plan = make_psr_plan(SmallSeries(true), 400, 1.0);
    ASSERT_GT(plan.size(), 2u);
    for (const SectionRow& row : {plan.front(), plan[1], plan.back()}) {
        for (const u64_t at : {row.a + 1, row.b}) {
            for (const u64_t threads : {1u, 3u}) {
                EventLog log;
                testing::console_output([&] {
                    const FailingSeries series(at, FailingSeries::Throws::in_the_family);
                    const auto e = testing::caught<zn_exception>(
                        [&] { GuardedSum(series, make_psr_plan(series, 400, 1.0), threads, &log); });
                    EXPECT_EQ(e.code, 77);
                });
                EXPECT_TRUE(log.text().ends_with(failure_line(row))) << log.text();
                EXPECT_EQ(std::ranges::count(log.text(), '\n'), 1);
            }
        }
        EventLog log;
        const FailingSeries series(row.b, FailingSeries::Throws::outside);
        EXPECT_THROW(GuardedSum(series, plan, 1, &log), std::bad_alloc);
        EXPECT_NE(log.text().find(failure_line(row)), std::string::npos);
        EXPECT_THROW(GuardedSum(series, plan, 1), std::bad_alloc);  // no log is kept
    }
}

// ---- Checks

struct Failure {
    std::string text, printed, log;
};

Failure failed_check(const zl_BSS& series, const PSRPlan& plan, u64_t threads) {
    Failure failure;
    EventLog log;
    failure.printed = testing::console_output([&] {
        failure.text =
            testing::caught<zl_BSRModularCheckFailed>([&] { GuardedSum(series, plan, threads, &log); }).text;
    });
    failure.log = log.text();
    return failure;
}

bool zero_line(const std::string& text, const char* name) {
    return text.find(std::string("\n") + name + " = 0\n") != std::string::npos;
}

TEST(PartialSeries, AWordFlippedInASectionRaisesTheCheckWithItsText) {
    const SmallSeries plain(false);
    const PSRPlan plan = make_psr_plan(plain, 100, 1.0);
    ASSERT_GT(plan.size(), 2u);
    for (const upL_t i : {upL_t{0}, upL_t{1}, plan.size() - 1}) {
        const SectionRow& row = plan[i];
        const bool last = i + 1 == plan.size();
        for (const u64_t index : {row.a + 1, (row.a + row.b) / 2, row.b}) {
            for (const int object : {0, 1, 2}) {
                // R of the last range's right edge enters nothing.
                if (object == 2 && index == plan.back().b) continue;
                const SmallSeries series(false, {index, object});
                for (const u64_t threads : {1u, 3u}) {
                    const Failure failure = failed_check(series, plan, threads);
                    const std::string head =
                        "Modular Redundancy Check Failed:\na = " + std::to_string(row.a) +
                        "\nb = " + std::to_string(row.b) + "\nhashA = ";
                    EXPECT_EQ(failure.text.substr(0, head.size()), head);
                    EXPECT_NE(failure.printed.find(failure.text), std::string::npos);
                    EXPECT_NE(failure.log.find("Modular Redundancy Check Failed: " + std::to_string(row.a) +
                                               " - " + std::to_string(row.b)),
                              std::string::npos);
                    EXPECT_EQ(failure.log.find("BSR Merge Failure"), std::string::npos);
                    EXPECT_EQ(failure.text.find("\nhashC = ") == std::string::npos, last);
                    EXPECT_EQ(zero_line(failure.text, "hashB"), object != 1);
                    if (!last) {
                        EXPECT_EQ(zero_line(failure.text, "hashC"), object != 2);
                    }
                }
            }
        }
    }
}

class FlippedBBP final : public zl_BSS_P2B2_BBP {
  public:
    explicit FlippedBBP(u64_t index) : zl_BSS_P2B2_BBP(true, 60, 2), index_(index) {}
    u64_t terms(upL_t words) const override { return huvent_.terms(words); }
    double size_at(double x) const override { return huvent_.size_at(x); }
    double precision_of(u64_t a, u64_t b) const override { return huvent_.precision_of(a, b); }
    void BSR_End(ExactFloatR& P, ExactFloatR& Q, u64_t k) const override {
        huvent_.BSR_End(P, Q, k);
        if (k == index_) *Q.word_ptr(1) ^= 4;
    }

  private:
    Catalan_Huvent huvent_;
    u64_t index_;
};

TEST(PartialSeries, AWordFlippedInASeriesOfFractionsRaisesTheCheck) {
    const FlippedBBP series(3);
    const Failure failure = failed_check(series, make_single_section(series, 0, 20), 1);
    EXPECT_EQ(failure.text.find("Modular Redundancy Check Failed:\na = 0\nb = 20\nhashA = "), 0u);
    EXPECT_EQ(failure.text.find("\nhashC = "), std::string::npos);
    EXPECT_FALSE(zero_line(failure.text, "hashB"));
}

TEST(PartialSeries, ASumThatIsRightPrintsAndLogsNothing) {
    EventLog log;
    const std::string before = log.text();
    const Pi_Chudnovsky series;
    EXPECT_EQ(testing::console_output([&] { GuardedSum(series, make_psr_plan(series, 300, 1.0), 2, &log); }),
              "");
    EXPECT_EQ(log.text(), before);
}

// ---- The status line

// The percentages in the order in which they were drawn.
std::vector<double> percentages(const std::string& printed) {
    std::vector<double> all;
    for (std::size_t at = printed.find('%'); at != std::string::npos; at = printed.find('%', at + 1)) {
        std::size_t start = at;
        while (start > 0 && (std::isdigit(printed[start - 1]) != 0 || printed[start - 1] == '.')) start--;
        all.push_back(std::stod(printed.substr(start, at - start)));
    }
    return all;
}

TEST(PartialSeries, TheStatusLineMovesWhileTheSumIsMade) {
    const SmallSeries series(true);
    for (const u64_t threads : {1u, 2u}) {
        const PSRPlan plan = make_psr_plan(series, 400, 1.0);
        const std::string printed = testing::console_output([&] {
            StatusLine status(79, 0);
            status.set_label("Summing: ");
            GuardedSum(series, plan, threads, nullptr, &status);
        });
        EXPECT_NE(printed.find("Summing: "), std::string::npos);
        EXPECT_NE(printed.find("Series: 0"), std::string::npos);
        EXPECT_NE(printed.find(" -> "), std::string::npos);
        const std::vector<double> shown = percentages(printed);
        ASSERT_GT(shown.size(), plan.size());
        EXPECT_TRUE(std::is_sorted(shown.begin(), shown.end()));
        EXPECT_LT(shown.front(), 30);
        EXPECT_GT(shown.back(), 90);
    }
}

TEST(PartialSeries, AStatusLineThatIsNotDueIsNotDrawn) {
    const SmallSeries series(true);
    const std::string printed = testing::console_output([&] {
        StatusLine status(79, 3600);
        status.restart();
        GuardedSum(series, make_psr_plan(series, 400, 1.0), 1, nullptr, &status);
    });
    EXPECT_EQ(printed, "");
}

}  // namespace
}  // namespace znp
