// StopSignals: SIGINT and SIGTERM as a request that loops poll, for as long as the object lives.
#pragma once

#include <csignal>

namespace znp {

// One object at a time, on the main thread. The first signal sets the request; a second one ends the process
// at once, with the terminal's colours reset. The destructor restores the former handlers.
class StopSignals {
  public:
    StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;
    ~StopSignals();

    // From any thread; a plain load. False while no object lives.
    static bool requested();

  private:
    struct sigaction interrupt_;
    struct sigaction terminate_;
};

}  // namespace znp
