// Components and a clock for the tests of the stress tester: products by GMP, faults on demand.
#pragma once

#include <gmp.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "foundation/exceptions.hpp"
#include "multiply/multiplier.hpp"

namespace znp::testing {

// A clock that moves by what the tests say only, in steps that are exact in binary.
class FakeClock {
  public:
    static double seconds() { return static_cast<double>(ticks_.load()) / ticks_per_second; }
    static void tick() { ticks_++; }

    static constexpr u64_t ticks_per_second = 128;

  private:
    static inline std::atomic<u64_t> ticks_{1};
};

// Right products, each in one tick of the fake clock; the faults are members to set. Keeps to what it
// promised: writes all of its tables, all of its product and all of the work buffer, and nothing else.
class FakeComponent : public multiplier<c64i> {
  public:
    explicit FakeComponent(const char* name_, u64_t max_bits_ = 29696)
        : multiplier<c64i>(max_bits_, name_, "Fake Component") {}
    virtual ~FakeComponent() = default;

    upL_t table_size = 0;
    std::function<void(u64_t call)> on_call = [](u64_t) {};  // before each product; calls count from 1
    std::atomic<u64_t> wrong_call{0};                        // the call whose product gets a wrong bit

    u64_t calls() const { return calls_; }
    std::map<std::thread::id, u64_t> calls_of_threads() const {
        const std::lock_guard lock(mutex_);
        return calls_of_threads_;
    }
    std::thread::id faulty_thread() const {
        const std::lock_guard lock(mutex_);
        return faulty_thread_;
    }

    // The numbers of a real component have no such round values; 40 bytes keep the sums off the alignment.
    upL_t table_bytes(u64_t) const override { return table_size; }
    upL_t work_bytes(upL_t L, u64_t threads) const override { return 16 * L + 40 * threads; }
    std::byte* build_tables(TableHolder&, u64_t, std::byte* memory) const override {
        std::memset(memory, 0xA5, table_size);
        tables_ = memory;
        return memory + table_size;
    }
    transform* make_transform(const BasicParameters&, void*, upL_t) const override { return nullptr; }

    void mul(const BasicParameters& bp, c64i* T, WordSpan<c64i> A, WordSpan<c64i> B) const override {
        const upL_t L = A.size() + B.size();
        const u64_t call = ++calls_;
        if (!tables_are_intact()) throw std::logic_error("tables overwritten");
        if (bp.ML < work_bytes(L, bp.tds)) throw std::logic_error("work buffer too small");
        if (reinterpret_cast<std::uintptr_t>(bp.M) % 32 != 0) throw std::logic_error("work buffer misplaced");
        {
            const std::lock_guard lock(mutex_);
            calls_of_threads_[std::this_thread::get_id()]++;
        }
        std::memset(bp.M, static_cast<int>(call), bp.ML);
        static_assert(sizeof(mp_limb_t) == sizeof(c64i));
        std::vector<mp_limb_t> product(L);
        mpn_mul(product.data(), reinterpret_cast<const mp_limb_t*>(A.data()),
                static_cast<mp_size_t>(A.size()), reinterpret_cast<const mp_limb_t*>(B.data()),
                static_cast<mp_size_t>(B.size()));
        std::memcpy(T, product.data(), product.size() * sizeof(c64i));
        FakeClock::tick();
        if (call == wrong_call) {
            note_faulty_thread();
            T[call % L] ^= u64_t{1} << (call % 64);
        }
        on_call(call);
    }

    void note_faulty_thread() const {
        const std::lock_guard lock(mutex_);
        faulty_thread_ = std::this_thread::get_id();
    }

  private:
    bool tables_are_intact() const {
        for (upL_t i = 0; i < table_size; i++) {
            if (tables_[i] != std::byte{0xA5}) return false;
        }
        return true;
    }

    mutable std::byte* tables_ = nullptr;
    mutable std::atomic<u64_t> calls_{0};
    mutable std::mutex mutex_;
    mutable std::map<std::thread::id, u64_t> calls_of_threads_;
    mutable std::thread::id faulty_thread_;
};

}  // namespace znp::testing
