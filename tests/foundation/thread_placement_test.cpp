#include "foundation/thread_placement.hpp"

#include <gtest/gtest.h>
#include <sched.h>

#include <cerrno>

#include "foundation/threads.hpp"

namespace znp {
namespace {

cpu_set_t own_processors() {
    cpu_set_t set;
    CPU_ZERO(&set);
    EXPECT_EQ(sched_getaffinity(0, sizeof set, &set), 0);
    return set;
}

// Gives the thread its processors back at the end of a test.
class SavedProcessors {
  public:
    SavedProcessors() : saved_(own_processors()) {}
    ~SavedProcessors() { sched_setaffinity(0, sizeof saved_, &saved_); }
    const cpu_set_t& get() const { return saved_; }

  private:
    cpu_set_t saved_;
};

class SavedCreate {
  public:
    ~SavedCreate() { thread_create_call = saved_; }

  private:
    ThreadCreate saved_ = thread_create_call;
};

TEST(ThreadPlacement, LeavesOutTheCreatorsProcessorOnly) {
    const SavedProcessors all;
    if (CPU_COUNT(&all.get()) < 2) GTEST_SKIP() << "one processor";
    const PlacedElsewhere place;
    ASSERT_NE(place.attributes(), nullptr);
    cpu_set_t given;
    CPU_ZERO(&given);
    ASSERT_EQ(pthread_attr_getaffinity_np(place.attributes(), sizeof given, &given), 0);
    EXPECT_EQ(CPU_COUNT(&given), CPU_COUNT(&all.get()) - 1);
    EXPECT_TRUE(CPU_EQUAL(&place.processors(), &all.get()));
}

TEST(ThreadPlacement, OneProcessorIsLeftAlone) {
    const SavedProcessors all;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(PlacedElsewhere().attributes(), nullptr);
    int runs = 0;
    auto first = make_task([](u64_t) {});
    auto second = make_task([&](u64_t) { ++runs; });
    fork_two(first, second);
    EXPECT_EQ(runs, 1);
}

TEST(ThreadPlacement, AThreadHasItsCreatorsProcessorsWhileItRuns) {
    const SavedProcessors all;
    cpu_set_t seen[2];
    auto first = make_task([&](u64_t) { seen[0] = own_processors(); });
    auto second = make_task([&](u64_t) { seen[1] = own_processors(); });
    fork_two(first, second);
    EXPECT_TRUE(CPU_EQUAL(&seen[0], &all.get()));
    EXPECT_TRUE(CPU_EQUAL(&seen[1], &all.get()));
}

TEST(ThreadPlacement, APlacementThatIsRefusedIsNoFailure) {
    const SavedCreate saved;
    static int placed, plain;
    placed = plain = 0;
    thread_create_call = [](pthread_t* handle, const pthread_attr_t* attributes, void* (*function)(void*),
                            void* argument) {
        if (attributes != nullptr) {
            ++placed;
            return EINVAL;
        }
        ++plain;
        return pthread_create(handle, nullptr, function, argument);
    };
    int runs = 0;
    auto first = make_task([&](u64_t) { ++runs; });
    auto second = make_task([](u64_t) {});
    fork_two(first, second);
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(plain, 1);
    EXPECT_LE(placed, 1);
}

TEST(ThreadPlacement, ThreadsWhoseCreatorOnlyWaitsAreNotPlaced) {
    const SavedCreate saved;
    static int placed;
    placed = 0;
    thread_create_call = [](pthread_t* handle, const pthread_attr_t* attributes, void* (*function)(void*),
                            void* argument) {
        placed += attributes != nullptr;
        return pthread_create(handle, attributes, function, argument);
    };
    auto task = make_task([](u64_t) {});
    fork_range_on_threads(task, 0, 2);
    EXPECT_EQ(placed, 0);
}

}  // namespace
}  // namespace znp
