#include "compute/engine/arccoth_term.hpp"

#include <gtest/gtest.h>

#include "compute/engine/engine_run.hpp"

namespace znp {
namespace {

using testing::EngineRun;

// ln 2
HeapFloat three_terms(MemoryEngine& engine) {
    auto sum = engine.arccoth_term(26, 18);
    sum = engine.add_arccoth_term(std::move(sum), 4801, -2);
    return engine.add_arccoth_term(std::move(sum), 8749, 8);
}

TEST(ArcCothTerm, LinesAndEventsInOrder) {
    EngineRun driver(1000, 1, testing::stages_of(three_terms));
    driver.carry_out();
    EXPECT_EQ(driver.printed.find("18 ArcCoth( 26 )\n"), 0u);
    EXPECT_TRUE(
        testing::texts_in_order(driver.printed, {"Division...\n", "Time:    ", "\n\n-2 ArcCoth( 4801 )\n",
                                                 "\n\n8 ArcCoth( 8749 )\nSumming Series...  "}))
        << driver.printed;
    std::vector<std::string> expected;
    for (const char* term : {"18 ArcCoth( 26 )", "-2 ArcCoth( 4801 )", "8 ArcCoth( 8749 )"}) {
        for (const char* event : {term, "Summing Series", "Finishing Series", "Division"})
            expected.push_back(event);
    }
    EXPECT_EQ(driver.events(), expected);
}

TEST(ArcCothTerm, ThreeTermsMakeTheLogarithmOf2) {
    for (const u64_t threads : testing::threads_to_test) {
        EngineRun driver(1000, threads, testing::stages_of(three_terms));
        driver.carry_out();
        EXPECT_EQ(driver.run.heap.active, 1u);
        testing::expect_not_wasteful(driver.bytes, driver.peak_bytes());
        // 0.693147180559945309417232121458176568075500134360255...
        EXPECT_EQ(driver.number.get_exp() + static_cast<s64_t>(driver.number.get_L()), 0);
        EXPECT_EQ(driver.number.get_T()[driver.number.get_L() - 1], 0xB17217F7D1CF79ABu);
    }
}

}  // namespace
}  // namespace znp
