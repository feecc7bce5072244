#include "foundation/standard_streams.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace znp {
namespace {

using ::testing::ExitedWithCode;

bool is_open(int descriptor) {
    return fcntl(descriptor, F_GETFD) >= 0;
}

TEST(StandardStreamsDeathTest, MissingOnesBecomeTheNullDevice) {
    const auto close_all_and_mend = [] {
        for (int descriptor = 0; descriptor < 3; ++descriptor) ::close(descriptor);
        open_missing_standard_streams();
        bool right = true;
        for (int descriptor = 0; descriptor < 3; ++descriptor) right &= is_open(descriptor);
        char byte = 0;
        right &= ::read(STDIN_FILENO, &byte, 1) == 0;
        right &= ::write(STDOUT_FILENO, &byte, 1) == 1;
        const int next = ::open("/dev/null", O_RDONLY);
        right &= next > STDERR_FILENO;
        ::_exit(right ? 0 : 1);
    };
    EXPECT_EXIT(close_all_and_mend(), ExitedWithCode(0), "");
}

TEST(StandardStreams, OpenOnesStayAsTheyAre) {
    const int before = ::open("/dev/null", O_RDONLY);
    ::close(before);
    open_missing_standard_streams();
    const int after = ::open("/dev/null", O_RDONLY);
    ::close(after);
    EXPECT_EQ(before, after);
}

}  // namespace
}  // namespace znp
