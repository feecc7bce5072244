#include "numbers/radix_table.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "foundation/exceptions.hpp"
#include "multiply/bkt/basecase.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/kernels/word_multiply.hpp"
#include "numbers/newton_steps.hpp"
#include "numbers/radix_leaf.hpp"
#include "numbers/radix_power.hpp"

namespace znp {

namespace {

// Levels whose products are no longer than this make them word by word, where a transform costs more.
constexpr upL_t direct_words = 58;

constexpr upL_t half_up(upL_t n) {
    return n - n / 2;
}

// The power radix^e, word by word. Returns its length; T has room for e words.
upL_t small_power(cdi* T, cdi radix, u64_t e) {
    T[0] = radix;
    upL_t L = 1;
    for (u64_t i = 1; i < e; i++) {
        const cdi carry = MulW(T, L, radix);
        if (carry != 0) T[L++] = carry;
    }
    return L;
}

}  // namespace

CBR_table::CBR_table(cdi radix_, upL_t n)
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

unsigned CBR_table::cut_level(upL_t m, unsigned level) const {
    unsigned k = level - 1;
    while (m <= base << k) k--;
    return k;
}

upL_t CBR_table::fraction_words(upL_t m) const {
    return static_cast<upL_t>(std::ceil(static_cast<double>(m) * words_per_radix)) + 2;
}

upL_t CBR_table::region_words(upL_t m) const {
    upL_t words = 0;
    for (unsigned level = levels; !is_leaf(m); m -= base << level) {
        level = cut_level(m, level);
        words += radix::leaf_fraction_words(base) << level;
    }
    return words + radix::leaf_fraction_words(m);
}

upL_t CBR_table::product_length(unsigned level) const {
    const upL_t h = base << level;
    const upL_t m = std::min(length, 2 * h);
    return std::max(power_words(level) + fraction_words(m - h), fraction_words(m) - overlap[level]);
}

upL_t CBR_table::product_bytes(unsigned level, u64_t threads) const {
    return work_aligned(work_bytes_for<cdi>(lengths[level], threads));
}

upL_t CBR_table::image_bytes(unsigned level) const {
    if (is_direct(level)) return work_aligned(power_words(level) * sizeof(cdi));
    TransformSlot slot;
    return make_transform<cdi>(BasicParameters{}, slot, lengths[level]).transform_bytes;
}

upL_t CBR_table::powers_words() const {
    upL_t words = base;
    for (unsigned i = 1; i < levels; i++) words += 2 * power_words(i - 1);
    return words;
}

bool CBR_table::is_direct(unsigned level) const {
    return lengths[level] <= direct_words && power_words(level) >= 4;
}

void CBR_table::add_image(const BasicParameters& bp, unsigned level, const cdi* P, upL_t L, std::byte* image,
                          cdi* square) {
    images[level] = image;
    if (is_direct(level)) {
        std::memcpy(image, P, L * sizeof(cdi));
        if (square != nullptr) bkt::sqrB(square, P, L);
        return;
    }
    BasicParameters serial = bp;
    serial.tds = 1;
    make_transform<cdi>(serial, transforms[level], lengths[level]);
    TransformSlot slot;
    const transform& algorithm =
        bp.tds == 1 ? *transforms[level] : make_transform<cdi>(bp, slot, lengths[level]);
    const upL_t needed = algorithm.product_bytes();
    if (needed > bp.ML) fire(BufferTooSmallException("CBR_table::add_image()", bp.ML, needed));
    std::byte* const scratch = bp.M + algorithm.transform_bytes;
    algorithm.forward(image, P, L, scratch);
    if (square == nullptr) return;
    std::memcpy(bp.M, image, algorithm.transform_bytes);
    algorithm.inverse_fsqr(square, 0, 2 * L, bp.M, scratch);
}

int CBR_table::build(const BasicParameters& bp, cdi* powers, std::byte* kept, StatusLine* status) {
    const cdi* P = powers;
    upL_t L = small_power(powers, radix, base);
    upL_t zero_words = 0;
    for (unsigned i = 0;; i++) {
        zero_words = 2 * zero_words + radix::strip_zero_words(P, L);
        const radix::PowerSize size = radix::power_size(radix, exponent(i));
        const bool right_size =
            zero_words == size.zero_words && L >= size.least_stripped() && L <= size.most_stripped();
        if (!right_size || !radix::power_holds(radix, exponent(i), P, L, zero_words)) return 1;
        power_start[i] = static_cast<upL_t>(P - powers);
        const upL_t planned_bytes = image_bytes(i);
        sizes[i] = L + zero_words;
        newton::show_step(status, "Squaring...    ", sizes[i]);

        if (i + 1 == levels) {
            add_image(bp, i, P, L, bp.M, nullptr);
            return 0;
        }
        cdi* const square = powers + power_start[i] + L;
        add_image(bp, i, P, L, kept, square);
        kept += planned_bytes;
        P = square;
        L *= 2;
    }
}

std::byte* CBR_table::behind_image(const transform& algorithm, unsigned level, std::byte* work) const {
    return images[level] == work ? work + algorithm.transform_bytes : work;
}

cdi* CBR_table::second_place(unsigned level, upL_t m, cdi* end) const {
    const upL_t h = base << level;
    return end - (radix::leaf_fraction_words(base) << level) - fraction_words(m - h);
}

void CBR_table::transform_fraction(const transform& algorithm, unsigned level, upL_t m, const cdi* end,
                                   std::byte* work) const {
    std::byte* const T = behind_image(algorithm, level, work);
    algorithm.forward(T, end - fraction_words(m), needed_words(level, m), T + algorithm.transform_bytes);
}

void CBR_table::multiply_fraction(const transform& algorithm, unsigned level, upL_t m, cdi* end,
                                  std::byte* work) const {
    std::byte* const T = behind_image(algorithm, level, work);
    const upL_t f = needed_words(level, m);
    const upL_t g = fraction_words(m - (base << level));
    algorithm.inverse_fmul(second_place(level, m, end), f - g, f, T, images[level],
                           T + algorithm.transform_bytes);
}

void CBR_table::multiply_directly(unsigned level, upL_t m, cdi* end, std::byte* work) const {
    const upL_t P = power_words(level);
    const upL_t f = needed_words(level, m);
    const upL_t g = fraction_words(m - (base << level));
    if (images[level] == work) work += work_aligned(P * sizeof(cdi));
    auto* const middle = reinterpret_cast<cdi*>(work);
    cdi* const fraction = end - fraction_words(m);
    // The product begins a word below the fraction where the rounding of the lengths wants it.
    fraction[-1] = 0;
    bkt::middleB(middle, fraction + (f - g) - P, static_cast<const cdi*>(images[level]), P, g);
    std::copy_n(middle + 4, g, second_place(level, m, end));
}

}  // namespace znp
