// A folder of its own for one test, removed with everything in it.
#pragma once

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace znp::testing {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "zelmar-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) std::abort();
        path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    std::wstring wide_path() const { return {path_.begin(), path_.end()}; }
    bool is_empty() const { return std::filesystem::is_empty(path_); }
    void write(const std::string& name, const std::string& text) const {
        std::ofstream(path_ + "/" + name, std::ios::binary) << text;
    }

  private:
    std::string path_;
};

}  // namespace znp::testing
