#include "numbers/radix_shape.hpp"

#include <algorithm>
#include <cmath>

#include "multiply/dispatch.hpp"
#include "numbers/radix_power.hpp"

namespace znp {

namespace {

// Levels whose products are no longer than this make them word by word, where a transform costs more.
constexpr upL_t direct_words = 58;

constexpr upL_t half_up(upL_t n) {
    return n - n / 2;
}

}  // namespace

CBR_shape::CBR_shape(cdi radix_, upL_t n)
    : radix(radix_),
      words_per_radix(radix::radix_bits(radix_) / 64),
      radix_bits(radix::radix_bits(radix_)),
      levels(0),
      base(n),
      length(n) {
    for (; !is_leaf(base); levels++) base = half_up(base);
    for (unsigned i = 0; i < levels; i++) {
        const radix::PowerSize size = radix::power_size(radix, exponent(i));
        sizes[i] = size.most;
        overlap[i] = size.zero_words;
        lengths[i] = product_length(i);
    }
}

unsigned CBR_shape::cut_level(upL_t m, unsigned level) const {
    unsigned k = level - 1;
    while (m <= first_words(k)) k--;
    return k;
}

upL_t CBR_shape::fraction_words(upL_t m) const {
    return static_cast<upL_t>(std::ceil(static_cast<double>(m) * words_per_radix)) + 2;
}

upL_t CBR_shape::region_words(upL_t m) const {
    upL_t words = 0;
    for (unsigned level = levels; !is_leaf(m); m -= first_words(level)) {
        level = cut_level(m, level);
        words += first_region_words(level);
    }
    return words + radix::leaf_fraction_words(m);
}

upL_t CBR_shape::product_length(unsigned level) const {
    const upL_t h = first_words(level);
    const upL_t m = std::min(length, 2 * h);
    return std::max(power_words(level) + fraction_words(m - h), fraction_words(m) - overlap[level]);
}

upL_t CBR_shape::product_bytes(unsigned level, u64_t threads) const {
    return work_aligned(work_bytes_for<cdi>(lengths[level], threads));
}

upL_t CBR_shape::image_bytes(unsigned level) const {
    if (is_direct(level)) return work_aligned(power_words(level) * sizeof(cdi));
    TransformSlot slot;
    return make_transform<cdi>(BasicParameters{}, slot, lengths[level]).transform_bytes;
}

upL_t CBR_shape::powers_words() const {
    upL_t words = base;
    for (unsigned i = 1; i < levels; i++) words += 2 * power_words(i - 1);
    return words;
}

bool CBR_shape::is_direct(unsigned level) const {
    return lengths[level] <= direct_words && power_words(level) >= 4;
}

}  // namespace znp
