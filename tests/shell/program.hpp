// Runs the program itself: with arguments, a text as its standard input, and a working directory.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "console_capture.hpp"

namespace znp::testing {

struct ProgramResult {
    int exit_code = -1;  // -1: ended by a signal, or by the time limit
    bool timed_out = false;
    std::string output;
};

// Standard error goes to standard output.
inline ProgramResult run_program(const std::vector<std::string>& arguments, std::string_view input,
                                 const std::string& working_directory,
                                 std::chrono::seconds limit = std::chrono::seconds(60)) {
    const int in = temporary_file(input);
    const int out = temporary_file();
    std::vector<std::string> words{ZELMAR_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);

    const pid_t child = ::fork();
    if (child < 0) std::abort();
    if (child == 0) {
        ::dup2(in, STDIN_FILENO);
        ::dup2(out, STDOUT_FILENO);
        ::dup2(out, STDERR_FILENO);
        if (::chdir(working_directory.c_str()) != 0) ::_exit(126);
        ::execv(ZELMAR_PROGRAM, argv.data());
        ::_exit(127);
    }
    ::close(in);

    ProgramResult result;
    int status = 0;
    const auto start = std::chrono::steady_clock::now();
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() - start > limit) {
            result.timed_out = true;
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (!result.timed_out && WIFEXITED(status)) result.exit_code = WEXITSTATUS(status);
    result.output = file_contents(out);
    ::close(out);
    return result;
}

}  // namespace znp::testing
