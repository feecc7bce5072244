// The program itself, with a bit of its last digits changed from outside while it runs: the benchmark must
// fail.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>

#include "program.hpp"
#include "sanitizer.hpp"
#include "system/process_memory.hpp"
#include "temporary_folder.hpp"

namespace znp {
namespace {

using std::chrono::steady_clock;
using testing::TemporaryFolder;

// The digits go into a pipe in place of their file. The program stands still once it is full: by then it has
// taken its copy of the last digits.
class DigitPipe {
  public:
    explicit DigitPipe(const TemporaryFolder& folder) {
        const std::string path = folder.path() + "/Pi - Dec - Chudnovsky.txt";
        if (::mkfifo(path.c_str(), 0600) != 0) std::abort();
        pipe_ = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        if (pipe_ < 0) std::abort();
    }
    ~DigitPipe() { ::close(pipe_); }
    DigitPipe(const DigitPipe&) = delete;
    DigitPipe& operator=(const DigitPipe&) = delete;

    bool is_full() const {
        int waiting = 0;
        const int size = ::fcntl(pipe_, F_GETPIPE_SZ);
        return ::ioctl(pipe_, FIONREAD, &waiting) == 0 && waiting > size / 2;
    }
    void drain() const {
        char buffer[65536];
        while (::read(pipe_, buffer, sizeof buffer) > 0) {
        }
    }

  private:
    int pipe_;
};

// Where the text lies in the heap of the C library; 0 if it does not.
u64_t find_in_heap(pid_t process, const std::string& text) {
    const auto places = testing::places_of(process, 0, 0);
    std::ifstream memory("/proc/" + std::to_string(process) + "/mem", std::ios::binary);
    for (const testing::MemoryRange& range : places.other) {
        std::string bytes(range.bytes(), '\0');
        memory.seekg(static_cast<std::streamoff>(range.start));
        memory.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        const auto found = bytes.find(text);
        if (found != std::string::npos) return range.start + found;
    }
    return 0;
}

class DamagedBenchmark : public ::testing::Test {
  protected:
    // Runs "bench 1M -T:1"; with the bit flipped in a copy of its last digit, or not.
    void run(bool damage) {
        const int out = testing::temporary_file();
        const pid_t child = testing::start_program({"bench", "1M", "-T:1"}, "", out, folder.path());
        const auto limit = steady_clock::now() + std::chrono::seconds(60);
        while (!pipe.is_full() && steady_clock::now() < limit) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        int status = 0;
        if (damage) flip(child, status);
        while (::waitpid(child, &status, WNOHANG) == 0 && steady_clock::now() < limit) {
            pipe.drain();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        if (steady_clock::now() >= limit) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
        }
        exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        output = testing::without_colors(testing::file_contents(out));
        ::close(out);
    }
    void flip(pid_t child, int& status) {
        const std::string known = "0994591637429204";  // the last digits
        const testing::Halted halted(child, status);
        ASSERT_TRUE(halted.halted());
        const u64_t place = find_in_heap(child, known);
        // Without a place this tells whether it could be looked for.
        error = halted.flip(place == 0 ? 0 : place + known.size() - 1, 0);
    }

    const TemporaryFolder folder;
    const DigitPipe pipe{folder};
    int error = 0;  // of the flip
    int exit_code = -1;
    std::string output;
};

TEST_F(DamagedBenchmark, FailsInWordsAndEndsWith0) {
#ifdef ZNP_SANITIZER
    GTEST_SKIP() << "a sanitizer lays out the memory in its own way";
#endif
    run(true);
    if (error == EACCES || error == EPERM) GTEST_SKIP() << "one process cannot change another here";
    EXPECT_EQ(error, 0);
    EXPECT_NE(output.find(" 0994591637 429205\n\n"
                          "Benchmark Failed. The digits are not correct. Please check your hardware.\n"),
              std::string::npos)
        << output;
    EXPECT_EQ(exit_code, 0);
}

TEST_F(DamagedBenchmark, SucceedsWithoutTheDamage) {
    run(false);
    EXPECT_NE(output.find(" 0994591637 429204\n\nBenchmark Successful. The digits appear to be OK.\n"),
              std::string::npos)
        << output;
    EXPECT_EQ(exit_code, 0);
}

}  // namespace
}  // namespace znp
