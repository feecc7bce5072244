// StageLines: one stage of a formula as the user sees it: its line, its event in the log, its status line,
// its time. A count shows nothing.
//
// And the line of a term, where a formula is a sum of several.
#pragma once

#include <string>

#include "compute/engine/stage_memory.hpp"
#include "foundation/status_line.hpp"

namespace znp {

class StageLines {
  public:
    // Prints the title without a line end, and adds the event.
    StageLines(StageMemory& memory, const char* title, const char* event);
    StageLines(const StageLines&) = delete;
    StageLines& operator=(const StageLines&) = delete;

    // Behind the title, with what stands behind the terms.
    void print_terms(u64_t terms, const char* marker = "");

    // Ends the title's line and shows the label on the status line.
    void start(const char* label);
    // Another label, for the next part of the stage.
    void show(const char* label);
    // The time since the constructor in place of the status line.
    void finish();

    StatusLine* status() { return &status_; }

  private:
    StageMemory& memory_;
    StatusLine status_;
};

// A line on the console and in the log: which term the stages behind it compute.
void tell_term(StageMemory& memory, const std::string& text);

}  // namespace znp
