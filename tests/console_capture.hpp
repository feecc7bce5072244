// Runs a piece of code with a given standard input and gives back what it wrote to standard output.
//
// Works on the file descriptors, so that everything counts that goes through the C library or the streams.
// Death tests run the code that dies through dying().
#pragma once

#include <stdio_ext.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>
#include <string_view>

// What the console sends to the terminal, written out once for the tests.
namespace znp::testing::sent {

inline const std::string W = "\033[01;37m";
inline const std::string R = "\033[01;31m";
inline const std::string G = "\033[01;32m";
inline const std::string Y = "\033[01;33m";
inline const std::string T = "\033[01;36m";
inline const std::string reset = "\033[39;49m";
inline const std::string pause = W + "Press ENTER to continue . . ." + T + W;
inline const std::string end_of_input =
    "\n" + R + "The input has ended before an answer was given." + reset + "\n";

}  // namespace znp::testing::sent

namespace znp::testing {

// A file without a name that holds the text, read from its start.
inline int temporary_file(std::string_view text = {}) {
    std::FILE* file = std::tmpfile();
    if (file == nullptr) std::abort();
    const int descriptor = ::dup(::fileno(file));
    std::fclose(file);
    if (descriptor < 0) std::abort();
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t n = ::write(descriptor, text.data() + done, text.size() - done);
        if (n <= 0) std::abort();
        done += static_cast<std::size_t>(n);
    }
    if (::lseek(descriptor, 0, SEEK_SET) != 0) std::abort();
    return descriptor;
}

// The whole file; its position stays, since whoever writes it may share it.
inline std::string file_contents(int descriptor) {
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = ::pread(descriptor, buffer, sizeof buffer, static_cast<off_t>(text.size()))) > 0;) {
        text.append(buffer, static_cast<std::size_t>(n));
    }
    return text;
}

// Standard input reads the text, and then ends, for as long as the object lives.
class StdinText {
  public:
    explicit StdinText(std::string_view text) : StdinText(temporary_file(text)) {}
    explicit StdinText(int source) : saved_(::dup(STDIN_FILENO)) {  // takes over the descriptor
        replace(source);
        ::close(source);
    }
    ~StdinText() {
        if (saved_ < 0) {
            ::close(STDIN_FILENO);
        } else {
            replace(saved_);
            ::close(saved_);
        }
    }
    StdinText(const StdinText&) = delete;
    StdinText& operator=(const StdinText&) = delete;

  private:
    static void replace(int descriptor) {
        ::dup2(descriptor, STDIN_FILENO);
        __fpurge(stdin);
        std::clearerr(stdin);
        std::cin.clear();
    }

    int saved_;
};

// What goes to standard output from the start of the object's life to the call of text().
class StdoutCapture {
  public:
    StdoutCapture() : saved_((flush(), ::dup(STDOUT_FILENO))), target_(temporary_file()) {
        ::dup2(target_, STDOUT_FILENO);
    }
    ~StdoutCapture() { restore(); }
    StdoutCapture(const StdoutCapture&) = delete;
    StdoutCapture& operator=(const StdoutCapture&) = delete;

    std::string text() {
        restore();
        return text_;
    }

    // What is there by now; from any thread.
    std::string text_so_far() const { return file_contents(target_); }

  private:
    static void flush() {
        std::cout.flush();
        std::fflush(stdout);
    }
    void restore() {
        if (target_ < 0) return;
        flush();
        ::dup2(saved_, STDOUT_FILENO);
        ::close(saved_);
        text_ = file_contents(target_);
        ::close(target_);
        target_ = -1;
    }

    int saved_;
    int target_;
    std::string text_;
};

// The standard output of body(), run with the given standard input. An exception passes through.
inline std::string console_output(const std::function<void()>& body, std::string_view input = {}) {
    StdinText stdin_text(input);
    StdoutCapture capture;
    body();
    return capture.text();
}

// Console output without its colours, which are the only terminal sequences in it.
inline std::string without_colors(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); i++) {
        if (text[i] == '\033') {
            i = text.find('m', i);
        } else {
            plain += text[i];
        }
    }
    return plain;
}

// For EXPECT_EXIT, whose matcher sees standard error only: in the dying child process, sends standard output
// there as well and feeds standard input.
//     EXPECT_EXIT(dying([] { fatal_exit("text"); }), ::testing::ExitedWithCode(1), "text");
inline void dying(const std::function<void()>& body, std::string_view input = {}) {
    StdinText stdin_text(input);
    std::fflush(stdout);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    body();
}

}  // namespace znp::testing
