#include "series/partial_series.hpp"

#include "series/catalogue.hpp"
#include "series/series_test_support.hpp"

namespace znp {
namespace {

using testing::agreement;
using testing::Fraction;
using testing::GuardedSum;
using testing::Integer;

Fraction exact_pi(u64_t a, u64_t b) {
    Integer P(0), Q(1), R(1);
    bool negative = false;
    for (u64_t k = a + 1; k <= b; k++) {
        const s64_t s = static_cast<s64_t>(k);
        const Integer r = Integer(6 * s - 5) * Integer(2 * s - 1) * Integer(6 * s - 1);
        const Integer q = Integer(10939058860032000) * Integer(s) * Integer(s) * Integer(s);
        R = R * r;
        Integer t = R * (Integer(545140134) * Integer(s) + Integer(13591409));
        P = P * q;
        P = negative ? P - t : P + t;
        Q = Q * q;
        negative = !negative;
    }
    return {P, Q};
}

TEST(PartialSeries, SumsOfChudnovskyInTheirPromisedBuffers) {
    const Pi_Chudnovsky series;
    for (const upL_t p : {0u, 1u, 2u, 5u, 10u, 20u, 52u, 100u, 520u, 2600u}) {
        for (const u64_t threads : {1u, 2u, 3u, 7u, 16u}) {
            for (double ratio : {1.0, 0.5}) {
                const PSRPlan plan = make_psr_plan(series, p, ratio, 0, threads);
                const GuardedSum sum(series, plan, threads);
                EXPECT_GE(agreement(sum.fraction(), exact_pi(0, plan.back().b)),
                          64.0 * static_cast<double>(p + 1))
                    << p << " words, " << threads << " threads, ratio " << ratio;
            }
        }
    }
}

}  // namespace
}  // namespace znp
