#include "tools/stress_component.hpp"

#include <gtest/gtest.h>

#include <atomic>

#include "tests/console_capture.hpp"
#include "tools/stress_fakes.hpp"
#include "tools/stress_signals.hpp"
#include "tools/stress_size.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::FakeClock;
using testing::FakeComponent;
using testing::without_colors;
using Verdict = StressResult::Verdict;

struct Outcome {
    StressResult result;
    std::string output;
};

Outcome run(const FakeComponent& component, u64_t threads, u64_t seconds, u64_t memory = u64_t{1} << 20) {
    Outcome outcome{};
    outcome.output = console_output([&] {
        StressBuffer buffer(memory);
        outcome.result = run_stress_component(component, buffer, {threads, seconds, FakeClock::seconds});
    });
    return outcome;
}

TEST(StressComponent, RunsUntilTheTimeIsUp) {
    FakeComponent component("BKT");
    const Outcome outcome = run(component, 1, 2);
    EXPECT_EQ(outcome.result.verdict, Verdict::passed);
    EXPECT_EQ(outcome.result.multiplications, 2 * FakeClock::ticks_per_second);
    EXPECT_EQ(component.calls(), 2 * FakeClock::ticks_per_second);
    EXPECT_EQ(without_colors(outcome.output),
              "Preparing BKT Test...\n"
              "BKT Test 0  Elapsed Time: 0.000 seconds  ( 0.000 hours )\n"
              "BKT Test: Passed  Test Time: 2.000 seconds  ( 0.001 hours )\n");
    EXPECT_NE(outcome.output.find("\033[01;32mPassed"), std::string::npos);
}

TEST(StressComponent, EveryThreadCountsItsMultiplications) {
    FakeComponent component("BKT");
    const Outcome outcome = run(component, 3, 1);
    EXPECT_EQ(outcome.result.verdict, Verdict::passed);
    EXPECT_EQ(outcome.result.multiplications, component.calls());
    EXPECT_GE(component.calls(), FakeClock::ticks_per_second);
    EXPECT_EQ(component.calls_of_threads().size(), 3u);
    EXPECT_EQ(component.calls_of_threads().count(std::this_thread::get_id()), 0u);  // this one only waits
}

// The component writes all of every buffer that it is given: the neighbours, the operand and the tables stay
// right in a buffer without a byte to spare.
TEST(StressComponent, PartsOfTheBufferAreDisjoint) {
    for (const upL_t table_size : {0u, 8u, 1000u}) {
        FakeComponent component("BKT");
        component.table_size = table_size;
        const Outcome outcome = run(component, 4, 1, stress_layout(component, 464, 4).total);
        EXPECT_EQ(outcome.result.verdict, Verdict::passed);
    }
}

TEST(StressComponent, AWrongBitFailsAndTheNeighboursRunOn) {
    for (const u64_t wrong_call : {1u, 17u, 90u}) {
        FakeComponent component("HNT");
        component.wrong_call = wrong_call;
        u64_t calls_at_fault = 0;
        component.on_call = [&](u64_t call) {
            if (call == wrong_call) calls_at_fault = component.calls_of_threads()[std::this_thread::get_id()];
        };
        const Outcome outcome = run(component, 2, 2);
        EXPECT_EQ(outcome.result.verdict, Verdict::failed);
        EXPECT_NE(outcome.output.find("HNT Test: \033[01;31mFailed"), std::string::npos) << outcome.output;
        EXPECT_GE(component.calls(), 2 * FakeClock::ticks_per_second);
        EXPECT_EQ(component.calls_of_threads()[component.faulty_thread()], calls_at_fault);
    }
}

TEST(StressComponent, AnExceptionOfTheComponentIsAnErrorOfTheTest) {
    FakeComponent component("BKT");
    component.on_call = [&](u64_t call) {
        if (call == 30) {
            component.note_faulty_thread();
            throw zn_exception(error_code::invalid_parameters);
        }
    };
    const Outcome outcome = run(component, 2, 1);
    EXPECT_EQ(outcome.result.verdict, Verdict::failed);
    EXPECT_GE(component.calls(), FakeClock::ticks_per_second);
    EXPECT_EQ(without_colors(outcome.output).find("Exception"), std::string::npos);
}

using StressComponentDeathTest = ::testing::Test;

TEST(StressComponentDeathTest, OtherExceptionsPass) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    FakeComponent component("BKT");
    component.on_call = [](u64_t) { throw std::runtime_error("not a calculation"); };
    EXPECT_EXIT(testing::dying([&] {
                    StressBuffer buffer(u64_t{1} << 20);
                    run_stress_component(component, buffer, {2, 1, FakeClock::seconds});
                }),
                ::testing::ExitedWithCode(1), "not a calculation");
}

TEST(StressComponent, TooLittleMemorySkipsTheTest) {
    FakeComponent component("VST");
    const Outcome outcome = run(component, 2, 1, stress_layout(component, min_stress_words, 2).total - 1);
    EXPECT_EQ(outcome.result.verdict, Verdict::skipped);
    EXPECT_EQ(outcome.result.multiplications, 0u);
    EXPECT_EQ(component.calls(), 0u);
    EXPECT_EQ(without_colors(outcome.output), "VST Test: Insufficient memory to run this test.\n");
    EXPECT_NE(outcome.output.find("\033[01;31mInsufficient memory"), std::string::npos);
}

TEST(StressComponent, TheSmallestMemoryRuns) {
    FakeComponent component("VST");
    const Outcome outcome = run(component, 2, 1, stress_layout(component, min_stress_words, 2).total);
    EXPECT_EQ(outcome.result.verdict, Verdict::passed);
    EXPECT_GE(component.calls(), FakeClock::ticks_per_second);
}

TEST(StressComponent, NoTimeNoRound) {
    FakeComponent component("BKT");
    const Outcome outcome = run(component, 2, 0);
    EXPECT_EQ(outcome.result.verdict, Verdict::passed);
    EXPECT_EQ(component.calls(), 0u);
}

TEST(StressComponent, AStopRequestEndsTheTest) {
    const StopSignals signals;
    FakeComponent component("BKT");
    // Later calls of the other thread wait for the request.
    std::atomic<bool> requested{false};
    component.on_call = [&requested](u64_t call) {
        if (call < 20) return;
        if (call > 20) return requested.wait(false);
        std::raise(SIGINT);
        requested = true;
        requested.notify_all();
    };
    const Outcome outcome = run(component, 2, 1000000);
    EXPECT_EQ(outcome.result.verdict, Verdict::stopped);
    EXPECT_LE(component.calls(), 30u);
    EXPECT_NE(without_colors(outcome.output).find("BKT Test: Stopped  Test Time: "), std::string::npos);
}

TEST(StressComponent, AnErrorBeforeAStopRequestStillFails) {
    const StopSignals signals;
    FakeComponent component("BKT");
    component.wrong_call = 5;
    component.on_call = [](u64_t call) {
        if (call == 20) std::raise(SIGINT);
    };
    EXPECT_EQ(run(component, 2, 1000000).result.verdict, Verdict::failed);
}

TEST(StressBuffer, IsAlignedAndClearedWhole) {
    for (const u64_t bytes : {u64_t{1}, u64_t{4095}, u64_t{100001}, u64_t{33} << 20}) {
        StressBuffer buffer(bytes);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.data()) % 4096, 0u);
        std::memset(buffer.data(), 0x55, bytes);
        buffer.clear(2);
        u64_t set = 0;
        for (u64_t i = 0; i < bytes; i++) set += buffer.data()[i] != std::byte{0};
        EXPECT_EQ(set, 0u) << bytes;
    }
}

TEST(StressBuffer, NothingIsABuffer) {
    StressBuffer buffer(0);
    buffer.clear(2);
    EXPECT_EQ(buffer.bytes(), 0u);
}

TEST(StressBuffer, ExhaustionThrows) {
    EXPECT_THROW(StressBuffer(u64_t{1} << 62), std::bad_alloc);
    EXPECT_THROW(StressBuffer(0x7fffffffffffffff), std::bad_alloc);
}

}  // namespace
}  // namespace znp
