// What the number classes share: guards, lengths, a float in a caller's buffer, and a number that owns its
// own.
#pragma once

#include <algorithm>
#include <utility>

#include "foundation/fail.hpp"
#include "foundation/guarded_alloc.hpp"
#include "foundation/types.hpp"
#include "multiply/transform.hpp"

namespace znp {

// A count of words as a difference of positions.
constexpr s64_t s64(upL_t words) {
    return static_cast<s64_t>(words);
}

// Throws where there are fewer words than an operation needs.
inline void require_words(const char* location, upL_t available, upL_t required) {
    if (available < required) fail(BufferTooSmallException(location, available, required));
}

// The length of a product that has been written as n words: one less where the top word is zero.
constexpr upL_t product_length(const cdi* T, upL_t n) {
    return n - (T[n - 1] == 0 ? 1 : 0);
}

// Low words that are zero, at most all.
constexpr upL_t low_zero_words(const cdi* T, upL_t L) {
    upL_t zeros = 0;
    while (zeros < L && T[zeros] == 0) zeros++;
    return zeros;
}

// A caller's fault with transformed operands.
[[noreturn]] inline void transform_misuse(const char* message) {
    fail(zn_exception(error_code::unspecified, message));
}

// Throws where two operands were transformed in different ways.
template <class Operand>
void require_matching(const Operand& A, const Operand& B, const char* mismatch) {
    if (A.algorithm != B.algorithm && !A.algorithm->equals(*B.algorithm)) transform_misuse(mismatch);
}

// A float in a buffer of `size` words from `base`. T is base, or lies above it where low words have dropped
// out. View: the float as a view, with T_, L_ and exp_.
template <class View>
class FloatR : public View {
  public:
    cdi* get_base() const { return base_; }
    upL_t get_size() const { return size_; }
    cdi* word_ptr(upL_t i) const { return base_ + (this->T_ - base_) + i; }

    // Drops low zero words in multiples of four, which keeps the mantissa's alignment. Same value.
    void strip_low() {
        const upL_t zeros = low_zero_words(this->T_, this->L_) & ~upL_t{3};
        this->T_ += zeros;
        this->L_ -= zeros;
        this->exp_ += s64(zeros);
    }

  protected:
    cdi* writable_T() const { return word_ptr(0); }
    upL_t room() const { return size_ - static_cast<upL_t>(this->T_ - base_); }  // words from T on
    void require(upL_t words, const char* location) const { require_words(location, room(), words); }

    // For a new value of up to so many words, at the start of the buffer.
    void renew(upL_t words, const char* location) {
        this->T_ = base_;
        require(words, location);
    }
    void copy_words(const cdi* T, upL_t L, const char* location) {
        renew(L, location);
        std::copy_n(T, L, base_);
    }

    cdi* base_ = nullptr;
    upL_t size_ = 0;
};

// A number that owns its buffer. One that has been moved from is empty.
template <class NumberR>
class NumberO : public NumberR {
  public:
    // heap null: the general allocator. The further allocations come from the same place.
    explicit NumberO(BasicHeap* heap = nullptr) : heap_(heap) {}
    NumberO(BasicHeap* heap, upL_t words) : NumberO(heap, make_guarded_array<cdi>(heap, words), words) {}
    NumberO(NumberO&& other) noexcept
        : NumberR(std::exchange(static_cast<NumberR&>(other), {})),
          heap_(other.heap_),
          owned_(std::move(other.owned_)) {}
    NumberO& operator=(NumberO&& other) noexcept {
        NumberR::operator=(std::exchange(static_cast<NumberR&>(other), {}));
        heap_ = other.heap_;
        owned_ = std::move(other.owned_);
        return *this;
    }

  protected:
    BasicHeap* heap_;

  private:
    NumberO(BasicHeap* heap, GuardedArray<cdi> buffer, upL_t words)
        : NumberR(buffer.get(), words), heap_(heap), owned_(std::move(buffer)) {}

    GuardedArray<cdi> owned_;
};

}  // namespace znp
