#include "foundation/exceptions.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <exception>
#include <memory>
#include <string>
#include <type_traits>

#include "console_capture.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::dying;
using namespace testing::sent;
using ::testing::Eq;
using ::testing::ExitedWithCode;

std::string heading(const std::string& title) {
    return "\n\n" + W + "Exception Encountered: " + R + title + W + "\n";
}

TEST(Exceptions, DefaultsOfARecord) {
    const zn_exception e(7);
    EXPECT_EQ(e.code, 7);
    EXPECT_EQ(e.message, nullptr);
    EXPECT_EQ(e.text, "");
    EXPECT_EQ(e.wide_text, L"");
    EXPECT_EQ(e.action, action::print_and_throw);
    EXPECT_STREQ(e.title, "Generic Exception");
    EXPECT_EQ(e.location, nullptr);
    EXPECT_STREQ(e.what(), std::exception().what());
}

TEST(Exceptions, RaiseThrowsACopy) {
    zn_exception e(1, "message", "text", L"wide", 2, "title", "where()");
    try {
        e.raise();
    } catch (const zn_exception& caught) {
        EXPECT_NE(&caught, &e);
        EXPECT_EQ(caught.code, 1);
        EXPECT_STREQ(caught.message, "message");
        EXPECT_EQ(caught.text, "text");
        EXPECT_EQ(caught.wide_text, L"wide");
        EXPECT_STREQ(caught.title, "title");
        EXPECT_STREQ(caught.location, "where()");
    }
}

TEST(Exceptions, RaiseOfAFileExceptionKeepsItsTypeAndPath) {
    const FileException file(2, "Unable to open file.", L"/some/path");
    const zn_exception& held = file;
    try {
        held.raise();
        FAIL();
    } catch (const FileException& caught) {
        EXPECT_EQ(caught.path, L"/some/path");
        EXPECT_EQ(caught.wide_text, L"/some/path");
        EXPECT_EQ(caught.code, 2);
        EXPECT_EQ(caught.action, action::throw_silently);
        EXPECT_STREQ(caught.title, "Unable to open file.");
        EXPECT_EQ(caught.message, nullptr);
    }
}

template <class exception_class>
void expect_raise_keeps_type(const exception_class& exception) {
    const zn_exception& held = exception;
    EXPECT_THROW(held.raise(), exception_class);
    static_assert(std::is_base_of_v<zn_exception, exception_class>);
    static_assert(!std::is_convertible_v<exception_class*, zn_error*>);
}

TEST(Exceptions, RaiseKeepsTheMostDerivedType) {
    expect_raise_keeps_type(zn_exception(1));
    expect_raise_keeps_type(FileException(1, "title", L""));
    expect_raise_keeps_type(BufferTooSmallException("where()", 1, 2));
    expect_raise_keeps_type(ConvolutionTooSmallException("VST", 2, 1));
    expect_raise_keeps_type(InvalidTransformParametersException("Transform length is too small."));
    expect_raise_keeps_type(UnsupportedValueException::negative("where()"));
    expect_raise_keeps_type(zl_BSRModularCheckFailed("text"));
    expect_raise_keeps_type(Threads::ThreadException(11, "Unable to create thread."));
    expect_raise_keeps_type(Serialization::ParseException("message"));
}

TEST(Exceptions, FieldsOfTheArithmeticClasses) {
    const BufferTooSmallException buffer("BasicIntR::operator+=()", 3, 5);
    EXPECT_STREQ(buffer.title, "Buffer is too small.");
    EXPECT_STREQ(buffer.location, "BasicIntR::operator+=()");
    EXPECT_EQ(buffer.size_given, 3u);
    EXPECT_EQ(buffer.size_needed, 5u);

    const ConvolutionTooSmallException convolution("VST", 9, 8);
    EXPECT_STREQ(convolution.title, "Convolution length is too small.");
    EXPECT_EQ(convolution.code, 1);
    EXPECT_EQ(convolution.action, action::end_program);
    EXPECT_EQ(convolution.algorithm, "VST");
    EXPECT_EQ(convolution.size_needed, 9u);
    EXPECT_EQ(convolution.size_given, 8u);

    const auto negative = UnsupportedValueException::negative("BasicIntO::sub()");
    EXPECT_STREQ(negative.title, "Value is unsupported.");
    EXPECT_STREQ(negative.message, "A negative value was encountered.");
    EXPECT_STREQ(negative.location, "BasicIntO::sub()");
    EXPECT_EQ(negative.code, 1);
    EXPECT_EQ(negative.action, action::end_program);
    EXPECT_STREQ(UnsupportedValueException::zero("x()").message, "Zero was encountered.");

    const Threads::ThreadException thread(EAGAIN, "Unable to create thread.");
    EXPECT_EQ(thread.code, EAGAIN);
    EXPECT_EQ(thread.action, action::end_program);

    const zl_BSRModularCheckFailed check("a\nb");
    EXPECT_EQ(check.code, 2);
    EXPECT_EQ(check.text, "a\nb");
}

TEST(Exceptions, ErrorPassesHandlersOfExceptions) {
    static_assert(!std::is_base_of_v<zn_exception, zn_error>);
    static_assert(std::is_base_of_v<std::exception, zn_error>);
    try {
        throw zn_error(zn_exception(4, "inner"), "the note");
    } catch (const zn_exception&) {
        FAIL();
    } catch (const std::exception& e) {
        EXPECT_STREQ(e.what(), "the note");
        const auto* error = dynamic_cast<const zn_error*>(&e);
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(error->exception.code, 4);
        EXPECT_STREQ(error->exception.message, "inner");
    }
    EXPECT_STREQ(zn_error(zn_exception(4), nullptr).what(), std::exception().what());
}

TEST(Fire, ActionZeroOrLessDropsTheFailure) {
    for (const s32_t number : {0, -1, -1000}) {
        bool carried_on = false;
        const std::string output = console_output([&] {
            fire(zn_exception(5, "message", {}, {}, number));
            carried_on = true;
        });
        EXPECT_TRUE(carried_on);
        EXPECT_EQ(output, "");
    }
}

TEST(Fire, ActionTwoThrowsWithoutPrinting) {
    EXPECT_EQ(console_output([] {
                  EXPECT_THROW(fire(FileException(ENOENT, "Unable to open file.", L"x")), FileException);
              }),
              "");
}

TEST(Fire, ActionThreeOrMorePrintsAndThrows) {
    for (const s32_t number : {3, 4, 99}) {
        const std::string output = console_output(
            [&] { EXPECT_THROW(fire(zn_exception(-3, "Divide", {}, {}, number)), zn_exception); });
        EXPECT_EQ(output, heading("Generic Exception") + "Error Code: -3\nDivide\n\n\n" + W);
    }
}

using FireDeathTest = ::testing::Test;

TEST(FireDeathTest, ActionOneEndsTheProgram) {
    const std::string report = heading("Unable to create thread.") + "Error Code: 11\n\n\n";
    EXPECT_EXIT(dying([] { fire(Threads::ThreadException(11, "Unable to create thread.")); }),
                ExitedWithCode(1), Eq(report + "\n" + R + W + "\n" + pause + reset));
}

TEST(PrintException, ReportWithNothingButItsCode) {
    EXPECT_EQ(console_output([] { print_exception(zn_exception(12)); }),
              heading("Generic Exception") + "Error Code: 12\n\n\n");
}

TEST(PrintException, ReportWithEveryPart) {
    const zn_exception e(static_cast<s32_t>(0x80000001), "the message", "the text", L"the path", 3,
                         "The Title", "Class::function()");
    EXPECT_EQ(
        console_output([&] { print_exception(e); }),
        heading("The Title") +
            "Error Code: -2147483647\nLocation: Class::function()\nthe message\nthe text\nthe path\n\n\n");
}

TEST(ErrnoException, MessageOfEachNumber) {
    const std::pair<int, const char*> table[] = {
        {2, "File Does Not Exist"}, {5, "Hardware Error"},         {12, "Not Enough Memory"},
        {13, "Access Denied"},      {28, "Disk is Full"},          {1, "Unknown C/C++ Error"},
        {0, "Unknown C/C++ Error"}, {9999, "Unknown C/C++ Error"},
    };
    for (const auto& [number, message] : table) {
        const zn_exception e = errno_exception(number, L"/a/path");
        EXPECT_EQ(e.code, number);
        EXPECT_STREQ(e.message, message) << number;
        EXPECT_EQ(e.wide_text, L"/a/path");
        EXPECT_EQ(e.text, "");
        EXPECT_EQ(e.action, 3);
        EXPECT_STREQ(e.title, "Generic Exception");
    }
}

TEST(ErrnoException, UnnamedNumberReachesTheReport) {
    const std::string output = console_output([] { print_exception(errno_exception(110, L"f")); });
    EXPECT_EQ(output, heading("Generic Exception") + "Error Code: 110\nUnknown C/C++ Error\nf\n\n\n");
}

}  // namespace
}  // namespace znp
