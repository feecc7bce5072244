#include "tools/stress_signals.hpp"

#include <unistd.h>

#include <atomic>
#include <cstring>

#include "shell/console.hpp"

namespace znp {

namespace {

constinit std::atomic<bool> stop_requested{false};
static_assert(std::atomic<bool>::is_always_lock_free);  // a signal handler may use it

extern "C" void note_stop_request(int signal_number) {
    if (!stop_requested.exchange(true, std::memory_order_relaxed)) return;
    // The console may be in the middle of a line, on a stream that a handler must not touch.
    [[maybe_unused]] const ssize_t written =
        write(STDOUT_FILENO, Console::reset_sequence, std::strlen(Console::reset_sequence));
    signal(signal_number, SIG_DFL);
    raise(signal_number);  // delivered when this handler returns
}

}  // namespace

StopSignals::StopSignals() {
    struct sigaction request {};
    request.sa_handler = note_stop_request;
    request.sa_flags = SA_RESTART;
    sigemptyset(&request.sa_mask);
    sigaction(SIGINT, &request, &interrupt_);
    sigaction(SIGTERM, &request, &terminate_);
}

StopSignals::~StopSignals() {
    sigaction(SIGINT, &interrupt_, nullptr);
    sigaction(SIGTERM, &terminate_, nullptr);
    stop_requested.store(false, std::memory_order_relaxed);
}

bool StopSignals::requested() {
    return stop_requested.load(std::memory_order_relaxed);
}

}  // namespace znp
