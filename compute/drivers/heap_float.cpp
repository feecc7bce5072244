#include "compute/drivers/heap_float.hpp"

#include <utility>

#include "compute/stages.hpp"

namespace znp {

namespace {

constexpr upL_t alignment = 32;

}  // namespace

HeapFloat::HeapFloat(BasicHeap& heap, upL_t size)
    : BigFloatR(nullptr, 0), words_(make_guarded_array<cdi>(&heap, size, alignment)) {
    set_base(words_.get(), size);
}

HeapFloat& HeapFloat::operator=(HeapFloat&& other) noexcept {
    if (this == &other) return *this;
    BigFloatR::operator=(other);
    words_ = std::move(other.words_);
    other.set_base(nullptr, 0);
    return *this;
}

void HeapFloat::free() {
    words_.reset();
    set_base(nullptr, 0);
}

void HeapFloat::settle() {
    if (words_ == nullptr) return;
    const upL_t offset = static_cast<upL_t>(get_T() - get_base());
    const BigFloat value = *this;
    words_.reset(static_cast<cdi*>(heap_shift_down(words_.release(), alignment)));
    set_base(words_.get(), get_size());
    set_view(words_.get() + offset, value.get_L(), value.get_exp(), value.raw_sign());
}

// Blocks start at multiples of 8 bytes and move by multiples of the alignment.
upL_t HeapFloat::bytes(upL_t size) {
    return heap_bytes(array_bytes(size, sizeof(cdi))) + alignment - 8;
}

}  // namespace znp
