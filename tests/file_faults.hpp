// Files that fail: full disks and size limits.
#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>

#include "temporary_folder.hpp"

namespace znp::testing {

inline std::string file_text(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// In the folder, a file of this name on a disk that is always full.
inline void put_on_full_disk(const TemporaryFolder& folder, const std::string& name) {
    std::filesystem::create_symlink("/dev/full", folder.path() + "/" + name);
}

// Files cannot grow beyond this size for as long as the object lives.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &saved_);
        const rlimit limit{bytes, saved_.rlim_max};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) std::abort();
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &saved_);
        std::signal(SIGXFSZ, signal_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    void (*signal_)(int);
    rlimit saved_{};
};

enum class SmallDisk { passed, failed, not_permitted };

// Runs body(folder) in a process of its own, where the folder is a file system of so many KiB; body says
// whether all was as it should be. Mounting needs rights that not every machine gives.
inline SmallDisk on_small_disk(unsigned kib, const std::function<bool(const std::string&)>& body) {
    constexpr int not_permitted = 77;
    const TemporaryFolder folder;
    const pid_t child = ::fork();
    if (child == 0) {
        const std::string options = "size=" + std::to_string(kib) + "k";
        const bool own_mounts = ::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0;
        const bool mounted = own_mounts && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             ::mount("none", folder.path().c_str(), "tmpfs", 0, options.c_str()) == 0;
        ::_exit(!mounted ? not_permitted : body(folder.path()) ? 0 : 1);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) std::abort();
    if (!WIFEXITED(status)) return SmallDisk::failed;
    if (WEXITSTATUS(status) == not_permitted) return SmallDisk::not_permitted;
    return WEXITSTATUS(status) == 0 ? SmallDisk::passed : SmallDisk::failed;
}

}  // namespace znp::testing
