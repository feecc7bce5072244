#include "multiply/vst/result_words.hpp"

#include <algorithm>
#include <cstring>

#include "multiply/kernels/residue.hpp"
#include "multiply/vst/byte_words.hpp"

namespace znp::vst {

namespace {

void step(std::byte* x, u64_t y, u64_t& carry, bool subtract) {
    const u64_t word = load_word(x);
    if (subtract) {
        const u64_t difference = word - y;
        store_word(x, difference - carry);
        carry = static_cast<u64_t>(word < y) | static_cast<u64_t>(difference < carry);
    } else {
        const u64_t sum = word + y;
        store_word(x, sum + carry);
        carry = static_cast<u64_t>(sum < word) | static_cast<u64_t>(sum + carry < sum);
    }
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
    if (block == geometry_.blocks()) {
        wrap(number, length, subtract);
        return;
    }
    u64_t carry = 0;
    std::byte* x = at(block);
    for (upL_t i = 0;; i++) {
        if (i == words64()) {
            if (carry == 0) return;
            if (++block == geometry_.blocks()) break;
            x = at(block);
            i = 0;
        }
        if (carry == 0 && length == 0) return;
        const u64_t y = length > 0 ? *number++ : 0;
        if (length > 0) length--;
        step(x + 8 * i, y, carry, subtract);
    }
    if (carry != 0) wrap(&carry, 1, subtract);
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
        for (upL_t i = 0; i < words64(); i++) {
            if (load_word(at(block) + 8 * i) != 0) return false;
        }
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
