#include "foundation/event_log.hpp"

#include <gtest/gtest.h>

#include <regex>
#include <string>

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
    const std::string line =
        "[A-Z][a-z]{2} [A-Z][a-z]{2} [ \\d]\\d \\d\\d:\\d\\d:\\d\\d \\d{4}\t\\d+\\.\\d{3}\t";
    const std::regex form(line + "First\r\n" + line + "Second\r\n");
    EXPECT_TRUE(std::regex_match(log.text(), form)) << log.text();
}

}  // namespace
}  // namespace znp
