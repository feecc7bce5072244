#include "foundation/threads.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
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
    thread.failure = std::make_exception_ptr(silent(5));
    thread_start(thread, 0, task, 42);
    EXPECT_TRUE(thread.started);
    thread_join(thread);
    EXPECT_FALSE(thread.started);
    EXPECT_TRUE(thread.finished);
    EXPECT_EQ(thread.failure, nullptr);
    EXPECT_NO_THROW(raise_failure(thread));
    EXPECT_EQ(given, 42u);
    EXPECT_NE(runner, std::this_thread::get_id());
}

TEST(Threads, PrioritiesAreAnAttemptOnly) {
    std::atomic<int> runs = 0;
    auto task = make_task([&](u64_t) { ++runs; });
    for (const int priority : {-1, 0, 1}) {
        fork_range_on_threads(task, 0, 2, priority);
        fork_range(task, 0, 2, priority);
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
    fork_two(first, second);
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
    fork_range(task, 3, 8);
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
    fork_range(task, 5, 6);
    EXPECT_EQ(counter.created(), 0);
    EXPECT_EQ(runner, std::this_thread::get_id());
}

TEST(Threads, ForkRangeOnThreadsRunsNothingHere) {
    ThreadCounter counter;
    std::vector<std::thread::id> runners(4);
    auto task = make_task([&](u64_t index) { runners[index] = std::this_thread::get_id(); });
    fork_range_on_threads(task, 0, 4);
    EXPECT_EQ(counter.created(), 4);
    for (const std::thread::id& runner : runners) {
        EXPECT_NE(runner, std::thread::id());
        EXPECT_NE(runner, std::this_thread::get_id());
    }
}

TEST(Threads, EmptyRangesRunNothing) {
    ThreadCounter counter;
    auto task = make_task([](u64_t) { FAIL(); });
    fork_range(task, 0, 0);
    fork_range(task, 4, 4);
    fork_range(task, 5, 4);
    fork_range_on_threads(task, 4, 4);
    fork_range_on_threads(task, 5, 4);
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

// The failure that an action throws, and what it prints meanwhile.
template <class Exception, class Action>
std::pair<Exception, std::string> failure_of(Action action) {
    std::optional<Exception> caught;
    const std::string output = console_output([&] {
        try {
            action();
        } catch (const Exception& exception) {
            caught = exception;
        }
    });
    EXPECT_TRUE(caught.has_value());
    return {caught.value(), output};
}

std::string report_of(const zn_exception& exception) {
    return console_output([&] { print_exception(exception); });
}

TEST(Threads, FailureIsPrintedByItsThreadAndArrivesWhole) {
    const zn_exception thrown(17, "the message", "text", L"path", action::throw_silently, "The Title",
                              "the location");
    auto first = make_task([&](u64_t) { throw thrown; });
    auto second = make_task([](u64_t) {});
    const auto [caught, output] = failure_of<zn_exception>([&] { fork_two(first, second); });
    EXPECT_EQ(output, report_of(thrown));
    EXPECT_EQ(report_of(caught), report_of(thrown));
    EXPECT_EQ(caught.action, action::throw_silently);
}

TEST(Threads, FailureKeepsItsType) {
    auto first = make_task([](u64_t) { fire(zl_BSRModularCheckFailed("a check")); });
    auto second = make_task([](u64_t) {});
    EXPECT_EQ(failure_of<zl_BSRModularCheckFailed>([&] { fork_two(first, second); }).first.text, "a check");
    auto task = make_task([](u64_t) { fire(FileException(2, "Unable to open file.", L"/a/path")); });
    for (const auto fork : {&fork_range_on_threads, &fork_range}) {
        EXPECT_EQ(failure_of<FileException>([&] { fork(task, 0, 2, 0); }).first.path, L"/a/path");
    }
}

TEST(Threads, FailureHereGoesBeforeOneElsewhere) {
    auto failing = make_task([](u64_t) { throw silent(1); });
    auto here = make_task([](u64_t) { throw silent(2); });
    auto other = make_task([](u64_t) { throw std::runtime_error("here"); });
    auto peaceful = make_task([](u64_t) {});
    const auto of_both = failure_of<zn_exception>([&] { fork_two(failing, here); });
    EXPECT_EQ(of_both.first.code, 2);
    EXPECT_EQ(of_both.second, report_of(silent(1)));
    EXPECT_EQ(failure_of<std::runtime_error>([&] { fork_two(failing, other); }).second, report_of(silent(1)));
    const auto of_here = failure_of<zn_exception>([&] { fork_two(peaceful, here); });
    EXPECT_EQ(of_here.first.code, 2);
    EXPECT_EQ(of_here.second, "");
}

// On its way through the threads of outer forks it is not printed again.
TEST(Threads, FailureOfAnInnerForkIsPrintedOnce) {
    auto peaceful = make_task([](u64_t) {});
    for (unsigned depth = 1; depth <= 4; ++depth) {
        std::function<void(unsigned)> descend = [&](unsigned rest) {
            if (rest == 0) throw zl_BSRModularCheckFailed("deep inside");
            auto first = make_task([&](u64_t) { descend(rest - 1); });
            fork_two(first, peaceful);
        };
        const auto [caught, output] = failure_of<zl_BSRModularCheckFailed>([&] { descend(depth); });
        EXPECT_EQ(caught.text, "deep inside");
        EXPECT_EQ(output, report_of(zl_BSRModularCheckFailed("deep inside")));
    }
}

TEST(Threads, AllAreJoinedBeforeAFailureElsewhereGoesOn) {
    std::atomic<int> ended = 0;
    auto task = make_task([&](u64_t index) {
        if (index == 1) throw silent(5);
        short_rest();
        ++ended;
    });
    failure_of<zn_exception>([&] { fork_range(task, 0, 6); });
    EXPECT_EQ(ended, 5);
    failure_of<zn_exception>([&] { fork_range_on_threads(task, 0, 6); });
    EXPECT_EQ(ended, 10);
}

TEST(Threads, FirstFailureInIndexOrderGoesOn) {
    std::atomic<bool> later_fails = false;
    auto task = make_task([&](u64_t index) {
        if (index == 3) later_fails = true;
        while (index == 1 && !later_fails) std::this_thread::yield();
        if (index == 1 || index == 3) throw silent(static_cast<s32_t>(index) + 10);
    });
    const auto code = [&](auto action) {
        later_fails = false;
        return failure_of<zn_exception>(action).first.code;
    };
    EXPECT_EQ(code([&] { fork_range_on_threads(task, 0, 5); }), 11);
    EXPECT_EQ(code([&] { fork_range(task, 0, 5); }), 11);
    EXPECT_EQ(code([&] { fork_range(task, 2, 5); }), 13);
}

TEST(Threads, FailureWithCodeZeroIsNoSuccess) {
    auto first = make_task([](u64_t) { throw silent(0); });
    auto second = make_task([](u64_t) {});
    EXPECT_EQ(failure_of<zn_exception>([&] { fork_two(first, second); }).first.code, 0);
}

TEST(Threads, JoinerOfALoneThreadRaisesItsFailure) {
    auto task = make_task([](u64_t) { throw silent(8); });
    Thread thread;
    const auto [caught, output] = failure_of<zn_exception>([&] {
        thread_start(thread, 0, task, 0);
        EXPECT_NO_THROW(thread_join(thread));
        raise_failure(thread);
    });
    EXPECT_EQ(caught.code, 8);
    EXPECT_EQ(output, report_of(silent(8)));
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
