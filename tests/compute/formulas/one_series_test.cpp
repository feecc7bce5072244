// In blocks of exactly what the stages promise, without any margin, against golden digits.
#include "compute/formulas/one_series.hpp"

#include <gtest/gtest.h>

#include "compute/engine/engine_run.hpp"
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

TEST(OneSeries, Lemniscate) {
    check("lemniscate", [](MemoryEngine& engine) { return lemniscate_by_gauss(engine); });
    check("lemniscate", [](MemoryEngine& engine) { return lemniscate_by_sebah(engine); });
}

}  // namespace
}  // namespace znp
