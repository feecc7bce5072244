// StageLines: one stage of a formula as the user sees it: its line, its event in the log, its status line,
// its time. A count shows nothing.
#pragma once

#include "compute/engine/stage_memory.hpp"
#include "foundation/status_line.hpp"

namespace znp {

class StageLines {
  public:
    // Prints the title without a line end, and adds the event.
    StageLines(StageMemory& memory, const char* title, const char* event);
    StageLines(const StageLines&) = delete;
    StageLines& operator=(const StageLines&) = delete;

    void print_terms(u64_t terms);  // behind the title

    // Ends the title's line and shows the label on the status line.
    void start(const char* label);
    // The time since the constructor in place of the status line.
    void finish();

    StatusLine* status() { return &status_; }

  private:
    StageMemory& memory_;
    StatusLine status_;
};

}  // namespace znp
