#include "foundation/status_line.hpp"

#include <gtest/gtest.h>

#include <string>

#include "console_capture.hpp"

namespace znp {
namespace {

using testing::console_output;
using namespace testing::sent;
using Update = StatusLine::Update;

std::string erased(upL_t width) {
    return '\r' + std::string(width + 1, ' ') + '\r';
}

std::string drawn(StatusLine& line) {
    return console_output([&] { line.update(Update::force); });
}

TEST(StatusLine, DrawSendsColorsOnlyWhereTheyChange) {
    StatusLine line(30);
    line.add('W', "plain ");
    line.add('G', "green ");
    line.add('G', "green ");
    line.add(' ', "too ");
    line.add('R', "red");
    EXPECT_EQ(drawn(line), erased(30) + "plain " + G + "green green too " + R + "red" + W);
    EXPECT_TRUE(line.drawn());
}

TEST(StatusLine, EmptyLineIsJustErased) {
    StatusLine line(4);
    EXPECT_EQ(drawn(line), erased(4));
    line.add('R', "gone");
    line.clear();
    EXPECT_EQ(drawn(line), erased(4));
}

TEST(StatusLine, LabelStaysInFrontOfWhatIsReplaced) {
    StatusLine line(30);
    line.set_label("Summing: ");
    line.add('G', "1");
    EXPECT_EQ(drawn(line), erased(30) + "Summing: " + G + "1" + W);
    line.clear();
    line.add('G', "2");
    EXPECT_EQ(drawn(line), erased(30) + "Summing: " + G + "2" + W);
    line.set_label("Iterating: ");
    EXPECT_EQ(drawn(line), erased(30) + "Iterating: ");
}

TEST(StatusLine, LineFeedEndsTheDrawWhereAskedFor) {
    StatusLine line(10, 0, true);
    line.add('G', "ok");
    EXPECT_EQ(drawn(line), erased(10) + G + "ok" + W + "\n");
}

TEST(StatusLine, SegmentsThatJustFitStay) {
    StatusLine line(8);
    line.add('W', "1234");
    line.add('W', "5678");
    EXPECT_EQ(drawn(line), erased(8) + "12345678");
}

TEST(StatusLine, SegmentPastTheWidthIsDroppedWithAllBehindIt) {
    StatusLine line(10);
    line.add('G', "123456");
    line.add('R', "78901");
    line.add('W', "x");
    EXPECT_EQ(drawn(line), erased(10) + G + "123456" + W + " ...");
}

TEST(StatusLine, CutMarkNeedsFourFreeColumns) {
    StatusLine line(10);
    line.add('G', "1234567");
    line.add('R', "8901");
    EXPECT_EQ(drawn(line), erased(10) + G + "1234567" + W);

    StatusLine narrow(3);
    narrow.add('W', "1234");
    EXPECT_EQ(drawn(narrow), erased(3));
}

TEST(StatusLine, EraseBlanksTheWidth) {
    StatusLine line(5);
    drawn(line);
    EXPECT_EQ(console_output([&] { line.erase(); }), "\r     \r");
    EXPECT_FALSE(line.drawn());
}

TEST(StatusLine, UpdateModes) {
    StatusLine line(5, 3600);
    line.restart();
    EXPECT_EQ(console_output([&] { line.update(Update::nothing); }), "");
    EXPECT_EQ(console_output([&] { line.update(Update::if_due); }), "");  // the interval runs from restart
    EXPECT_EQ(console_output([&] { line.update(Update::force); }), erased(5));
    EXPECT_EQ(console_output([&] { line.update(Update::if_due); }), "");
}

TEST(StatusLine, FirstUpdateWithoutRestartIsDue) {
    StatusLine line(5, 3600);
    EXPECT_EQ(console_output([&] { line.update(Update::if_due); }), erased(5));
}

TEST(StatusLine, IntervalZeroRedrawsAtEachUpdate) {
    StatusLine line(5, 0);
    line.restart();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(console_output([&] { line.update(Update::if_due); }), erased(5));
    }
}

TEST(StatusLine, RestartStampsTheStart) {
    StatusLine line;
    const Time before = Time::now();
    line.restart();
    EXPECT_GE(seconds_between(before, line.start()), 0);
    EXPECT_GE(seconds_between(line.start(), Time::now()), 0);
}

}  // namespace
}  // namespace znp
