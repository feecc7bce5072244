#include "digits/basic_text_writer.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>

#include "console_capture.hpp"
#include "file_faults.hpp"
#include "foundation/exceptions.hpp"
#include "test_seed.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::dying;
using ::testing::ExitedWithCode;
using testing::file_text;
using testing::FileSizeLimit;
using testing::SmallDisk;

class BasicTextWriterTest : public ::testing::Test {
  protected:
    std::string path(const std::string& name = "digits.txt") const { return folder_.path() + "/" + name; }
    std::string unverified() const { return path("digits.txt.unverified"); }
    std::wstring wide(const std::string& name = "digits.txt") const {
        return folder_.wide_path() + L"/" + std::wstring(name.begin(), name.end());
    }

    // Writes the digits, closes, and gives the file its name; what the caller's buffer holds then.
    std::string write(std::string first_digits, std::string digits, bool convert, u64_t radix) const {
        BasicTextWriter writer(wide(), first_digits, convert, radix);
        writer.write(digits.data(), digits.size());
        writer.close();
        writer.publish();
        return digits;
    }

    // What body() throws, with nothing on the console but what `printed` receives.
    template <class Exception = zn_exception>
    static std::optional<Exception> thrown_by(const std::function<void()>& body,
                                              std::string* printed = nullptr) {
        std::optional<Exception> result;
        const std::string text = console_output([&] {
            try {
                body();
            } catch (const Exception& exception) {
                result = exception;
            }
        });
        if (printed != nullptr) *printed = text;
        return result;
    }

    const testing::TemporaryFolder folder_;
};

using BasicTextWriterDeathTest = BasicTextWriterTest;

std::string values(std::initializer_list<int> digits) {
    std::string text;
    for (const int digit : digits) text.push_back(static_cast<char>(digit));
    return text;
}

TEST_F(BasicTextWriterTest, DecimalDigitsBehindThePoint) {
    write("3.14159", values({1, 4, 1, 5, 9, 0}), true, 10);
    EXPECT_EQ(file_text(path()), "3.141590");
}

TEST_F(BasicTextWriterTest, HexadecimalDigitsInLowerCase) {
    write("a.", values({0, 9, 10, 11, 12, 13, 14, 15}), true, 16);
    EXPECT_EQ(file_text(path()), "a.09abcdef");
}

TEST_F(BasicTextWriterTest, FirstDigitsEndWithTheirPoint) {
    write("3.", "", true, 10);
    EXPECT_EQ(file_text(path()), "3.");
    write("314.15", "", true, 10);
    EXPECT_EQ(file_text(path()), "314.");
    write("", values({7}), true, 10);
    EXPECT_EQ(file_text(path()), "7");
}

TEST_F(BasicTextWriterTest, TextGoesOutAsItIs) {
    EXPECT_EQ(write("3.", "12ab", false, 0), "12ab");
    EXPECT_EQ(file_text(path()), "3.12ab");
}

TEST_F(BasicTextWriterTest, TheBufferIsConvertedInPlace) {
    EXPECT_EQ(write("3.", values({1, 15}), true, 16), "1f");
}

TEST_F(BasicTextWriterTest, ManyWritesAndLengths) {
    auto rng = testing::make_rng(2);
    std::string expected = "0.";
    BasicTextWriter writer(wide(), "0.", true, 10);
    for (const upL_t length : {0u, 1u, 63u, 64u, 65u, 4095u, 4096u, 4097u, 100000u, 3u}) {
        std::string digits(length, '\0');
        for (char& digit : digits) {
            digit = static_cast<char>(rng() % 10);
            expected.push_back(static_cast<char>('0' + digit));
        }
        writer.write(digits.data(), digits.size());
    }
    writer.close();
    EXPECT_EQ(file_text(unverified()), expected);
    writer.close();  // a closed file stays closed
}

TEST_F(BasicTextWriterTest, ReplacesAnOldFile) {
    folder_.write("digits.txt", std::string(1000, 'x'));
    write("3.", values({1}), true, 10);
    EXPECT_EQ(file_text(path()), "3.1");
}

TEST_F(BasicTextWriterTest, TheDestructorClosesWhatIsOpen) {
    {
        BasicTextWriter writer(wide(), "3.", true, 10);
        std::string digits = values({1, 4});
        writer.write(digits.data(), digits.size());
    }
    EXPECT_EQ(file_text(unverified()), "3.14");
    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(BasicTextWriterTest, FirstDigitsWithoutAPoint) {
    const auto failure = thrown_by([&] { BasicTextWriter(wide(), "314", true, 10); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, static_cast<s32_t>(0x80000001));
    EXPECT_EQ(failure->text, "No decimal place was found.");
    EXPECT_TRUE(folder_.is_empty());
}

TEST_F(BasicTextWriterTest, UnknownRadix) {
    const auto failure = thrown_by([&] { BasicTextWriter(wide(), "3.", true, 8); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, static_cast<s32_t>(0x80001003));
    EXPECT_STREQ(failure->message, "Unsupported Radix");
    EXPECT_TRUE(folder_.is_empty());
}

TEST_F(BasicTextWriterTest, FolderThatIsNotThere) {
    std::string printed;
    const auto failure = thrown_by<FileException>(
        [&] { BasicTextWriter(wide("missing/digits.txt"), "3.", true, 10); }, &printed);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, ENOENT);
    EXPECT_STREQ(failure->title, "Unable to create file.");
    EXPECT_EQ(failure->path, wide("missing/digits.txt.unverified"));
    EXPECT_EQ(printed, "");
}

// Of the name that the file is to have, and of the one that it has until then.
TEST_F(BasicTextWriterTest, DirectoryInTheWay) {
    for (const std::string& name : {path(), unverified()}) {
        std::filesystem::create_directory(name);
        const auto failure = thrown_by<FileException>([&] { BasicTextWriter(wide(), "3.", true, 10); });
        ASSERT_TRUE(failure);
        EXPECT_EQ(failure->code, EISDIR);
        EXPECT_STREQ(failure->title, "Unable to create file.");
        EXPECT_EQ(failure->path, std::wstring(name.begin(), name.end()));
        EXPECT_TRUE(std::filesystem::is_directory(name));
        std::filesystem::remove(name);
        EXPECT_TRUE(folder_.is_empty());
    }
}

// ---- The name and what the file holds ---------------------------------------------------------------------

// What a process that is killed leaves, at every step.
TEST_F(BasicTextWriterTest, TheOldFileStaysUntilTheNewOneHasItsName) {
    folder_.write("digits.txt", "old");
    std::string digits = values({1, 4});
    BasicTextWriter writer(wide(), "3.", true, 10);
    EXPECT_EQ(file_text(path()), "old");
    writer.write(digits.data(), digits.size());
    EXPECT_EQ(file_text(path()), "old");
    writer.close();
    EXPECT_EQ(file_text(path()), "old");
    EXPECT_EQ(file_text(unverified()), "3.14");
    writer.publish();
    EXPECT_EQ(file_text(path()), "3.14");
    EXPECT_FALSE(std::filesystem::exists(unverified()));
}

// To a file, to where one is to come, over two links, and with a relative one.
TEST_F(BasicTextWriterTest, LinksAreFollowed) {
    const testing::TemporaryFolder other;
    const std::string target = other.path() + "/other.txt";
    namespace fs = std::filesystem;
    for (const bool relative : {false, true}) {
        fs::create_symlink(relative ? "../" + fs::path(other.path()).filename().string() + "/link" : target,
                           path());
        fs::create_symlink("other.txt", other.path() + "/link");
        for (const bool old : {false, true}) {
            if (old) other.write("other.txt", "old");
            {
                const BasicTextWriter writer(wide(), "3.", true, 10);
                EXPECT_EQ(file_text(target), old ? "old" : "");
                EXPECT_TRUE(fs::exists(target + ".unverified"));
            }
            write("3.", values({1, 4}), true, 10);
            EXPECT_TRUE(fs::is_symlink(path()));
            EXPECT_FALSE(fs::exists(target + ".unverified"));
            EXPECT_EQ(file_text(target), "3.14");
            fs::remove(target);
        }
        fs::remove(path());
        fs::remove(other.path() + "/link");
        EXPECT_TRUE(folder_.is_empty());
    }
}

TEST_F(BasicTextWriterTest, LinksInACircle) {
    std::filesystem::create_symlink("digits.txt", path());
    write("3.", values({1, 4}), true, 10);  // as where the name is free
    EXPECT_EQ(file_text(path()), "3.14");
}

TEST_F(BasicTextWriterTest, ADeviceIsWrittenToInItsPlace) {
    std::filesystem::create_symlink("/dev/null", path());
    std::string digits = values({1, 4});
    BasicTextWriter writer(wide(), "3.", true, 10);
    writer.write(digits.data(), digits.size());
    writer.close();
    EXPECT_TRUE(writer.holds(2, 314));
    EXPECT_FALSE(writer.holds(2, 315));
    writer.publish();
    EXPECT_TRUE(std::filesystem::is_symlink(path()));
    EXPECT_FALSE(std::filesystem::exists(unverified()));
}

TEST_F(BasicTextWriterTest, ALeftOverUnverifiedFileIsReplaced) {
    folder_.write("digits.txt.unverified", std::string(1000, 'x'));
    write("3.", values({1, 4}), true, 10);
    EXPECT_EQ(file_text(path()), "3.14");
    EXPECT_FALSE(std::filesystem::exists(unverified()));
}

// A text without an end to wait for ENTER in: the program ends.
TEST_F(BasicTextWriterDeathTest, AFileThatCannotHaveItsName) {
    std::string digits = values({1, 4});
    BasicTextWriter writer(wide(), "3.", true, 10);
    writer.write(digits.data(), digits.size());
    writer.close();
    std::filesystem::create_directory(path());
    folder_.write("digits.txt/in the way", "");
    EXPECT_EXIT(dying([&] { writer.publish(); }, "\n"), ExitedWithCode(1),
                "Unable to rename file\\.(.|\n)*Re-attempting\\.\\.\\.(.|\n)*Unable to rename file\\.");
    EXPECT_EQ(file_text(unverified()), "3.14");
}

TEST_F(BasicTextWriterTest, HoldsTheDigitsOfTheHashAndNoOthers) {
    for (const u64_t radix : {u64_t{10}, u64_t{16}}) {
        std::string digits = values({1, 4, 1, 5, 9});
        BasicTextWriter writer(wide(), "3.1", true, radix);
        writer.write(digits.data(), 3);
        writer.write(digits.data() + 3, 2);
        const u64_t hash = 314159;  // shorter than a group: the digits weigh ten in both radices
        const u64_t expected = radix == 10 ? hash : 3 * 100000 + 0x14159;
        EXPECT_FALSE(writer.holds(5, expected));  // not all of it has left the stream
        writer.close();
        EXPECT_TRUE(writer.holds(5, expected));
        EXPECT_FALSE(writer.holds(4, expected));
        EXPECT_FALSE(writer.holds(5, expected + 1));
        std::filesystem::resize_file(unverified(), 6);
        EXPECT_FALSE(writer.holds(5, expected));
        std::filesystem::resize_file(unverified(), 8);
        EXPECT_FALSE(writer.holds(5, expected));
        std::filesystem::remove(unverified());
        EXPECT_FALSE(writer.holds(5, expected));
    }
}

TEST_F(BasicTextWriterTest, ByteThatIsNoDigitIsNotHeld) {
    std::string digits = values({1, 4 + 16});
    BasicTextWriter writer(wide(), "3.", true, 10);
    writer.write(digits.data(), 2);
    writer.close();
    EXPECT_FALSE(writer.holds(2, 314 + 16));
    EXPECT_FALSE(writer.holds(2, 314));
}

TEST_F(BasicTextWriterTest, TextOfNoRadixIsNotHeld) {
    std::string digits = "14";
    BasicTextWriter writer(wide(), "3.", false, 0);
    writer.write(digits.data(), 2);
    writer.close();
    EXPECT_FALSE(writer.holds(2, 314));
}

// More than the stream holds back: the write itself fails.
TEST_F(BasicTextWriterTest, FullDiskOnWriting) {
    testing::put_on_full_disk(folder_, "digits.txt");
    std::string printed;
    const auto failure = thrown_by([&] { write("3.", std::string(100000, '\1'), true, 10); }, &printed);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, ENOSPC);
    EXPECT_STREQ(failure->message, "Error writing to file.");
    EXPECT_EQ(failure->wide_text, wide());
    EXPECT_EQ(printed.rfind("errno: " + std::to_string(ENOSPC) + "\n", 0), 0u) << printed;
}

// So little that only closing shows it.
TEST_F(BasicTextWriterTest, FullDiskOnClosing) {
    testing::put_on_full_disk(folder_, "digits.txt");
    std::string printed;
    const auto failure = thrown_by([&] { write("3.", values({1, 4}), true, 10); }, &printed);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, ENOSPC);
    EXPECT_STREQ(failure->message, "Unable to close file.");
    EXPECT_EQ(failure->wide_text, wide());
    EXPECT_EQ(printed.rfind("errno: " + std::to_string(ENOSPC) + "\n", 0), 0u) << printed;
}

TEST_F(BasicTextWriterTest, AFileThatCannotGrow) {
    std::optional<zn_exception> failure;
    {
        const FileSizeLimit limit(50000);
        failure = thrown_by([&] { write("3.", std::string(100000, '\1'), true, 10); });
    }
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, EFBIG);
    EXPECT_STREQ(failure->message, "Error writing to file.");
    EXPECT_EQ(std::filesystem::file_size(unverified()), 50000u);
}

TEST_F(BasicTextWriterTest, ADiskThatBecomesFull) {
    const SmallDisk result = testing::on_small_disk(64, [](const std::string& folder) {
        const std::wstring file = std::wstring(folder.begin(), folder.end()) + L"/digits.txt";
        bool fits = false;
        const auto failure = thrown_by([&] {
            std::string digits(40000, '\1');
            BasicTextWriter writer(file, "3.", true, 10);
            writer.write(digits.data(), digits.size());
            fits = true;
            digits.assign(40000, '\1');
            writer.write(digits.data(), digits.size());
        });
        return fits && failure && failure->code == ENOSPC && failure->wide_text == file + L".unverified";
    });
    if (result == SmallDisk::not_permitted) GTEST_SKIP() << "file systems cannot be mounted here";
    EXPECT_EQ(result, SmallDisk::passed);
}

// No exception may leave a destructor.
TEST_F(BasicTextWriterDeathTest, FullDiskInTheDestructor) {
    testing::put_on_full_disk(folder_, "digits.txt");
    EXPECT_EXIT(dying([&] { BasicTextWriter(wide(), "3.", true, 10); }), ExitedWithCode(1),
                "Unable to close file.");
}

}  // namespace
}  // namespace znp
