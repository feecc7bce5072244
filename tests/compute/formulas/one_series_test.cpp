// In blocks of exactly what the stages promise, without any margin, against golden digits.
#include "compute/formulas/one_series.hpp"

#include <gtest/gtest.h>

#include "compute/engine/engine_run.hpp"
#include "compute/run/computed_run.hpp"
#include "digit_oracle.hpp"
#include "golden.hpp"

namespace znp {
namespace {

template <class Formula>
void check(const std::string& constant, Formula formula) {
    for (const testing::GoldenDecimal& golden : testing::golden_decimal()) {
        if (golden.constant != constant || golden.dec > 10000) continue;
        for (const u64_t threads : testing::threads_to_test) {
            SCOPED_TRACE(constant + " " + std::to_string(golden.dec) +
                         " digits, threads: " + std::to_string(threads));
            testing::EngineRun driver(golden.dec, threads, testing::stages_of(formula));
            driver.carry_out();
            EXPECT_EQ(testing::digit_residue(driver.number, golden.dec), golden.residue);
            EXPECT_EQ(driver.run.heap.active, 1u);
            testing::expect_not_wasteful(driver.bytes, driver.peak_bytes());
        }
    }
}

TEST(OneSeries, Zeta3) {
    check("zeta(3)", [](MemoryEngine& engine) { return zeta3_by_az2(engine); });
    check("zeta(3)", [](MemoryEngine& engine) { return zeta3_by_az1(engine); });
}

TEST(OneSeries, Catalan) {
    check("catalan", [](MemoryEngine& engine) { return catalan_by_lupas(engine); });
    check("catalan", [](MemoryEngine& engine) { return catalan_by_huvent(engine); });
}

TEST(OneSeries, ArcCoth) {
    check("arccoth:2", [](MemoryEngine& engine) { return arccoth(engine, 2); });
    check("arccoth:4294967295", [](MemoryEngine& engine) { return arccoth(engine, 4294967295); });
}

// The smallest and the largest arguments, and some between: one whose powers are shifts, too.
TEST(OneSeries, ArcCothAgainstTheSumOfItsTerms) {
    for (const u64_t n : {2u, 3u, 10u, 65536u, 4294967295u}) {
        for (const u64_t dec : {100u, 1000u, 4321u, 20'000u}) {
            testing::DigitOracle oracle(dec);
            const std::string expected = oracle.arccoth(n).text(dec);
            const std::string hexadecimal = oracle.text(hex_digits_for(dec), 16);
            for (const u64_t threads : {1u, 2u, 3u}) {
                SCOPED_TRACE(std::to_string(n) + ": " + std::to_string(dec) +
                             " digits, threads: " + std::to_string(threads));
                ComputeParameters settings =
                    testing::settings_for({{"", constant_id::arccoth, n, 1}, 0}, dec, threads);
                const testing::ComputedRun result = testing::compute(settings);
                EXPECT_EQ(result.decimal, expected);
                EXPECT_EQ(result.hexadecimal, hexadecimal);
            }
        }
    }
}

TEST(OneSeries, Lemniscate) {
    check("lemniscate", [](MemoryEngine& engine) { return lemniscate_by_gauss(engine); });
    check("lemniscate", [](MemoryEngine& engine) { return lemniscate_by_sebah(engine); });
}

// ---- What they tell

const std::vector<std::string> series_events{"Summing Series", "Finishing Series", "Division"};

template <class Formula>
void expect_told(Formula formula, const std::vector<std::string>& texts,
                 const std::vector<std::string>& events) {
    testing::EngineRun driver(1000, 1, testing::stages_of(formula));
    driver.carry_out();
    EXPECT_TRUE(testing::texts_in_order(driver.printed, texts)) << driver.printed;
    EXPECT_EQ(driver.events(), events);
}

TEST(OneSeries, LinesOfASeries) {
    const std::vector<std::string> lines{"Summing Series...  ", " terms\n",    "Summing: ", "Time:    ",
                                         "Division...\n",       "Iterating: ", "Time:    "};
    expect_told([](MemoryEngine& engine) { return arccoth(engine, 10); }, lines, series_events);
    expect_told([](MemoryEngine& engine) { return zeta3_by_az2(engine); }, lines, series_events);
    expect_told([](MemoryEngine& engine) { return zeta3_by_az1(engine); }, lines, series_events);
    expect_told([](MemoryEngine& engine) { return catalan_by_lupas(engine); }, lines, series_events);
    expect_told([](MemoryEngine& engine) { return catalan_by_huvent(engine); }, lines, series_events);
}

template <class Formula>
void expect_two_terms(Formula formula, const std::string& first, const std::string& second) {
    std::vector<std::string> events{first};
    events.insert(events.end(), series_events.begin(), series_events.end());
    events.push_back(second);
    events.insert(events.end(), series_events.begin(), series_events.end());
    expect_told(formula,
                {first + "\nSumming Series...  ", "Division...\n",
                 "Time:    ", "\n\n" + second + "\nSumming Series...  ", "Division...\n", "Time:    "},
                events);
}

TEST(OneSeries, LinesOfTheLemniscateConstantsTerms) {
    expect_two_terms([](MemoryEngine& engine) { return lemniscate_by_gauss(engine); },
                     "8 * ArcSinlemn( 1 / 2 )", "4 * ArcSinlemn( 7 / 23 )");
    expect_two_terms([](MemoryEngine& engine) { return lemniscate_by_sebah(engine); },
                     "8 * ArcSinlemn( 2 / 3 )", "-4 * ArcSinlemn( 7 / 137 )");
}

// The line that closes a formula has the constant's name, but for the shorter one of Huvent's.
TEST(OneSeries, ClosingNames) {
    const struct {
        testing::ComputedAlgorithm what;
        const char* name;
    } cases[] = {{{{"", constant_id::arccoth, 10, 1}, 0}, "ArcCoth"},
                 {{{"", constant_id::zeta3, 0, 2}, 0}, "Zeta(3) - Apery's Constant"},
                 {{{"", constant_id::zeta3, 0, 2}, 1}, "Zeta(3) - Apery's Constant"},
                 {{{"", constant_id::lemniscate, 0, 2}, 0}, "Lemniscate"},
                 {{{"", constant_id::lemniscate, 0, 2}, 1}, "Lemniscate"},
                 {{{"", constant_id::catalan, 0, 2}, 0}, "Catalan's Constant"},
                 {{{"", constant_id::catalan, 0, 2}, 1}, "Catalan"},
                 {{{"", constant_id::euler_gamma, 0, 2}, 0}, "Euler-Mascheroni Constant"},
                 {{{"", constant_id::euler_gamma, 0, 2}, 1}, "Euler-Mascheroni Constant"}};
    for (const auto& [what, name] : cases) {
        ComputeParameters settings = testing::settings_for(what, 100, 1);
        const std::string output = testing::compute(settings).output;
        EXPECT_NE(output.find("\n" + testing::sent::G + name + testing::sent::W + "  :  "), std::string::npos)
            << output;
    }
}

}  // namespace
}  // namespace znp
