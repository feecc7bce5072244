// The event log of a run: a text that only grows, one line an event.
//
// A line is the date and time, a tab, the seconds since the log's start with three decimals, a tab, the text,
// and CR LF, the line end of the text files that the log is stored in.
// Passed down as a pointer that is null where no run keeps a log. Belongs to the thread that finishes a
// stage.
#pragma once

#include <string>

#include "foundation/time.hpp"

namespace znp {

class EventLog {
  public:
    EventLog();
    void add(const std::string& text);
    const std::string& text() const { return text_; }

  private:
    Time start_;
    std::string text_;
};

// The seconds of a log line: rounded to thousandths, but never up into the next second.
std::string event_seconds_text(double seconds);

}  // namespace znp
