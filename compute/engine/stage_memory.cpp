#include "compute/engine/stage_memory.hpp"

#include <algorithm>
#include <utility>

#include "foundation/basic_heap.hpp"

namespace znp {

CountedBytes::CountedBytes(MemoryCount& count, upL_t bytes) : count_(&count), bytes_(bytes) {
    count.alive += bytes;
    count.peak = std::max(count.peak, count.alive);
}

CountedBytes& CountedBytes::operator=(CountedBytes&& other) noexcept {
    if (this == &other) return *this;
    take_off();
    count_ = std::exchange(other.count_, nullptr);
    bytes_ = other.bytes_;
    return *this;
}

void CountedBytes::take_off() {
    if (count_ != nullptr) count_->alive -= bytes_;
}

HeapFloat::HeapFloat(StageArray<cdi> words) : words_(std::move(words)) {
    set_base(words_.get(), words_.size);
}

HeapFloat& HeapFloat::operator=(HeapFloat&& other) noexcept {
    if (this == &other) return *this;
    BigFloatR::operator=(other);
    words_ = std::move(other.words_);
    other.set_base(nullptr, 0);
    return *this;
}

void HeapFloat::settle() {
    if (words_.memory == nullptr) return;
    const upL_t offset = static_cast<upL_t>(get_T() - get_base());
    const BigFloat value = *this;
    words_.memory.reset(static_cast<cdi*>(heap_shift_down(words_.memory.release(), array_alignment)));
    set_base(words_.get(), get_size());
    set_view({words_.get() + offset, value.get_L(), value.get_exp(), value.raw_sign(), value.get_residue()});
}

HeapFloat StageMemory::number(upL_t words) {
    StageArray<cdi> array;
    array.size = words;
    if (run_ != nullptr) {
        array.memory = make_guarded_array<cdi>(&run_->heap, words);
    } else {
        array.counted = {count_, heap_array_bytes(words, sizeof(cdi)) + heap_shift_rest()};
    }
    return HeapFloat(std::move(array));
}

}  // namespace znp
