// The argument cursor that every command parser shares.
#pragma once

#include <exception>
#include <string>
#include <vector>

#include "foundation/types.hpp"

namespace znp {

class CommandLine {
  public:
    class CommandLineException : public std::exception {
      public:
        explicit CommandLineException(const char* text) : text_(text) {}  // static text
        const char* what() const noexcept override { return text_; }

      private:
        const char* text_;
    };

    // All of argv, the program's path included.
    CommandLine(int argc, const char* const* argv);
    explicit CommandLine(std::vector<std::string> arguments);

    bool has_more() const { return index_ + 1 < arguments_.size(); }

    // Moves to the next argument and splits it at its first ':'; throws CommandLineException if there is
    // none.
    void advance();

    const std::string& argument() const { return arguments_[index_]; }  // the current one, whole
    const std::string& key() const { return key_; }      // before the first ':'; all of it if there is none
    const std::string& value() const { return value_; }  // behind the first ':'

  private:
    std::vector<std::string> arguments_;
    upL_t index_ = 0;  // of the argument last consumed
    std::string key_;
    std::string value_;
};

}  // namespace znp
