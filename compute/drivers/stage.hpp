// Stage: one stage of a formula as the user sees it: its line, its event in the log, its status line, its
// time.
#pragma once

#include <string>

#include "compute/run_time_parameters.hpp"
#include "foundation/status_line.hpp"

namespace znp {

class Stage {
  public:
    // Prints the title without a line end, and adds the event.
    Stage(RunTimeParameters& run, const char* title, const char* event);
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    void print_terms(u64_t terms);  // behind the title

    // Ends the title's line and shows the label on the status line, which is returned.
    StatusLine* start(const char* label);
    // The time since the constructor in place of the status line.
    void finish();

  private:
    StatusLine status_;
};

}  // namespace znp
