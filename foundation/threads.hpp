// Threads: recursive binary forks and flat forks. No pool, no queue, no lock.
//
// A Task never owns the data that it works on. The halves of a fork write disjoint ranges; the join is the
// only synchronisation. Every start is paired with a join in the same scope, also while an exception unwinds.
//
// What run() lets out on a new thread: a zn_exception is printed there, once, and thrown again by the joiner;
// a std::exception is printed and ends the program with "FATAL ERROR: Unhandled exception in child thread.";
// anything else ends it at once. A fork throws when all its threads are joined: what run() let out on the
// current thread, otherwise the first failure in the order of the indices.
#pragma once

#include <pthread.h>
#include <sched.h>

#include <exception>

#include "foundation/types.hpp"

namespace znp {

class Task {
  public:
    virtual ~Task() = default;
    virtual void run(u64_t index) = 0;
};

// A Task from a callable: auto task = make_task([&](u64_t index) { ... });
template <class F>
class FunctionTask final : public Task {
  public:
    explicit FunctionTask(F function) : function_(static_cast<F&&>(function)) {}
    void run(u64_t index) override { function_(index); }

  private:
    F function_;
};
template <class F>
FunctionTask<F> make_task(F function) {
    return FunctionTask<F>(static_cast<F&&>(function));
}

struct Thread {
    pthread_t handle{};
    Task* task = nullptr;
    u64_t index = 0;
    bool finished = false;  // set by the thread as its last action; read only after the join
    bool started = false;   // between a successful create and a successful join
    bool placed = false;    // created on another processor than its creator's, to take back these
    cpu_set_t processors{};
    std::exception_ptr failure;  // the zn_exception that run() let out
};

inline constexpr u64_t max_threads = 256;

// Whether a new thread shall run beside its creator, which has work of its own, or may begin on any processor
// (foundation/thread_placement.hpp).
enum class Placement { anywhere, beside_creator };

// A failed create ends the program. priority 0 leaves the scheduling alone; others are an attempt only.
void thread_start(Thread& thread, int priority, Task& task, u64_t index,
                  Placement placement = Placement::anywhere);
// Leaves the failure to the caller.
void thread_join(Thread& thread);
void raise_failure(const Thread& thread);

// first.run(0) on a new thread, second.run(0) on this one, join.
void fork_two(Task& first, Task& second);

// One new thread for each index in [first, last); this thread only waits. Joins in index order.
void fork_range_on_threads(Task& task, u64_t first, u64_t last, int priority = 0);

// The same, with the last index on this thread. A range of one index starts no thread.
void fork_range(Task& task, u64_t first, u64_t last, int priority = 0);

u64_t logical_cores();  // at least 1

// Not implemented on this platform; says so.
void set_affinity(u64_t core);

// The system call behind thread_start. Tests count its calls and let it fail; nothing else changes it.
using ThreadCreate = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
extern ThreadCreate thread_create_call;

// Message texts of platforms whose threads report these states; this one does not.
namespace thread_text {
inline constexpr const char* wait_failed = "Thread Error: Wait for thread has failed.";
inline constexpr const char* create_failed = "Warning: Unable to create thread.";
inline constexpr const char* allocation_failed = "Possible Memory Allocation Failure.";
}  // namespace thread_text

}  // namespace znp
