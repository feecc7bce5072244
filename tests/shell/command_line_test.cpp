#include "shell/command_line.hpp"

#include <gtest/gtest.h>

namespace znp {
namespace {

TEST(CommandLine, SplitsAtTheFirstColonOnly) {
    CommandLine line({"zelmar", "-x:a:b", "plain", "empty:", ":value", ""});
    line.advance();
    EXPECT_EQ(line.key(), "-x");
    EXPECT_EQ(line.value(), "a:b");
    EXPECT_EQ(line.argument(), "-x:a:b");
    line.advance();
    EXPECT_EQ(line.key(), "plain");
    EXPECT_EQ(line.value(), "");
    line.advance();
    EXPECT_EQ(line.key(), "empty");
    EXPECT_EQ(line.value(), "");
    line.advance();
    EXPECT_EQ(line.key(), "");
    EXPECT_EQ(line.value(), "value");
    line.advance();
    EXPECT_EQ(line.key(), "");
    EXPECT_FALSE(line.has_more());
}

TEST(CommandLine, AdvancingPastTheEndThrows) {
    CommandLine line({"zelmar", "about"});
    EXPECT_TRUE(line.has_more());
    line.advance();
    EXPECT_FALSE(line.has_more());
    try {
        line.advance();
        FAIL() << "nothing was thrown";
    } catch (const std::exception& exception) {
        EXPECT_NE(dynamic_cast<const CommandLine::CommandLineException*>(&exception), nullptr);
        EXPECT_STREQ(exception.what(), "Expected more parameters.");
    }
}

TEST(CommandLine, TakesArgvWithTheProgramsPath) {
    const char* argv[] = {"program", "bench", nullptr};
    CommandLine line(2, argv);
    ASSERT_TRUE(line.has_more());
    line.advance();
    EXPECT_EQ(line.key(), "bench");
    EXPECT_FALSE(line.has_more());
}

TEST(CommandLine, AnEmptyArgvHasNothing) {
    const char* argv[] = {nullptr};
    CommandLine line(0, argv);
    EXPECT_FALSE(line.has_more());
    EXPECT_THROW(line.advance(), CommandLine::CommandLineException);
}

}  // namespace
}  // namespace znp
