#include "shell/command_line.hpp"

#include <utility>

namespace znp {

CommandLine::CommandLine(int argc, const char* const* argv) : CommandLine({argv, argv + argc}) {}

CommandLine::CommandLine(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {}

void CommandLine::advance() {
    if (!has_more()) throw CommandLineException("Expected more parameters.");
    const std::string& current = arguments_[++index_];
    const upL_t colon = current.find(':');
    key_ = current.substr(0, colon);
    value_ = colon == std::string::npos ? std::string() : current.substr(colon + 1);
}

}  // namespace znp
