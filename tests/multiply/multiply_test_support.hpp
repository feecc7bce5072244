// What the tests of multipliers and dispatchers share: exact windows of products, a work buffer of exactly
// the promised bytes, and parameters that point to it.
#pragma once

#include <cstdint>

#include "multiply/basecase_test_support.hpp"
#include "multiply/basic_parameters.hpp"
#include "multiply/bkt/window.hpp"

namespace znp::testing {

// The value of a window of a product: that of the narrowed operands.
template <class word>
std::vector<word> exact_window(const std::vector<word>& A, const std::vector<word>& B, upL_t s, upL_t e) {
    const bkt::NarrowedMul w = bkt::narrow_mul(s, e, A.size(), B.size());
    const std::span<const word> a = std::span<const word>(A).subspan(w.A_offset, w.La);
    const std::span<const word> b = std::span<const word>(B).subspan(w.B_offset, w.Lb);
    const std::vector<word> T = exact_product(a, b);
    const std::span<const word> window = std::span<const word>(T).subspan(w.s, w.e - w.s);
    return {window.begin(), window.end()};
}

// For squares, whose two operands are narrowed alike.
template <class word>
std::vector<word> exact_sqr_window(const std::vector<word>& A, upL_t s, upL_t e) {
    const bkt::NarrowedSqr w = bkt::narrow_sqr(s, e, A.size());
    const std::span<const word> a = std::span<const word>(A).subspan(w.A_offset, w.n);
    const std::vector<word> T = exact_product(a, a);
    const std::span<const word> window = std::span<const word>(T).subspan(w.s, w.e - w.s);
    return {window.begin(), window.end()};
}

// A work buffer aligned to 32 bytes of exactly so many bytes, filled with rubbish, between guard bytes that
// the destructor checks.
class GuardedWork {
  public:
    explicit GuardedWork(upL_t bytes) : bytes_(bytes), storage_(bytes + 2 * margin + 32, std::byte{0xA7}) {
        const auto at = reinterpret_cast<std::uintptr_t>(storage_.data() + margin);
        start_ = margin + (32 - at % 32) % 32;
        std::fill_n(storage_.data() + start_, bytes, std::byte{0xDE});
    }
    GuardedWork(const GuardedWork&) = delete;
    GuardedWork& operator=(const GuardedWork&) = delete;
    ~GuardedWork() {
        const auto is_guard = [](std::byte b) { return b == std::byte{0xA7}; };
        const auto inside = storage_.begin() + static_cast<std::ptrdiff_t>(start_);
        EXPECT_TRUE(std::all_of(storage_.begin(), inside, is_guard) &&
                    std::all_of(inside + static_cast<std::ptrdiff_t>(bytes_), storage_.end(), is_guard))
            << "a guard of a work buffer of " << bytes_ << " bytes was overwritten";
    }

    BasicParameters bp() { return {nullptr, storage_.data() + start_, bytes_, 1}; }
    bool untouched() const {
        const auto inside = storage_.begin() + static_cast<std::ptrdiff_t>(start_);
        return std::all_of(inside, inside + static_cast<std::ptrdiff_t>(bytes_),
                           [](std::byte b) { return b == std::byte{0xDE}; });
    }

  private:
    static constexpr upL_t margin = 64;
    upL_t bytes_;
    upL_t start_;
    std::vector<std::byte> storage_;
};

// The exception that an action throws.
template <class Exception, class Action>
Exception caught(Action action) {
    try {
        action();
    } catch (const Exception& e) {
        return e;
    }
    ADD_FAILURE() << "nothing was thrown";
    throw std::logic_error("nothing was thrown");
}

}  // namespace znp::testing
