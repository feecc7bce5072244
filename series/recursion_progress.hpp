// How far a recursion over terms is, on the status line of the thread that owns it.
//
// A value that stands for a stretch of the whole work. The recursion hands parts of it down; where it forks,
// the part goes with the half that stays on the thread, as both take about as long. Without a line it does
// nothing.
#pragma once

#include "foundation/status_line.hpp"
#include "foundation/types.hpp"

namespace znp {

class RecursionProgress {
  public:
    RecursionProgress() = default;
    // heading stands in front of the figures, and outlives the progress.
    RecursionProgress(StatusLine* line, const char* heading, double from, double to)
        : line_(line), heading_(heading), from_(from), to_(to) {}

    explicit operator bool() const { return line_ != nullptr; }
    RecursionProgress part(double from, double to) const {
        return {line_, heading_, from_ + from * (to_ - from_), from_ + to * (to_ - from_)};
    }
    // The stretch is done, and numbers of so many digits came out of it; or they are about to be made. The
    // line is redrawn if that is due.
    void done(u64_t digits) const { show(to_, digits); }
    void begin(u64_t digits) const { show(from_, digits); }

  private:
    void show(double share, u64_t digits) const;

    StatusLine* line_ = nullptr;
    const char* heading_ = "";
    double from_ = 0;
    double to_ = 1;
};

}  // namespace znp
