#include "shell/option_table.hpp"

#include "shell/console.hpp"

namespace znp {

void print_skipped(const std::string& word) {
    Console::print_labelled_line("Skipping unrecognized command", word);
}

}  // namespace znp
