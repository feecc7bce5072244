#include "foundation/time.hpp"

#include <sys/time.h>
#include <x86intrin.h>

#include <cctype>
#include <ctime>

#include "foundation/fatal.hpp"

namespace znp {

namespace {

constexpr s64_t microseconds_per_second = 1'000'000;
constexpr double seconds_per_microsecond = 0.000001;
constexpr double seconds_per_clock = 0.000001;  // POSIX fixes the unit of clock()
constexpr double frequency_window = 0.0625;

}  // namespace

Time Time::now() {
    timeval now{};
    if (::gettimeofday(&now, nullptr) != 0) fatal_exit("Unable to access gettimeofday().");
    return {now.tv_sec, now.tv_usec};
}

double seconds_between(const Time& a, const Time& b) {
    s64_t seconds = b.seconds - a.seconds;
    s64_t microseconds = b.microseconds - a.microseconds;
    if (microseconds < 0) {
        seconds -= 1;
        microseconds += microseconds_per_second;
    }
    return static_cast<double>(seconds) + static_cast<double>(microseconds) * seconds_per_microsecond;
}

double cpu_seconds() {
    return static_cast<double>(std::clock()) * seconds_per_clock;
}

std::string current_time_text() {
    const std::time_t now = std::time(nullptr);
    char buffer[64] = {};
    if (::ctime_r(&now, buffer) == nullptr) return {};
    std::string text(buffer);
    for (upL_t i = 0; i < text.size(); ++i) {
        if (std::iscntrl(static_cast<unsigned char>(text[i])) != 0) text.resize(i);
    }
    return text;
}

u64_t rdtsc() {
    return __rdtsc();
}

double cpu_frequency() {
    const Time start = Time::now();
    const u64_t start_ticks = rdtsc();
    for (;;) {
        const Time now = Time::now();
        const u64_t ticks = rdtsc();
        const double seconds = seconds_between(start, now);
        if (seconds >= frequency_window) return static_cast<double>(ticks - start_ticks) / seconds;
    }
}

void StopWatch::start() {
    start_ = Time::now();
    cpu_start_ = znp::cpu_seconds();
    running_ = true;
}

void StopWatch::stop() {
    if (!running_) fatal_exit("Stopwatch is not running.");
    wall_seconds_ += seconds_between(start_, Time::now());
    cpu_seconds_ += znp::cpu_seconds() - cpu_start_;
    running_ = false;
}

}  // namespace znp
