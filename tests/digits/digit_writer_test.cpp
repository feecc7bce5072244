#include "digits/digit_writer.hpp"

#include <gtest/gtest.h>

#include "console_capture.hpp"
#include "file_faults.hpp"

namespace znp {
namespace {

using testing::dying;
using ::testing::ExitedWithCode;
using testing::file_text;

DigitFileParameters pi_in(const std::wstring& path) {
    return {"Pi", "Chudnovsky", path, 0, nullptr};
}

TEST(DigitWriter, FileNames) {
    EXPECT_EQ(digit_file_stem(pi_in(L""), 10), L"Pi - Dec - Chudnovsky");
    EXPECT_EQ(digit_file_stem(pi_in(L""), 16), L"Pi - Hex - Chudnovsky");
}

TEST(DigitWriter, ASeparatorUnlessThereIsOne) {
    EXPECT_EQ(digit_file_stem(pi_in(L"out"), 10), L"out/Pi - Dec - Chudnovsky");
    EXPECT_EQ(digit_file_stem(pi_in(L"out/"), 10), L"out/Pi - Dec - Chudnovsky");
    EXPECT_EQ(digit_file_stem(pi_in(L"out\\"), 10), L"out\\Pi - Dec - Chudnovsky");
    EXPECT_EQ(digit_file_stem(pi_in(L"/"), 16), L"/Pi - Hex - Chudnovsky");
    EXPECT_EQ(digit_file_stem({"Sqrt(2)", "Newton's Method", L"a b", 0, nullptr}, 16),
              L"a b/Sqrt(2) - Hex - Newton's Method");
}

TEST(DigitWriter, OpensATextFile) {
    const testing::TemporaryFolder folder;
    for (const u64_t radix : {u64_t{10}, u64_t{16}}) {
        std::string digits = "\1\4\1";
        if (radix == 16) digits = "\2\4\17";
        const auto writer = open_digit_writer(pi_in(folder.wide_path()), radix, "3.99");
        writer->write(digits.data(), digits.size());
        writer->close();
        writer->publish();
    }
    EXPECT_EQ(file_text(folder.path() + "/Pi - Dec - Chudnovsky.txt"), "3.141");
    EXPECT_EQ(file_text(folder.path() + "/Pi - Hex - Chudnovsky.txt"), "3.24f");
}

TEST(DigitWriterDeathTest, OtherRadices) {
    for (const u64_t radix : {u64_t{0}, u64_t{2}, u64_t{26}}) {
        EXPECT_EXIT(dying([&] { static_cast<void>(open_digit_writer(pi_in(L""), radix, "3.")); }),
                    ExitedWithCode(1), "Invalid Base");
    }
}

TEST(DigitWriterDeathTest, CompressedFiles) {
    const testing::TemporaryFolder folder;
    for (const u64_t digits_per_file : {u64_t{1'000'000}, ~u64_t{0}}) {
        DigitFileParameters parameters = pi_in(folder.wide_path());
        parameters.digits_per_file = digits_per_file;
        EXPECT_EXIT(dying([&] { static_cast<void>(open_digit_writer(parameters, 10, "3.")); }),
                    ExitedWithCode(1), "Compressed output is not available in this version yet.");
    }
    EXPECT_TRUE(folder.is_empty());
}

}  // namespace
}  // namespace znp
