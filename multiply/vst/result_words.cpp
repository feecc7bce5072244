#include "multiply/vst/result_words.hpp"

#include <algorithm>
#include <cstring>

#include "multiply/kernels/carry_loop.hpp"
#include "multiply/kernels/residue.hpp"

namespace znp::vst {

namespace {

// x += y or -= y, and the carry; returns the next one.
bool step(std::byte* x, const u64_t* y, upL_t length, bool carry, bool subtract) {
    return subtract ? sub_loop(x, x, y, length, carry) : add_loop(x, x, y, length, carry);
}

bool is_one(const u64_t* number, upL_t length) {
    return number[0] == 1 && std::all_of(number + 1, number + length, [](u64_t word) { return word == 0; });
}

}  // namespace

void ResultWords::add(u64_t block, const u64_t* number, upL_t length, bool subtract) {
    if (std::all_of(number, number + length, [](u64_t word) { return word == 0; })) return;
    if (top_) {  // -1 until now
        const u64_t one = 1;
        top_ = false;
        add(block, number, length, subtract);
        add(0, &one, 1, true);
        return;
    }
    if (block == geometry_.blocks()) return wrap(number, length, subtract);
    const u64_t zero = 0, one = 1;
    bool carry = step(at(block), number, length, false, subtract);
    for (upL_t i = length; carry; i++) {
        if (i == words64()) {
            if (++block == geometry_.blocks()) return wrap(&one, 1, subtract);
            i = 0;
        }
        carry = step(at(block) + 8 * i, &zero, 1, true, subtract);
    }
}

// 2^capacity is 1 or -1. A negative value that wraps to all ones and one more is 2^capacity.
void ResultWords::wrap(const u64_t* number, upL_t length, bool subtract) {
    if (ring_ == Ring::cyclic) {
        add(0, number, length, subtract);
        return;
    }
    if (!subtract && is_one(number, length) && is_zero()) {
        top_ = true;
        return;
    }
    add(0, number, length, !subtract);
}

bool ResultWords::is_zero() const {
    for (u64_t block = 0; block < geometry_.blocks(); block++) {
        const std::byte* const words = at(block);
        if (std::any_of(words, words + geometry_.input_bytes(),
                        [](std::byte x) { return x != std::byte{0}; }))
            return false;
    }
    return true;
}

void ResultWords::copy_rest() const {
    if (result_.s == result_.e) return;
    for (u64_t block = result_.s / block_words_; block * block_words_ < result_.e; block++) {
        if (in_window(block)) {
            block = result_.e / block_words_ - 1;
            continue;
        }
        const upL_t low = std::max(result_.s, block * block_words_);
        const upL_t high = std::min(result_.e, (block + 1) * block_words_);
        std::memcpy(result_.R + (low - result_.s) * 4, at(block) + (low - block * block_words_) * 4,
                    (high - low) * 4);
    }
}

u64_t ResultWords::hash() const {
    u64_t h = 0;
    for (u64_t block = geometry_.blocks(); block-- > 0;)
        h = residue::hash_words64(reinterpret_cast<const c64i*>(at(block)), words64(), h);
    return h;
}

}  // namespace znp::vst
