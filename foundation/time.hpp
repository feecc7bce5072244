// Wall-clock time, CPU time, the time stamp counter and the stopwatch.
#pragma once

#include <string>

#include "foundation/types.hpp"

namespace znp {

struct Time {
    s64_t seconds;
    s64_t microseconds;
    static Time now();
};

double seconds_between(const Time& a, const Time& b);  // b - a
double cpu_seconds();                                  // of this process, all threads
std::string current_time_text();                       // "Sat Nov 21 13:50:07 2026"
u64_t rdtsc();
double cpu_frequency();  // ticks of the counter a second; spins for 1/16 second

// Adds up the wall-clock and CPU seconds of the stretches between start() and stop().
class StopWatch {
  public:
    void start();
    void stop();  // not running: fatal error
    bool running() const { return running_; }
    double wall_seconds() const { return wall_seconds_; }
    double cpu_seconds() const { return cpu_seconds_; }

  private:
    bool running_ = false;
    Time start_{};
    double cpu_start_ = 0;
    double wall_seconds_ = 0;
    double cpu_seconds_ = 0;
};

}  // namespace znp
