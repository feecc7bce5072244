#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "console_capture.hpp"
#include "shell/console.hpp"

namespace znp {
namespace {

// What a child process prints that takes signals as asked and then gets one; its wait status goes to status.
std::string output_of_broken_child(int signal_number, void (*former)(int), int& status,
                                   void (*take)() = Console::reset_color_on_break) {
    return testing::console_output([&] {
        const pid_t child = ::fork();
        if (child == 0) {
            ::signal(signal_number, former);
            take();
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

TEST(ConsoleBreak, CrashesAreTold) {
    for (const int signal_number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT}) {
        int status = 0;
        EXPECT_EQ(output_of_broken_child(signal_number, SIG_DFL, status, Console::tell_crashes),
                  "\033[01;32mtext\033[39;49m\nEnded by signal " + std::to_string(signal_number) +
                      ": the memory of the program is damaged, or the program has an error.\n");
        EXPECT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), signal_number);
    }
}

TEST(ConsoleBreak, CrashesThatOthersTakeStayTheirs) {
    int status = 0;
    EXPECT_EQ(output_of_broken_child(SIGSEGV, SIG_IGN, status, Console::tell_crashes), "\033[01;32mtext");
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

}  // namespace
}  // namespace znp
