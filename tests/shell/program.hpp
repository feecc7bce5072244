// Runs the program itself: with arguments, a text as its standard input, and a working directory.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
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
    bool stopped = false;        // because of the output that was waited for
    long peak_resident_kib = 0;  // of its memory
    std::string output;
};

// Starts the program with the text as its input and both outputs in the file.
inline pid_t start_program(const std::vector<std::string>& arguments, std::string_view input, int out,
                           const std::string& working_directory) {
    const int in = temporary_file(input);
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
    return child;
}

// Standard error goes to standard output. A text to stop at ends the program once it is in the output.
inline ProgramResult run_program(const std::vector<std::string>& arguments, std::string_view input,
                                 const std::string& working_directory,
                                 std::chrono::seconds limit = std::chrono::seconds(60),
                                 const std::string& stop_at = {}) {
    const int out = temporary_file();
    const pid_t child = start_program(arguments, input, out, working_directory);

    ProgramResult result;
    int status = 0;
    rusage usage{};
    const auto start = std::chrono::steady_clock::now();
    while (::wait4(child, &status, WNOHANG, &usage) == 0) {
        result.timed_out = std::chrono::steady_clock::now() - start > limit;
        result.stopped = !stop_at.empty() && file_contents(out).find(stop_at) != std::string::npos;
        if (result.timed_out || result.stopped) {
            ::kill(child, SIGKILL);
            ::wait4(child, &status, 0, &usage);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    result.peak_resident_kib = usage.ru_maxrss;
    if (!result.timed_out && !result.stopped && WIFEXITED(status)) result.exit_code = WEXITSTATUS(status);
    result.output = file_contents(out);
    ::close(out);
    return result;
}

}  // namespace znp::testing
