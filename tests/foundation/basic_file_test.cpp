#include "foundation/basic_file.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>

#include "console_capture.hpp"
#include "foundation/exceptions.hpp"
#include "foundation/strings.hpp"
#include "temporary_folder.hpp"

namespace znp {
namespace {

using testing::console_output;
using testing::dying;
using namespace testing::sent;
using ::testing::Eq;
using ::testing::ExitedWithCode;

class BasicFileTest : public ::testing::Test {
  protected:
    std::wstring path(const wchar_t* name) const { return join_path(folder_, name); }

    static void write_text(const std::wstring& path, const std::string& text) {
        BasicFile file;
        file.create(path, false);
        ASSERT_EQ(file.write(text.data(), text.size()), text.size());
    }

    static std::string read_text(const std::wstring& path) {
        BasicFile file;
        file.open(path, false);
        char buffer[64];
        return std::string(buffer, file.read(buffer, sizeof buffer));
    }

    const testing::TemporaryFolder temporary_;
    const std::wstring folder_ = temporary_.wide_path();
};

using BasicFileDeathTest = BasicFileTest;

TEST_F(BasicFileTest, WritesSeeksAndReads) {
    BasicFile file;
    EXPECT_FALSE(file.is_open());
    file.create(path(L"a"), false);
    EXPECT_TRUE(file.is_open());
    EXPECT_EQ(file.path(), path(L"a"));
    EXPECT_EQ(file.write("0123456789", 10), 10u);
    file.seek(4);
    char buffer[16] = {};
    EXPECT_EQ(file.read(buffer, 16), 6u);
    EXPECT_STREQ(buffer, "456789");
    file.seek(2);
    EXPECT_EQ(file.write("xy", 2), 2u);
    file.close();
    EXPECT_FALSE(file.is_open());
    file.close();
    EXPECT_EQ(read_text(path(L"a")), "01xy456789");
}

TEST_F(BasicFileTest, CreateEmptiesAnOldFileAndOpenDoesNot) {
    write_text(path(L"a"), "old text");
    EXPECT_EQ(read_text(path(L"a")), "old text");
    write_text(path(L"a"), "new");
    EXPECT_EQ(read_text(path(L"a")), "new");
}

TEST_F(BasicFileTest, SeekBeyondFourGigabytes) {
    const ufL_t far = (ufL_t{1} << 33) + 5;
    BasicFile file;
    file.create(path(L"sparse"), false);
    file.seek(far);
    EXPECT_EQ(file.write("z", 1), 1u);
    file.seek(far);
    char c = 0;
    EXPECT_EQ(file.read(&c, 1), 1u);
    EXPECT_EQ(c, 'z');
    file.delete_and_close();
    EXPECT_FALSE(file_exists(path(L"sparse")));
}

TEST_F(BasicFileTest, MoveEmptiesTheSource) {
    BasicFile a;
    a.create(path(L"a"), false);
    BasicFile b(std::move(a));
    EXPECT_FALSE(a.is_open());  // NOLINT(bugprone-use-after-move): the state after a move is promised
    EXPECT_EQ(a.path(), L"");
    EXPECT_EQ(b.path(), path(L"a"));
    EXPECT_EQ(b.write("moved", 5), 5u);

    BasicFile c;
    c.create(path(L"c"), false);
    EXPECT_EQ(c.write("closed", 6), 6u);
    c = std::move(b);
    EXPECT_FALSE(b.is_open());  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(c.path(), path(L"a"));
    EXPECT_EQ(read_text(path(L"c")), "closed");
    BasicFile& same = c;
    c = std::move(same);
    EXPECT_TRUE(c.is_open());
    c.close();
    EXPECT_EQ(read_text(path(L"a")), "moved");
}

TEST_F(BasicFileTest, OpenAgainClosesTheFirstFile) {
    write_text(path(L"b"), "b");
    BasicFile file;
    file.create(path(L"a"), false);
    file.write("first", 5);
    file.open(path(L"b"), false);
    EXPECT_EQ(read_text(path(L"a")), "first");
    EXPECT_EQ(file.path(), path(L"b"));
}

TEST_F(BasicFileTest, FailureWithoutRetryThrowsSilently) {
    BasicFile file;
    const std::string output = console_output([&] {
        try {
            file.open(path(L"missing"), false);
            ADD_FAILURE();
        } catch (const FileException& e) {
            EXPECT_EQ(e.code, ENOENT);
            EXPECT_EQ(e.path, path(L"missing"));
            EXPECT_EQ(e.wide_text, path(L"missing"));
            EXPECT_STREQ(e.title, "Unable to open file.");
            EXPECT_EQ(e.action, action::throw_silently);
        }
        try {
            file.create(path(L"no folder/x"), false);
            ADD_FAILURE();
        } catch (const FileException& e) {
            EXPECT_EQ(e.code, ENOENT);
            EXPECT_STREQ(e.title, "Unable to create file.");
        }
    });
    EXPECT_EQ(output, "");
    EXPECT_FALSE(file.is_open());
}

std::string open_round(const std::string& title, const std::wstring& path) {
    return R + title + "\n" + w_to_a_direct(path) + "\nerrno: 2\n\nRe-attempting...\n" + W + pause;
}

TEST_F(BasicFileDeathTest, RetryLoopsEndAtTheEndOfInput) {
    const std::wstring missing = path(L"missing");
    const std::string opening = open_round("Unable to open file.", missing);
    EXPECT_EXIT(dying([&] { BasicFile().open(missing, true); }, "\n\n"), ExitedWithCode(1),
                Eq(opening + opening + opening + end_of_input));

    const std::wstring nowhere = path(L"no folder/x");
    EXPECT_EXIT(dying([&] { BasicFile().create(nowhere, true); }), ExitedWithCode(1),
                Eq(open_round("Unable to create file.", nowhere) + end_of_input));

    EXPECT_EXIT(dying([&] { rename_file(missing, path(L"to")); }), ExitedWithCode(1),
                Eq(R + "Unable to rename file.\n" + w_to_a_direct(path(L"to")) + "\nRe-attempting...\n" + W +
                   pause + end_of_input));
}

// Runs body(), which waits for ENTER; mend() runs while it waits, then ENTER is pressed.
template <class Body, class Mend>
std::string output_when_mended(const Body& body, const Mend& mend) {
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    testing::StdinText input(ends[0]);
    testing::StdoutCapture capture;
    std::thread user([&] {
        while (capture.text_so_far().find("Press ENTER") == std::string::npos) std::this_thread::yield();
        mend();
        if (::write(ends[1], "\n", 1) != 1) std::abort();
        ::close(ends[1]);
    });
    body();
    user.join();
    return capture.text();
}

TEST_F(BasicFileTest, RetrySucceedsOnceTheUserHasMendedTheCause) {
    const std::wstring wanted = path(L"wanted");
    BasicFile file;
    EXPECT_EQ(output_when_mended([&] { file.open(wanted, true); },
                                 [&] {
                                     std::FILE* f = std::fopen(w_to_a_direct(wanted).c_str(), "wb");
                                     if (f != nullptr) std::fclose(f);
                                 }),
              open_round("Unable to open file.", wanted));
    EXPECT_EQ(file.path(), wanted);

    const std::wstring inside = path(L"folder/x");
    EXPECT_EQ(
        output_when_mended([&] { file.create(inside, true); }, [&] { make_directory(path(L"folder")); }),
        open_round("Unable to create file.", inside));
    EXPECT_EQ(file.path(), inside);

    const std::wstring target = path(L"other/x");
    file.close();
    EXPECT_EQ(
        output_when_mended([&] { rename_file(inside, target); }, [&] { make_directory(path(L"other")); }),
        R + "Unable to rename file.\n" + w_to_a_direct(target) + "\nRe-attempting...\n" + W + pause);
    EXPECT_TRUE(file_exists(target));
    EXPECT_FALSE(file_exists(inside));
}

TEST_F(BasicFileTest, CloseThatFailsCanBeTried) {
    BasicFile file;
    EXPECT_TRUE(file.try_close());
    file.create(path(L"a"), false);
    EXPECT_TRUE(file.try_close());

    file.create(L"/dev/full", false);
    file.write("x", 1);
    errno = 0;
    EXPECT_FALSE(file.try_close());
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_FALSE(file.is_open());
}

TEST_F(BasicFileDeathTest, CloseThatFailsIsFatal) {
    EXPECT_EXIT(dying([] {
                    BasicFile file;
                    file.create(L"/dev/full", false);
                    file.write("x", 1);
                    file.close();
                }),
                ExitedWithCode(1), Eq(R + "\n" + R + "Unable to close file." + W + "\n" + pause + reset));
}

TEST_F(BasicFileDeathTest, SeekThatFailsIsFatal) {
    EXPECT_EXIT(dying([&] {
                    BasicFile file;
                    file.create(path(L"a"), false);
                    file.seek(~ufL_t{0});
                }),
                ExitedWithCode(1),
                Eq("errno: " + std::to_string(EINVAL) + "\n\n" + R + "Unable to move file pointer." + W +
                   "\n" + pause + reset));
}

TEST_F(BasicFileTest, FileSystemHelpersIgnoreTheirFailures) {
    EXPECT_FALSE(file_exists(path(L"x")));
    delete_file(path(L"x"));
    make_directory(path(L"sub"));
    make_directory(path(L"sub"));
    EXPECT_TRUE(std::filesystem::is_directory(w_to_a_direct(path(L"sub"))));
    write_text(path(L"x"), "");
    EXPECT_TRUE(file_exists(path(L"x")));
    delete_file(path(L"x"));
    EXPECT_FALSE(file_exists(path(L"x")));
}

TEST_F(BasicFileTest, DeleteAndCloseOfAClosedFileDoesNothing) {
    BasicFile file;
    file.delete_and_close();
    EXPECT_FALSE(file.is_open());
}

TEST(JoinPath, SeparatorOnlyWhereNeeded) {
    EXPECT_EQ(join_path(L"", L"x"), L"x");
    EXPECT_EQ(join_path(L"a", L"x"), L"a/x");
    EXPECT_EQ(join_path(L"a/", L"x"), L"a/x");
    EXPECT_EQ(join_path(L"a\\", L"x"), L"a\\x");
    EXPECT_EQ(join_path(L"/", L"x"), L"/x");
}

TEST_F(BasicFileTest, PathIsWritable) {
    EXPECT_EQ(path_is_writable(folder_), 0);
    EXPECT_EQ(path_is_writable(folder_ + L"/"), 0);
    EXPECT_FALSE(file_exists(path(L"pathcheck.zsf")));
    EXPECT_EQ(console_output([&] { EXPECT_EQ(path_is_writable(path(L"missing")), 1); }), "");
    EXPECT_STREQ(unable_to_write_text, "Unable to write to path.");
}

TEST(PrintErrno, ShowsTheNumberInTheCurrentColor) {
    EXPECT_EQ(console_output([] {
                  errno = 28;
                  print_errno();
              }),
              "errno: 28\n");
}

}  // namespace
}  // namespace znp
