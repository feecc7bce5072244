#include "foundation/event_log.hpp"

#include <gtest/gtest.h>

#include <string>

#include "text_match.hpp"

namespace znp {
namespace {

TEST(EventLog, SecondsHaveThreeDecimals) {
    EXPECT_EQ(event_seconds_text(0), "0.000");
    EXPECT_EQ(event_seconds_text(0.0004), "0.000");
    EXPECT_EQ(event_seconds_text(0.0006), "0.001");
    EXPECT_EQ(event_seconds_text(12.25), "12.250");
    EXPECT_EQ(event_seconds_text(86400.75), "86400.750");
    EXPECT_EQ(event_seconds_text(-1.5), "0.000");  // a clock that was set back
}

TEST(EventLog, ThousandthsStopAt999) {
    EXPECT_EQ(event_seconds_text(1.9994), "1.999");
    EXPECT_EQ(event_seconds_text(1.9996), "1.999");
    EXPECT_EQ(event_seconds_text(1.999999), "1.999");
}

TEST(EventLog, OneLineAnEvent) {
    EventLog log;
    EXPECT_EQ(log.text(), "");
    log.add("First");
    const std::string first = log.text();
    log.add("Second");
    EXPECT_EQ(log.text().substr(0, first.size()), first);
    const std::string line = testing::date_pattern + "\t[0-9]+\\.[0-9]{3}\t";
    EXPECT_TRUE(testing::matches(log.text(), line + "First\r\n" + line + "Second\r\n")) << log.text();
}

}  // namespace
}  // namespace znp
