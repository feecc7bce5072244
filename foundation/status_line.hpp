// StatusLine: one line on the console that is rewritten in place. Belongs to one thread.
//
// The line is made of coloured segments (the colour letters of the console). A draw erases the line and
// prints the segments in order; a segment that would pass the width is dropped with all behind it, and " ..."
// stands in its place if it fits. The colour is white before and after a draw. A label set by the line's
// maker stays in front while the routines at work replace what follows.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "foundation/time.hpp"

namespace znp {

class StatusLine {
  public:
    explicit StatusLine(upL_t width = 79, double interval_seconds = 0.1, bool end_with_newline = false);

    void set_label(std::string text);  // white; drops what was there
    void add(char color, std::string text);
    void clear();    // drops the segments behind the label
    void restart();  // stamps the start and the last draw
    void erase();

    // if_due draws unless fewer than the interval's seconds have passed since the last draw or restart.
    enum class Update { nothing = 0, if_due = 1, force = 2 };
    void update(Update mode);

    const Time& start() const { return start_; }
    bool drawn() const { return drawn_; }  // since the last erase

  private:
    void draw();

    upL_t width_;
    bool end_with_newline_;
    double interval_;
    Time start_{};
    Time last_draw_{};
    bool drawn_ = false;
    upL_t label_segments_ = 0;
    std::vector<std::pair<char, std::string>> segments_;
};

}  // namespace znp
