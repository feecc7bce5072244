#include "foundation/threads.hpp"

#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <vector>

#include "foundation/exceptions.hpp"
#include "foundation/fatal.hpp"
#include "foundation/thread_placement.hpp"
#include "shell/console.hpp"

namespace znp {

constinit ThreadCreate thread_create_call = pthread_create;

namespace {

// Scheduling priorities of the process; SCHED_RR takes none of them without further rights.
constexpr int high_priority = 0;
constexpr int low_priority = 0;

constexpr const char* unhandled_in_child = "FATAL ERROR: Unhandled exception in child thread.";

// Halves of a fork end at nearly the same time. A processor that goes to sleep meanwhile takes longer to wake
// than these looks take, some ten microseconds; each of them lets others run.
constexpr unsigned join_attempts = 200;

// The inner try block only keeps a zn_exception: what its report may throw is caught outside. One that comes
// from a fork of this thread has been reported.
void run_and_report(Thread& thread) {
    try {
        try {
            thread.task->run(thread.index);
        } catch (zn_exception& exception) {
            thread.failure = std::current_exception();
            if (!exception.reported) print_exception(exception);
            exception.reported = true;
        }
    } catch (const std::exception& exception) {
        Console::print_error(exception.what());
        fatal_exit(unhandled_in_child);
    } catch (...) {
        fatal_exit(unhandled_in_child);
    }
}

void* thread_function(void* argument) {
    auto& thread = *static_cast<Thread*>(argument);
    if (thread.placed) take_processors(thread.processors);
    run_and_report(thread);
    thread.finished = true;
    return nullptr;
}

// A placement that the system refuses (processors can be taken away while the program runs) is no failure.
int create(Thread& thread, Placement placement) {
    if (placement == Placement::beside_creator) {
        const PlacedElsewhere place;
        thread.placed = place.attributes() != nullptr;
        thread.processors = place.processors();
        if (thread.placed &&
            thread_create_call(&thread.handle, place.attributes(), thread_function, &thread) == 0) {
            return 0;
        }
        thread.placed = false;
    }
    return thread_create_call(&thread.handle, nullptr, thread_function, &thread);
}

// The threads of one fork. What is still started at the end of the scope is joined there, so that a throwing
// run on the current thread leaves no thread over freed memory.
class ThreadGroup {
  public:
    ThreadGroup() = default;
    ThreadGroup(const ThreadGroup&) = delete;
    ThreadGroup& operator=(const ThreadGroup&) = delete;
    ~ThreadGroup() { join(); }

    void start(int priority, Task& task, u64_t index, Placement placement) {
        threads_.push_back(std::make_unique<Thread>());
        thread_start(*threads_.back(), priority, task, index, placement);
    }

    // Both in the order of the starts.
    void finish() {
        join();
        for (const auto& thread : threads_) raise_failure(*thread);
    }

  private:
    void join() {
        for (const auto& thread : threads_) {
            if (thread->started) thread_join(*thread);
        }
    }

    std::vector<std::unique_ptr<Thread>> threads_;
};

}  // namespace

void thread_start(Thread& thread, int priority, Task& task, u64_t index, Placement placement) {
    thread = Thread{};
    thread.task = &task;
    thread.index = index;
    const int result = create(thread, placement);
    if (result != 0) fire(Threads::ThreadException(result, "Unable to create thread."));
    thread.started = true;
    if (priority != 0) {
        sched_param parameters{};
        parameters.sched_priority = priority > 0 ? high_priority : low_priority;
        static_cast<void>(pthread_setschedparam(thread.handle, SCHED_RR, &parameters));
    }
}

void thread_join(Thread& thread) {
    const bool other = pthread_equal(thread.handle, pthread_self()) == 0;
    int result = EBUSY;
    for (unsigned i = 0; other && i < join_attempts && result == EBUSY; ++i) {
        result = pthread_tryjoin_np(thread.handle, nullptr);
        if (result == EBUSY) sched_yield();
    }
    if (result == EBUSY) result = pthread_join(thread.handle, nullptr);
    if (result != 0) fire(Threads::ThreadException(result, "Unable to join thread."));
    thread.started = false;
}

void raise_failure(const Thread& thread) {
    if (thread.failure != nullptr) std::rethrow_exception(thread.failure);
}

void fork_two(Task& first, Task& second) {
    ThreadGroup threads;
    threads.start(0, first, 0, Placement::beside_creator);
    second.run(0);
    threads.finish();
}

void fork_range_on_threads(Task& task, u64_t first, u64_t last, int priority) {
    ThreadGroup threads;
    for (u64_t index = first; index < last; ++index)
        threads.start(priority, task, index, Placement::anywhere);
    threads.finish();
}

void fork_range(Task& task, u64_t first, u64_t last, int priority) {
    if (first >= last) return;
    ThreadGroup threads;
    for (u64_t index = first; index < last - 1; ++index) {
        threads.start(priority, task, index, Placement::beside_creator);
    }
    task.run(last - 1);
    threads.finish();
}

u64_t logical_cores() {
    const long cores = sysconf(_SC_NPROCESSORS_ONLN);
    return cores < 1 ? 1 : static_cast<u64_t>(cores);
}

void set_affinity(u64_t) {
    Console::print_error("Thread affinity not supported.\n");
}

}  // namespace znp
