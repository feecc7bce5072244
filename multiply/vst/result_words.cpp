#include "multiply/vst/result_words.hpp"

#include <algorithm>
#include <cstring>

#include "multiply/hash_by_threads.hpp"
#include "multiply/kernels/carry_loop.hpp"

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

// Of the 64-bit words [low, high) that stand in the image.
u64_t ResultWords::hash_image(upL_t low, upL_t high) const {
    u64_t h = 0;
    while (high > low) {
        const u64_t block = (high - 1) / words64();
        const upL_t first = block * words64();
        const upL_t from = std::max(low, first);
        const std::byte* const words = image_ + geometry_.block_offset(block) * sizeof(double);
        h = guard::hash_words(reinterpret_cast<const c64i*>(words) + (from - first), high - from, h);
        high = from;
    }
    return h;
}

CheckedResult ResultWords::checked(u64_t threads) const {
    const upL_t s = result_.s / 2, e = result_.e / 2, all = geometry_.blocks() * words64();
    const auto image_part = [&](upL_t from, upL_t to) {
        return guard::hash_by_threads(
            to - from, threads, [&](upL_t low, upL_t high) { return hash_image(from + low, from + high); });
    };
    const u64_t window =
        guard::hash_words_by_threads(reinterpret_cast<const c64i*>(result_.R), e - s, threads);
    u64_t whole = guard::shift_words(image_part(e, all), static_cast<s64_t>(e - s));
    whole = guard::shift_words(guard::add(whole, window), static_cast<s64_t>(s));
    return {guard::add(whole, image_part(0, s)), window};
}

}  // namespace znp::vst
