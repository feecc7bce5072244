#include "foundation/time.hpp"

#include <gtest/gtest.h>

#include <string>

#include "console_capture.hpp"
#include "text_match.hpp"

namespace znp {
namespace {

using ::testing::ExitedWithCode;

TEST(Time, SecondsBetween) {
    EXPECT_DOUBLE_EQ(seconds_between({10, 250000}, {12, 750000}), 2.5);
    EXPECT_DOUBLE_EQ(seconds_between({10, 0}, {10, 0}), 0);
    EXPECT_DOUBLE_EQ(seconds_between({12, 0}, {10, 0}), -2);
}

TEST(Time, SecondsBetweenBorrowsOneSecond) {
    EXPECT_DOUBLE_EQ(seconds_between({10, 999999}, {11, 0}), 0.000001);
    EXPECT_DOUBLE_EQ(seconds_between({10, 750000}, {12, 250000}), 1.5);
    EXPECT_DOUBLE_EQ(seconds_between({10, 500000}, {10, 0}), -0.5);
}

TEST(Time, NowIsAnOrderlyTime) {
    const Time a = Time::now();
    const Time b = Time::now();
    for (const Time& t : {a, b}) {
        EXPECT_GT(t.seconds, 1'600'000'000);
        EXPECT_GE(t.microseconds, 0);
        EXPECT_LT(t.microseconds, 1'000'000);
    }
    EXPECT_LT(seconds_between(a, b), 60);
}

TEST(Time, CurrentTimeTextHasNoLineEnd) {
    const std::string text = current_time_text();
    EXPECT_TRUE(testing::matches(text, testing::date_pattern)) << text;
}

TEST(Time, CountersAdvance) {
    const u64_t ticks = rdtsc();
    const double cpu = cpu_seconds();
    while (cpu_seconds() - cpu < 0.002) {
    }
    EXPECT_GT(rdtsc(), ticks);
}

TEST(Time, CpuFrequencySpinsForItsWindow) {
    const Time start = Time::now();
    const double frequency = cpu_frequency();
    EXPECT_GE(seconds_between(start, Time::now()), 0.0625);
    EXPECT_GT(frequency, 1e8);
    EXPECT_LT(frequency, 1e11);
}

// By the wall clock; the processor's time moves on, too, however long the thread has to wait for a processor.
void spin(double seconds) {
    const Time start = Time::now();
    const double cpu = cpu_seconds();
    while (seconds_between(start, Time::now()) < seconds || cpu_seconds() <= cpu) {
    }
}

TEST(StopWatch, AddsUpItsStretches) {
    StopWatch watch;
    EXPECT_FALSE(watch.running());
    watch.start();
    EXPECT_TRUE(watch.running());
    spin(0.01);
    watch.stop();
    EXPECT_FALSE(watch.running());
    const double first = watch.wall_seconds();
    EXPECT_GE(first, 0.01);
    EXPECT_GT(watch.cpu_seconds(), 0);

    spin(0.01);
    EXPECT_EQ(watch.wall_seconds(), first);
    watch.start();
    spin(0.01);
    watch.stop();
    EXPECT_GE(watch.wall_seconds(), first + 0.01);
}

using StopWatchDeathTest = ::testing::Test;

TEST(StopWatchDeathTest, SecondStopEndsTheProgram) {
    EXPECT_EXIT(testing::dying([] {
                    StopWatch watch;
                    watch.start();
                    watch.stop();
                    watch.stop();
                }),
                ExitedWithCode(1), "Stopwatch is not running\\.");
}

}  // namespace
}  // namespace znp
