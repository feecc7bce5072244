#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "console_capture.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

// What a child process prints that takes breaks as asked and then gets a signal; its wait status goes to
// status.
std::string output_of_broken_child(int signal_number, void (*former)(int), int& status) {
    return testing::console_output([&] {
        const pid_t child = ::fork();
        if (child == 0) {
            ::signal(signal_number, former);
            Console::reset_color_on_break();
            Console::print("text", 'G');
            ::raise(signal_number);
            ::_exit(7);
        }
        ::waitpid(child, &status, 0);
    });
}

TEST(ConsoleBreak, SignalsResetTheColorsAndEndTheProcess) {
    for (const int signal_number : {SIGINT, SIGTERM}) {
        int status = 0;
        EXPECT_EQ(output_of_broken_child(signal_number, SIG_DFL, status), "\033[01;32mtext\033[39;49m");
        EXPECT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), signal_number);
    }
}

TEST(ConsoleBreak, IgnoredSignalsStayIgnored) {
    int status = 0;
    EXPECT_EQ(output_of_broken_child(SIGINT, SIG_IGN, status), "\033[01;32mtext");
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

}  // namespace
}  // namespace znp
