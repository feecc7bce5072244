#include "foundation/repeat_once.hpp"

#include <atomic>

#include "shell/console.hpp"

namespace znp {

namespace {

std::atomic<u64_t> recovered_errors{0};

}  // namespace

u64_t RecoveredErrors::count() {
    return recovered_errors.load();
}

void RecoveredErrors::add() {
    recovered_errors++;
}

void tell_reattempt() {
    Console::print_error("Re-attempting...");
}

}  // namespace znp
