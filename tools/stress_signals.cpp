#include "tools/stress_signals.hpp"

#include <atomic>

#include "shell/console.hpp"

namespace znp {

namespace {

constinit std::atomic<bool> stop_requested{false};
static_assert(std::atomic<bool>::is_always_lock_free);  // a signal handler may use it

extern "C" void note_stop_request(int signal_number) {
    if (stop_requested.exchange(true, std::memory_order_relaxed)) Console::end_by_signal(signal_number);
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
