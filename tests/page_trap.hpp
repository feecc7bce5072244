// Something that happens at a moment of the work of other code, of its own accord and on its own thread: when
// it comes to a page of memory for the first time, and then to another, and so on. No clock and no hook: the
// page is closed to every access until the work touches it.
//
// One trap at a time; the work may have several threads. The pages are those of a TrapArena, which holds what
// the work reads and writes and nothing else.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace znp::testing {

// Zeroed memory in whole pages, handed out from the front.
class TrapArena {
  public:
    explicit TrapArena(std::size_t bytes) : bytes_(whole_pages(bytes)) {
        void* const at = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (at == MAP_FAILED) std::abort();
        base_ = static_cast<std::byte*>(at);
    }
    TrapArena(const TrapArena&) = delete;
    TrapArena& operator=(const TrapArena&) = delete;
    ~TrapArena() { munmap(base_, bytes_); }

    // Begins a page of its own.
    std::byte* take(std::size_t bytes) {
        std::byte* const at = base_ + used_;
        used_ += whole_pages(bytes);
        if (used_ > bytes_) std::abort();
        return at;
    }
    // Of so many takes.
    static std::size_t whole_pages(std::size_t bytes) { return (bytes + page() - 1) / page() * page(); }
    static std::size_t page() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

    std::size_t pages() const { return used_ / page(); }
    std::byte* page_at(std::size_t i) const { return base_ + i * page(); }

  private:
    std::byte* base_;
    std::size_t bytes_, used_ = 0;
};

// While it lives: closes the first of the pages, when that is touched the next one, and flips the bit when
// the last one is touched. No pages: flips it now.
class PageTrap {
  public:
    PageTrap(std::span<std::byte* const> pages, std::byte* target, std::byte bit)
        : pages_(pages), target_(target), bit_(bit), page_(TrapArena::page()) {
        current_ = this;
        struct sigaction action = {};
        action.sa_sigaction = touched;
        action.sa_flags = SA_SIGINFO;
        sigaction(SIGSEGV, &action, &before_);
        close_next();
    }
    PageTrap(const PageTrap&) = delete;
    PageTrap& operator=(const PageTrap&) = delete;
    ~PageTrap() {
        if (closed_ != nullptr) mprotect(closed_, page_, PROT_READ | PROT_WRITE);
        sigaction(SIGSEGV, &before_, nullptr);
        current_ = nullptr;
    }

    bool sprung() const { return sprung_; }

  private:
    void close_next() {
        if (next_ == pages_.size()) {
            *target_ = *target_ ^ bit_;
            sprung_ = true;
            return;
        }
        closed_ = pages_[next_++];
        mprotect(closed_, page_, PROT_NONE);
    }

    // Any number of threads come here at once. One that finds the page open goes back and tries again; a page
    // that was never closed is a fault of the work's own, which the handler before is to tell.
    static void touched(int, siginfo_t* info, void*) {
        PageTrap& trap = *current_;
        while (trap.busy_.test_and_set(std::memory_order_acquire)) {
        }
        auto* const address = static_cast<std::byte*>(info->si_addr);
        if (trap.closed_ != nullptr && address >= trap.closed_ && address < trap.closed_ + trap.page_) {
            mprotect(trap.closed_, trap.page_, PROT_READ | PROT_WRITE);
            trap.closed_ = nullptr;
            trap.close_next();
        } else if (!trap.is_one(address)) {
            sigaction(SIGSEGV, &trap.before_, nullptr);
        }
        trap.busy_.clear(std::memory_order_release);
    }

    bool is_one(const std::byte* address) const {
        for (const std::byte* page : pages_)
            if (address >= page && address < page + page_) return true;
        return false;
    }

    static inline PageTrap* current_ = nullptr;

    std::span<std::byte* const> pages_;
    volatile std::byte* target_;
    std::byte bit_;
    std::size_t page_;
    std::size_t next_ = 0;
    std::byte* closed_ = nullptr;
    std::atomic_flag busy_ = ATOMIC_FLAG_INIT;
    volatile bool sprung_ = false;
    struct sigaction before_ = {};
};

}  // namespace znp::testing
