// Runs the program in a pseudo-terminal, as a user has it: lines are typed, echoed, and come back with the
// output.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

namespace znp::testing {

class Terminal {
  public:
    Terminal(const std::vector<std::string>& arguments, const std::string& working_directory,
             unsigned short columns = 80) {
        std::vector<std::string> words{ZELMAR_PROGRAM};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> argv;
        for (std::string& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
        winsize size{};
        size.ws_row = 25;
        size.ws_col = columns;
        child_ = ::forkpty(&master_, nullptr, nullptr, &size);
        if (child_ < 0) std::abort();
        if (child_ == 0) {
            if (::chdir(working_directory.c_str()) != 0) ::_exit(126);
            ::execv(ZELMAR_PROGRAM, argv.data());
            ::_exit(127);
        }
    }
    ~Terminal() {
        if (child_ > 0) {
            ::kill(child_, SIGKILL);
            ::waitpid(child_, nullptr, 0);
        }
        ::close(master_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // A line and ENTER. The terminal echoes it, and a line feed.
    void type(const std::string& line) { send(line + '\r'); }
    void type_end_of_input() { send("\004"); }

    // What has come since the last read, as soon as it is this text; all that has come within some seconds
    // if it is another. Line ends are line feeds.
    std::string read(const std::string& expected) {
        while (pending_.size() < expected.size() && receive()) {
        }
        return take(expected.size());
    }
    // Up to and with the text; all that has come if it does not come.
    std::string read_until(const std::string& text) {
        while (pending_.find(text) == std::string::npos && receive()) {
        }
        const auto found = pending_.find(text);
        return take(found == std::string::npos ? pending_.size() : found + text.size());
    }
    // Up to the end of the program.
    std::string read_rest() {
        while (receive()) {
        }
        return take(pending_.size());
    }

    // Behind read_rest. -1 if the program has not ended, or by a signal.
    int exit_code() {
        int status = 0;
        if (::waitpid(child_, &status, WNOHANG) != child_) {
            // The terminal closes a moment before the process is gone.
            if (!ended_ || ::waitpid(child_, &status, 0) != child_) return -1;
        }
        child_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    static constexpr int limit_ms = 30'000;

    void send(const std::string& text) {
        for (std::size_t done = 0; done < text.size();) {
            const ssize_t n = ::write(master_, text.data() + done, text.size() - done);
            if (n <= 0) return;
            done += static_cast<std::size_t>(n);
        }
    }
    std::string take(std::size_t count) {
        const std::string text = pending_.substr(0, count);
        pending_.erase(0, text.size());
        return text;
    }
    // False at the end, and when nothing comes any more.
    bool receive() {
        pollfd waiting{master_, POLLIN, 0};
        if (::poll(&waiting, 1, limit_ms) <= 0) return false;
        char buffer[4096];
        const ssize_t n = ::read(master_, buffer, sizeof buffer);
        ended_ = n <= 0;
        for (ssize_t i = 0; i < n; i++) {
            // The terminal makes CR LF of a line feed.
            if (buffer[i] == '\n' && !pending_.empty() && pending_.back() == '\r') pending_.pop_back();
            pending_ += buffer[i];
        }
        return !ended_;
    }

    pid_t child_ = -1;
    int master_ = -1;
    bool ended_ = false;
    std::string pending_;
};

}  // namespace znp::testing
