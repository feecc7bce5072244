#include "tools/stress_signals.hpp"

#include <gtest/gtest.h>

namespace znp {
namespace {

void former_handler(int) {}

TEST(StopSignals, ARequestLastsAsLongAsTheObject) {
    for (const int signal_number : {SIGINT, SIGTERM}) {
        {
            const StopSignals signals;
            EXPECT_FALSE(StopSignals::requested());
            std::raise(signal_number);
            EXPECT_TRUE(StopSignals::requested());
        }
        EXPECT_FALSE(StopSignals::requested());
    }
}

TEST(StopSignals, FormerHandlersComeBack) {
    const auto old_interrupt = std::signal(SIGINT, former_handler);
    const auto old_terminate = std::signal(SIGTERM, former_handler);
    { const StopSignals signals; }
    EXPECT_EQ(std::signal(SIGINT, old_interrupt), former_handler);
    EXPECT_EQ(std::signal(SIGTERM, old_terminate), former_handler);
}

}  // namespace
}  // namespace znp
