// A folder of its own for one test, which is the current one as long as the test lasts.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "temporary_folder.hpp"

namespace znp::testing {

class WorkingFolder : public TemporaryFolder {
  public:
    WorkingFolder() : before_(std::filesystem::current_path()) {
        if (::chdir(path().c_str()) != 0) std::abort();
    }
    ~WorkingFolder() {
        if (::chdir(before_.c_str()) != 0) std::abort();
    }

  private:
    const std::filesystem::path before_;
};

}  // namespace znp::testing
