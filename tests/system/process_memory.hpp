// The memory of a running process, from outside: where its arrays lie, and one bit of them changed.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/types.hpp"

namespace znp::testing {

struct MemoryRange {
    u64_t start = 0, end = 0;
    u64_t bytes() const { return end - start; }
};

// What a computation keeps in large arrays. No stack, no code, no data of the libraries.
struct ProcessPlaces {
    std::vector<MemoryRange> block, tables, other;
};

// The anonymous mappings are known by their size: the working block of block_bytes, which is the first, and
// the tables of table_bytes, right below it if nothing was mapped between them. Other: the heaps of the C
// library.
inline ProcessPlaces places_of(pid_t process, u64_t block_bytes, u64_t table_bytes) {
    constexpr u64_t slack = 16384;  // broken pages on either side, which may be mappings of their own
    const auto about = [](u64_t bytes, u64_t wanted) {
        return wanted - slack <= bytes && bytes <= wanted + slack;
    };
    ProcessPlaces places;
    std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
    MemoryRange before;
    bool before_is_guard = false;
    for (std::string line; std::getline(maps, line);) {
        std::istringstream words(line);
        std::string range, access, offset, device, node, name;
        words >> range >> access >> offset >> device >> node >> name;
        MemoryRange here;
        unsigned long long start = 0, end = 0;
        if (std::sscanf(range.c_str(), "%llx-%llx", &start, &end) != 2) continue;
        here = {start, end};
        const bool stack = before_is_guard && before.end == here.start;
        before = here;
        before_is_guard = access == "---p";
        if (access != "rw-p" || node != "0") continue;
        if (name == "[heap]") {
            places.other.push_back(here);
        } else if (!name.empty()) {
            continue;
        } else if (about(here.bytes(), block_bytes)) {
            places.block.push_back(here);
        } else if (about(here.bytes(), table_bytes)) {
            places.tables.push_back(here);
        } else if (about(here.bytes(), block_bytes + table_bytes)) {
            const u64_t border = (here.end - block_bytes) & ~u64_t{4095};
            places.block.push_back({border, here.end});
            places.tables.push_back({here.start, border});
        } else if (!stack && here.bytes() >= 65536 && here.start % (u64_t{64} << 20) == 0) {
            places.other.push_back(here);  // a thread's heap
        }
    }
    return places;
}

// Seconds of processor time that a process has used; nothing once it is gone.
inline std::optional<double> processor_seconds(pid_t process) {
    clockid_t clock;
    timespec time;
    if (::clock_getcpuclockid(process, &clock) != 0 || ::clock_gettime(clock, &time) != 0)
        return std::nullopt;
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// A child that stands still for as long as the object lives. Its end, should it come first, is in status.
class Halted {
  public:
    Halted(pid_t child, int& status) : child_(child) {
        ::kill(child, SIGSTOP);
        halted_ = ::waitpid(child, &status, WUNTRACED) == child && WIFSTOPPED(status);
    }
    ~Halted() {
        if (halted_) ::kill(child_, SIGCONT);
    }
    Halted(const Halted&) = delete;
    Halted& operator=(const Halted&) = delete;

    bool halted() const { return halted_; }

    // 0, or errno: EACCES and EPERM where the system does not let one process into another.
    int flip(u64_t address, unsigned bit) const {
        const int memory = ::open(("/proc/" + std::to_string(child_) + "/mem").c_str(), O_RDWR | O_CLOEXEC);
        if (memory < 0) return errno;
        unsigned char byte = 0;
        const auto at = static_cast<off_t>(address);
        int result = EIO;
        if (::pread(memory, &byte, 1, at) == 1) {
            const unsigned char flipped = static_cast<unsigned char>(byte ^ 1u << bit);
            if (::pwrite(memory, &flipped, 1, at) == 1 && ::pread(memory, &byte, 1, at) == 1 &&
                byte == flipped) {
                result = 0;
            }
        }
        ::close(memory);
        return result;
    }

  private:
    pid_t child_;
    bool halted_ = false;
};

}  // namespace znp::testing
