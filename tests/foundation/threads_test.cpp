#include "foundation/threads.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/thread_counter.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::dying;
using ::testing::ExitedWithCode;
using testing::ThreadCounter;

void short_rest() {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

zn_exception silent(s32_t code) {
    return zn_exception(code, nullptr, {}, {}, action::throw_silently);
}

// ---- One thread ---------------------------------------------------------------------------------------

TEST(Threads, StartRunsTheTaskElsewhereAndJoinEndsIt) {
    std::thread::id runner;
    u64_t given = 0;
    auto task = make_task([&](u64_t index) {
        runner = std::this_thread::get_id();
        given = index;
    });
    Thread thread;
    thread.finished = true;
    thread.status = 5;
    thread_start(thread, 0, task, 42);
    EXPECT_TRUE(thread.started);
    thread_join(thread);
    EXPECT_FALSE(thread.started);
    EXPECT_TRUE(thread.finished);
    EXPECT_EQ(thread.status, 0);
    EXPECT_EQ(given, 42u);
    EXPECT_NE(runner, std::this_thread::get_id());
}

TEST(Threads, PrioritiesAreAnAttemptOnly) {
    std::atomic<int> runs = 0;
    auto task = make_task([&](u64_t) { ++runs; });
    for (const int priority : {-1, 0, 1}) {
        EXPECT_EQ(fork_range_on_threads(task, 0, 2, priority), 0);
        EXPECT_EQ(fork_range(task, 0, 2, priority), 0);
    }
    EXPECT_EQ(runs, 12);
}

TEST(ThreadsDeathTest, CreateFailureEndsTheProgram) {
    const auto failing = [] {
        thread_create_call = [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) {
            return EAGAIN;
        };
        auto task = make_task([](u64_t) {});
        fork_two(task, task);
    };
    EXPECT_EXIT(dying(failing), ExitedWithCode(1), "Unable to create thread\\..*\n.*Error Code: 11");
}

TEST(ThreadsDeathTest, JoinFailureEndsTheProgram) {
    const auto failing = [] {
        Thread thread;
        thread.handle = pthread_self();
        thread_join(thread);
    };
    EXPECT_EXIT(dying(failing), ExitedWithCode(1), "Unable to join thread\\..*\n.*Error Code: 35");
}

// ---- Forks --------------------------------------------------------------------------------------------

TEST(Threads, ForkTwoRunsTheFirstElsewhereAndTheSecondHere) {
    ThreadCounter counter;
    std::thread::id runner[2];
    u64_t given[2] = {7, 7};
    auto first = make_task([&](u64_t index) {
        runner[0] = std::this_thread::get_id();
        given[0] = index;
    });
    auto second = make_task([&](u64_t index) {
        runner[1] = std::this_thread::get_id();
        given[1] = index;
    });
    EXPECT_EQ(fork_two(first, second), 0);
    EXPECT_EQ(counter.created(), 1);
    EXPECT_NE(runner[0], std::this_thread::get_id());
    EXPECT_EQ(runner[1], std::this_thread::get_id());
    EXPECT_EQ(given[0], 0u);
    EXPECT_EQ(given[1], 0u);
}

TEST(Threads, ForkTwoJoinsBeforeAnExceptionGoesOn) {
    bool first_ended = false;
    auto first = make_task([&](u64_t) {
        short_rest();
        first_ended = true;
    });
    auto second = make_task([](u64_t) { throw std::runtime_error("second"); });
    EXPECT_THROW(fork_two(first, second), std::runtime_error);
    EXPECT_TRUE(first_ended);
}

TEST(Threads, ForkRangeRunsTheLastIndexHere) {
    ThreadCounter counter;
    std::vector<std::thread::id> runners(10);
    auto task = make_task([&](u64_t index) { runners[index] = std::this_thread::get_id(); });
    EXPECT_EQ(fork_range(task, 3, 8), 0);
    EXPECT_EQ(counter.created(), 4);
    for (u64_t i = 0; i < runners.size(); ++i) {
        EXPECT_EQ(runners[i] == std::thread::id(), i < 3 || i >= 8);
        EXPECT_EQ(runners[i] == std::this_thread::get_id(), i == 7);
    }
}

TEST(Threads, ForkRangeOfOneIndexRunsOnTheCaller) {
    ThreadCounter counter;
    std::thread::id runner;
    auto task = make_task([&](u64_t index) {
        EXPECT_EQ(index, 5u);
        runner = std::this_thread::get_id();
    });
    EXPECT_EQ(fork_range(task, 5, 6), 0);
    EXPECT_EQ(counter.created(), 0);
    EXPECT_EQ(runner, std::this_thread::get_id());
}

TEST(Threads, ForkRangeOnThreadsRunsNothingHere) {
    ThreadCounter counter;
    std::vector<std::thread::id> runners(4);
    auto task = make_task([&](u64_t index) { runners[index] = std::this_thread::get_id(); });
    EXPECT_EQ(fork_range_on_threads(task, 0, 4), 0);
    EXPECT_EQ(counter.created(), 4);
    for (const std::thread::id& runner : runners) {
        EXPECT_NE(runner, std::thread::id());
        EXPECT_NE(runner, std::this_thread::get_id());
    }
}

TEST(Threads, EmptyRangesRunNothing) {
    ThreadCounter counter;
    auto task = make_task([](u64_t) { FAIL(); });
    EXPECT_EQ(fork_range(task, 0, 0), 0);
    EXPECT_EQ(fork_range(task, 4, 4), 0);
    EXPECT_EQ(fork_range(task, 5, 4), 0);
    EXPECT_EQ(fork_range_on_threads(task, 4, 4), 0);
    EXPECT_EQ(fork_range_on_threads(task, 5, 4), 0);
    EXPECT_EQ(counter.created(), 0);
}

TEST(Threads, ForkRangeJoinsAllBeforeAnExceptionGoesOn) {
    std::atomic<int> ended = 0;
    auto task = make_task([&](u64_t index) {
        if (index == 5) throw std::runtime_error("last");
        short_rest();
        ++ended;
    });
    EXPECT_THROW(fork_range(task, 0, 6), std::runtime_error);
    EXPECT_EQ(ended, 5);
}

// ---- Failures in a thread -----------------------------------------------------------------------------

TEST(Threads, ExceptionOfTheFamilyIsPrintedAndItsCodeKept) {
    s32_t status = 0;
    auto first = make_task([](u64_t) {
        throw zn_exception(17, "the message", {}, {}, action::throw_silently, "The Title", "the location");
    });
    auto second = make_task([](u64_t) {});
    const std::string output = console_output([&] { status = fork_two(first, second); });
    EXPECT_EQ(status, 17);
    const zn_exception same(17, "the message", {}, {}, action::throw_silently, "The Title", "the location");
    EXPECT_EQ(output, console_output([&] { print_exception(same); }));
}

TEST(Threads, FirstStatusInIndexOrderIsReturned) {
    auto task = make_task([](u64_t index) {
        // The later index fails first.
        if (index == 1) short_rest();
        if (index == 1 || index == 3) throw silent(static_cast<s32_t>(index) + 10);
    });
    s32_t status = 0;
    console_output([&] { status = fork_range_on_threads(task, 0, 5); });
    EXPECT_EQ(status, 11);
    console_output([&] { status = fork_range(task, 0, 5); });
    EXPECT_EQ(status, 11);
    console_output([&] { status = fork_range(task, 2, 5); });
    EXPECT_EQ(status, 13);
}

TEST(Threads, FailureWithCodeZeroIsNoSuccess) {
    auto first = make_task([](u64_t) { throw silent(0); });
    auto second = make_task([](u64_t) {});
    s32_t status = 0;
    console_output([&] { status = fork_two(first, second); });
    EXPECT_EQ(status, 1);
}

TEST(Threads, RaiseStatusThrowsWithoutAReport) {
    EXPECT_EQ(console_output([] {
                  EXPECT_NO_THROW(raise_status(0));
                  try {
                      raise_status(-3);
                      ADD_FAILURE();
                  } catch (const zn_exception& exception) {
                      EXPECT_EQ(exception.code, -3);
                  }
              }),
              "");
}

constexpr const char* unhandled = "FATAL ERROR: Unhandled exception in child thread\\.";

TEST(ThreadsDeathTest, StandardExceptionInAThread) {
    const auto failing = [] {
        auto first = make_task([](u64_t) { throw std::runtime_error("what it was"); });
        auto second = make_task([](u64_t) { short_rest(); });
        fork_two(first, second);
    };
    EXPECT_EXIT(dying(failing), ExitedWithCode(1), std::string("what it was.*\n.*") + unhandled);
}

TEST(ThreadsDeathTest, UnrecoverableErrorInAThread) {
    const auto failing = [] {
        auto task = make_task([](u64_t) { throw zn_error(silent(1), "the note"); });
        fork_range_on_threads(task, 0, 1);
    };
    EXPECT_EXIT(dying(failing), ExitedWithCode(1), unhandled);
}

TEST(ThreadsDeathTest, AnythingElseInAThread) {
    const auto failing = [] {
        auto task = make_task([](u64_t) { throw "a bare text"; });
        fork_range_on_threads(task, 0, 1);
    };
    EXPECT_EXIT(dying(failing), ExitedWithCode(1), unhandled);
}

// The report of the exception itself throws: the path cannot be printed.
TEST(ThreadsDeathTest, ReportThatFailsInAThread) {
    const auto failing = [] {
        auto task =
            make_task([](u64_t) { throw zn_exception(1, nullptr, {}, L"\x263A", action::throw_silently); });
        fork_range_on_threads(task, 0, 1);
    };
    EXPECT_EXIT(dying(failing), ExitedWithCode(1), unhandled);
}

// ---- The machine ---------------------------------------------------------------------------------------

TEST(Threads, LogicalCores) {
    EXPECT_EQ(logical_cores(), static_cast<u64_t>(sysconf(_SC_NPROCESSORS_ONLN)));
    EXPECT_GE(logical_cores(), 1u);
}

TEST(Threads, AffinityIsNotSupported) {
    const std::string expected =
        console_output([] { Console::print_error("Thread affinity not supported.\n"); });
    EXPECT_EQ(console_output([] { set_affinity(0); }), expected);
}

TEST(Threads, TextsOfOtherPlatforms) {
    EXPECT_STREQ(thread_text::wait_failed, "Thread Error: Wait for thread has failed.");
    EXPECT_STREQ(thread_text::create_failed, "Warning: Unable to create thread.");
    EXPECT_STREQ(thread_text::allocation_failed, "Possible Memory Allocation Failure.");
}

}  // namespace
}  // namespace znp
