// Counts the threads that are created while the object lives; can let the creation fail.
#pragma once

#include <pthread.h>

#include <atomic>

#include "foundation/threads.hpp"

namespace znp::testing {

class ThreadCounter {
  public:
    ThreadCounter() : saved_(thread_create_call) {
        created_ = 0;
        thread_create_call = create;
    }
    ~ThreadCounter() { thread_create_call = saved_; }
    ThreadCounter(const ThreadCounter&) = delete;
    ThreadCounter& operator=(const ThreadCounter&) = delete;

    int created() const { return created_; }

  private:
    static int create(pthread_t* handle, const pthread_attr_t* attributes, void* (*function)(void*),
                      void* argument) {
        ++created_;
        return pthread_create(handle, attributes, function, argument);
    }

    inline static std::atomic<int> created_ = 0;
    ThreadCreate saved_;
};

}  // namespace znp::testing
