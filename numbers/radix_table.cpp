#include "numbers/radix_table.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "foundation/exceptions.hpp"
#include "multiply/bkt/basecase.hpp"
#include "multiply/dispatch.hpp"
#include "multiply/kernels/word_multiply.hpp"
#include "numbers/newton_steps.hpp"
#include "numbers/radix_power.hpp"

namespace znp {

namespace {

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
    const WorkAreas areas = algorithm.work_areas(bp.M);
    algorithm.forward(image_at(image), {P, L}, areas.scratch);
    if (square == nullptr) return;
    std::memcpy(areas.T1, image, algorithm.transform_bytes);
    algorithm.inverse_fsqr({square, 0, 2 * L}, areas.T1, areas.scratch);
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

WorkAreas CBR_table::fraction_areas(const transform& algorithm, unsigned level, std::byte* work) const {
    WorkAreas areas = algorithm.work_areas(work);
    if (images[level] == work) std::swap(areas.T1, areas.T2);
    return areas;
}

cdi* CBR_table::second_place(unsigned level, upL_t m, cdi* end) const {
    return end - first_region_words(level) - second_words(level, m);
}

void CBR_table::transform_fraction(const transform& algorithm, unsigned level, upL_t m, const cdi* end,
                                   std::byte* work) const {
    const WorkAreas areas = fraction_areas(algorithm, level, work);
    algorithm.forward(areas.T1, {end - fraction_words(m), needed_words(level, m)}, areas.scratch);
}

void CBR_table::multiply_fraction(const transform& algorithm, unsigned level, upL_t m, cdi* end,
                                  std::byte* work) const {
    const WorkAreas areas = fraction_areas(algorithm, level, work);
    const upL_t f = needed_words(level, m);
    const upL_t g = second_words(level, m);
    algorithm.inverse_fmul({second_place(level, m, end), f - g, f}, areas.T1, image_at(images[level]),
                           areas.scratch);
}

void CBR_table::multiply_directly(unsigned level, upL_t m, cdi* end, std::byte* work) const {
    const upL_t P = power_words(level);
    const upL_t f = needed_words(level, m);
    const upL_t g = second_words(level, m);
    if (images[level] == work) work += work_aligned(P * sizeof(cdi));
    auto* const middle = reinterpret_cast<cdi*>(work);
    cdi* const fraction = end - fraction_words(m);
    // The product begins a word below the fraction where the rounding of the lengths wants it.
    fraction[-1] = 0;
    bkt::middleB(middle, fraction + (f - g) - P, reinterpret_cast<const cdi*>(images[level]), P, g);
    std::copy_n(middle + 4, g, second_place(level, m, end));
}

}  // namespace znp
